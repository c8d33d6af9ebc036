// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Folders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/Handles.h"

namespace Platform {

bool MakeFolders(const std::filesystem::path& folder) {
    std::error_code ignored;
    if (folder.empty() || std::filesystem::is_directory(folder, ignored)) {
        return true;
    }
    if (!MakeFolders(folder.parent_path()) ||
        (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST)) {
        return false;
    }
    const FileDescriptor parent(open(folder.parent_path().c_str(), O_RDONLY | O_CLOEXEC));
    if (parent.IsOpen()) {
        fsync(parent.Get());
    }
    return true;
}

}  // namespace Platform
