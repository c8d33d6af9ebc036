// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Util {

// The package's two writable directories and the paths of files in them. Each ends in "/", so a
// file name follows directly; names are appended as they stand, neither checked nor normalised, and
// an empty one gives the directory. Any thread.
//
// On a TV they are the ones that the package's installation made. $TV_ROOT, or when it is not set
// the build's BTAC_DATA_ROOT, stands in front of both, so that a test or a demonstration keeps to
// its own folder. It is read once, before main.
class AppDataUtil {
public:
    static std::string getDataPath();
    static std::string GetAppDataFilePath();
    static std::string GetAppDataFilePath(const std::string& name);
    static std::string GetAppSharedResourcePath();
    static std::string GetAppSharedResourcePath(const std::string& name);
};

}  // namespace Util
