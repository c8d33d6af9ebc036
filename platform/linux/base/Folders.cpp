// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/Folders.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/fsuid.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/linux/base/FileDescriptor.h"

namespace Platform {

namespace {

// The user as whom this thread reaches files; the call changes nothing.
uid_t FileUser() {
    return static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1)));
}

// Of this thread only; the C library's function would change every thread's.
void SetThreadGroups(const std::vector<gid_t>& groups) {
    syscall(SYS_setgroups, groups.size(), groups.data());
}

// The folder is created under a temporary name, given its mode, then renamed, so that nobody finds
// it before it is shared. Nothing is done by name to what somebody else may have put there
// meanwhile.
bool MakeSharedFolder(const std::filesystem::path& folder) {
    const OwnerIdentity identity(folder.parent_path());
    std::string name = folder.string() + ".XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        return false;
    }
    const FileDescriptor made(open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    errno = EPERM;
    if (made.IsOpen() && fstat(made.Get(), &status) == 0 && status.st_uid == FileUser() &&
        fchmod(made.Get(), S_ISGID | S_IRWXU | S_IRWXG) == 0 &&
        renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, folder.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    const int error = errno;
    rmdir(name.c_str());
    errno = error;
    return false;
}

bool IsPlantedLink(const std::filesystem::path& path) {
    struct stat link = {};
    if (lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode)) {
        return false;
    }
    struct stat folder = {};
    const bool isShared = IsShared(path.parent_path(), folder);
    const bool isStrangers = link.st_uid != 0 && link.st_uid != geteuid();
    return isShared || ((folder.st_mode & S_IWOTH) != 0 && isStrangers);
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
    struct stat status = {};
    return IsShared(folder, status);
}

bool IsShared(const std::filesystem::path& folder, struct stat& status) {
    constexpr mode_t kShared = S_ISGID | S_IWGRP;
    status = {};
    return stat(folder.c_str(), &status) == 0 && (status.st_mode & kShared) == kShared;
}

bool IsReachedByPlantedLink(const std::filesystem::path& path) {
    for (auto part = path; part.has_relative_path(); part = part.parent_path()) {
        if (IsPlantedLink(part)) {
            return true;
        }
    }
    return false;
}

OwnerIdentity::OwnerIdentity(const std::filesystem::path& folder) {
    struct stat status = {};
    if (geteuid() != 0 || !IsShared(folder, status) || status.st_uid == 0) {
        return;
    }
    const int count = getgroups(0, nullptr);
    m_groups.resize(static_cast<std::size_t>(count < 0 ? 0 : count));
    m_isTaken = getgroups(static_cast<int>(m_groups.size()), m_groups.data()) >= 0;
    if (m_isTaken) {
        SetThreadGroups({});
        m_group = static_cast<gid_t>(setfsgid(status.st_gid));
        m_user = static_cast<uid_t>(setfsuid(status.st_uid));
    }
}

OwnerIdentity::~OwnerIdentity() {
    if (m_isTaken) {
        setfsuid(m_user);
        setfsgid(m_group);
        SetThreadGroups(m_groups);
    }
}

bool MakeFolders(const std::filesystem::path& folder) {
    if (IsReachedByPlantedLink(folder)) {
        errno = ELOOP;
        return false;
    }
    return MakeFoldersFrom(folder);
}

bool MakeSharedFile(const std::filesystem::path& file) {
    const std::filesystem::path folder = file.parent_path();
    if (!IsShared(folder) || IsReachedByPlantedLink(folder)) {
        return false;
    }
    const OwnerIdentity identity(folder);
    constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP;
    const FileDescriptor made(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
    if (made.IsOpen()) {
        static_cast<void>(fchmod(made.Get(), kMode));
    }
    return made.IsOpen();
}

}  // namespace Platform
