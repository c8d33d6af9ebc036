// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace Platform {

// A shared folder is one that its group may write and that hands the group down (setgid). What is
// made in it is made for the group, whatever the umask. Members of the group are trusted with what
// lies in it and with nothing else, so a link that one of them put there is not followed.

[[nodiscard]] bool IsShared(const std::filesystem::path& folder);

// Makes a folder and those above it and has each one's entry in its parent stored, so that a file
// in it is still found after a power cut. Below a shared folder they are shared, too. False with
// errno.
[[nodiscard]] bool MakeFolders(const std::filesystem::path& folder);

// Makes an empty file that the group may read and write where there is none and the folder is
// shared; otherwise does nothing, and whoever opens the file next gets to know why.
void MakeSharedFile(const std::filesystem::path& file);

}  // namespace Platform
