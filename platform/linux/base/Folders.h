// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <filesystem>
#include <vector>

namespace Platform {

// A shared folder is one that its group may write and that hands the group down (setgid). What is
// made in it is made for the group, whatever the umask. Members of the group are trusted with what
// lies in it and with nothing else, so a link that one of them put there is not followed.

[[nodiscard]] bool IsShared(const std::filesystem::path& folder);
// As above; `status` is the folder's, all zero when there is none.
[[nodiscard]] bool IsShared(const std::filesystem::path& folder, struct stat& status);

// Whether the path has a link that lies in a shared folder, or that another user than root and this
// one put into a folder that everybody may write.
[[nodiscard]] bool IsReachedByPlantedLink(const std::filesystem::path& path);

// While it lives, root reaches files on this thread as the owner of a shared folder would, so that
// what a member of the group put there reaches no file that the owner does not. Does nothing for
// another user, a folder that is not shared, or one that root owns.
class OwnerIdentity {
public:
    explicit OwnerIdentity(const std::filesystem::path& folder);
    ~OwnerIdentity();
    OwnerIdentity(const OwnerIdentity&) = delete;
    OwnerIdentity& operator=(const OwnerIdentity&) = delete;

private:
    bool m_isTaken = false;
    uid_t m_user = 0;  // the ones before
    gid_t m_group = 0;
    std::vector<gid_t> m_groups;
};

// Makes a folder and those above it and has each one's entry in its parent stored, so that a file
// in it is still found after a power cut. Below a shared folder they are shared, too. False with
// errno.
[[nodiscard]] bool MakeFolders(const std::filesystem::path& folder);

// Makes an empty file that the group may read and write where there is none and the folder is
// shared; otherwise does nothing; the next open of the file gives the reason. Whether it was
// made.
bool MakeSharedFile(const std::filesystem::path& file);

}  // namespace Platform
