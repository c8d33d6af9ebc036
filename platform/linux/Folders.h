// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace Platform {

// Makes a folder and those above it and has each one's entry in its parent stored, so that a file
// in it is still found after a power cut. Below a shared folder, which is one that its group may
// write and that hands the group down (setgid), they are shared, too, whatever the umask. False
// with errno.
[[nodiscard]] bool MakeFolders(const std::filesystem::path& folder);

// Makes an empty file that the group may read and write where there is none and the folder is
// shared; otherwise does nothing, and whoever opens the file next gets to know why.
void MakeSharedFile(const std::filesystem::path& file);

}  // namespace Platform
