// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/AppDataUtil.h"

#include <cstdlib>

#include "autoconnect/src/AutoConnectDbg.h"

namespace Util {

namespace {

std::string UnderRoot(const char* directory) {
    const char* root = std::getenv("TV_ROOT");
    return std::string(root != nullptr ? root : BTAC_DATA_ROOT) + directory;
}

const std::string kDataPath = UnderRoot("/opt/usr/home/owner/apps_rw/org.orlix.nirvo/data/");
const std::string kSharedPath = UnderRoot("/opt/usr/home/owner/apps_rw/org.orlix.nirvo/shared/");

}  // namespace

std::string AppDataUtil::getDataPath() {
    return kDataPath;
}

std::string AppDataUtil::GetAppDataFilePath(const std::string& name) {
    std::string path = kDataPath + name;
    BTLOG_DEBUG("path = %s", path.c_str());
    return path;
}

std::string AppDataUtil::GetAppSharedResourcePath(const std::string& name) {
    std::string path = kSharedPath + name;
    BTLOG_DEBUG("path = %s", path.c_str());
    return path;
}

}  // namespace Util
