// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Util {

// The package's two writable directories and the paths of files in them. Each ends in "/", so a
// file name follows directly. A name is appended as it is, without a check; an empty one gives the
// directory. Any thread.
//
// On a TV the package's installation makes them. $TV_ROOT, or when it is not set the build's
// BTAC_DATA_ROOT, is put in front of both, so that a test or a demonstration uses its own folder.
// It is read once, before main.
class AppDataUtil {
public:
    static std::string getDataPath();
    static std::string GetAppDataFilePath(const std::string& name = "");
    static std::string GetAppSharedResourcePath(const std::string& name = "");
};

}  // namespace Util
