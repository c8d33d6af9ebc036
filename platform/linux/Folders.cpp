// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Folders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/Handles.h"

namespace Platform {

namespace {

bool IsShared(const std::filesystem::path& folder) {
    constexpr mode_t kShared = S_ISGID | S_IWGRP;
    struct stat status = {};
    return stat(folder.c_str(), &status) == 0 && (status.st_mode & kShared) == kShared;
}

}  // namespace

bool MakeFolders(const std::filesystem::path& folder) {
    std::error_code ignored;
    if (folder.empty() || std::filesystem::is_directory(folder, ignored)) {
        return true;
    }
    if (!MakeFolders(folder.parent_path()) ||
        (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST)) {
        return false;
    }
    if (IsShared(folder.parent_path())) {
        static_cast<void>(chmod(folder.c_str(), S_ISGID | S_IRWXU | S_IRWXG));
    }
    const FileDescriptor parent(open(folder.parent_path().c_str(), O_RDONLY | O_CLOEXEC));
    if (parent.IsOpen()) {
        fsync(parent.Get());
    }
    return true;
}

void MakeSharedFile(const std::filesystem::path& file) {
    if (!IsShared(file.parent_path())) {
        return;
    }
    constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP;
    const FileDescriptor made(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
    if (made.IsOpen()) {
        static_cast<void>(fchmod(made.Get(), kMode));
    }
}

}  // namespace Platform
