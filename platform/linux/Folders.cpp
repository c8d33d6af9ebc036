// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/linux/Handles.h"

namespace Platform {

namespace {

// It comes to its place with its mode, so that nobody finds it before it is shared. Nothing is done
// by name to what somebody else may have put there meanwhile.
bool MakeSharedFolder(const std::filesystem::path& folder) {
    std::string name = folder.string() + ".XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        return false;
    }
    const FileDescriptor made(open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    errno = EPERM;
    if (made.IsOpen() && fstat(made.Get(), &status) == 0 && status.st_uid == geteuid() &&
        fchmod(made.Get(), S_ISGID | S_IRWXU | S_IRWXG) == 0 &&
        renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, folder.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    const int error = errno;
    rmdir(name.c_str());
    errno = error;
    return false;
}

bool IsReachedByPlantedLink(const std::filesystem::path& folder) {
    std::error_code ignored;
    for (auto part = folder; part.has_relative_path(); part = part.parent_path()) {
        if (std::filesystem::is_symlink(part, ignored) && IsShared(part.parent_path())) {
            return true;
        }
    }
    return false;
}

bool MakeFoldersFrom(const std::filesystem::path& folder) {
    std::error_code ignored;
    if (folder.empty() || std::filesystem::is_directory(folder, ignored)) {
        return true;
    }
    const std::filesystem::path parent = folder.parent_path();
    if (!MakeFoldersFrom(parent)) {
        return false;
    }
    const bool isMade =
        IsShared(parent) ? MakeSharedFolder(folder) : mkdir(folder.c_str(), 0755) == 0;
    if (!isMade && errno != EEXIST) {
        return false;
    }
    const FileDescriptor entry(open(parent.c_str(), O_RDONLY | O_CLOEXEC));
    if (entry.IsOpen()) {
        fsync(entry.Get());
    }
    return true;
}

}  // namespace

bool IsShared(const std::filesystem::path& folder) {
    constexpr mode_t kShared = S_ISGID | S_IWGRP;
    struct stat status = {};
    return stat(folder.c_str(), &status) == 0 && (status.st_mode & kShared) == kShared;
}

bool MakeFolders(const std::filesystem::path& folder) {
    if (IsReachedByPlantedLink(folder)) {
        errno = ELOOP;
        return false;
    }
    return MakeFoldersFrom(folder);
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
