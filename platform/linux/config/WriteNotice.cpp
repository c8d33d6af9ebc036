// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/WriteNotice.h"

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/Folders.h"

namespace Platform {

namespace {

// Nobody has that many keys; a row with a larger number was made by hand.
constexpr std::int64_t kMostRows = 1 << 16;

bool HasRoom(std::int64_t row) {
    return row > 0 && row <= kMostRows;
}

off_t PlaceOf(std::int64_t row) {
    return static_cast<off_t>((row - 1) * static_cast<std::int64_t>(sizeof row));
}

// 0 where nothing was written.
std::uint64_t ReadPlace(int fd, std::int64_t row) {
    std::uint64_t number = 0;
    return pread(fd, &number, sizeof number, PlaceOf(row)) == sizeof number ? number : 0;
}

}  // namespace

WriteNotice::WriteNotice(std::string folder)
    : m_folder(std::move(folder)), m_path(m_folder + "/config.changed") {}

void WriteNotice::TellChanged() {
    MakeSharedFile(m_path);
    const OwnerIdentity identity(m_folder);
    Report(FileDescriptor(
               open(m_path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666))
               .IsOpen());
}

bool WriteNotice::TellRepeated(std::int64_t row) {
    if (!HasRoom(row)) {
        return false;
    }
    MakeSharedFile(m_path);
    const OwnerIdentity identity(m_folder);
    const FileDescriptor file(
        open(m_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
    // The time, so that two who write at once do not write the same number.
    const auto now = static_cast<std::uint64_t>(g_get_real_time());
    const std::uint64_t number =
        file.IsOpen() ? std::max(ReadPlace(file.Get(), row) + 1, now) : now;
    Report(file.IsOpen() &&
           pwrite(file.Get(), &number, sizeof number, PlaceOf(row)) == sizeof number);
    return true;
}

std::uint64_t WriteNotice::LastRepeated(std::int64_t row) const {
    if (!HasRoom(row)) {
        return 0;
    }
    const OwnerIdentity identity(m_folder);
    const FileDescriptor file(open(m_path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return file.IsOpen() ? ReadPlace(file.Get(), row) : 0;
}

void WriteNotice::Report(bool isTold) {
    if (isTold) {
        m_fault.End();
    } else {
        m_fault.Begin(PLATFORM_HERE, m_path + ": " + std::strerror(errno) +
                                         "; other processes do not hear of changes");
    }
}

}  // namespace Platform
