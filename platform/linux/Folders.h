// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace Platform {

// Makes a folder and those above it and has each one's entry in its parent stored, so that a file
// in it is still found after a power cut. False with errno.
[[nodiscard]] bool MakeFolders(const std::filesystem::path& folder);

}  // namespace Platform
