// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/package.h"

#include <cerrno>
#include <memory>
#include <string>

#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/config/ConfigStore.h"
#include "platform/linux/config/PlatformState.h"

// On this host a package is one application and has its id.
struct package_info_s {
    std::string id;
};

namespace {

// 0 when it is.
int CheckInstalled(const char* id) {
    if (id == nullptr || !Platform::IsApplicationId(id)) {
        return -EINVAL;
    }
    const auto installed = Platform::IsInstalled(id);
    if (!installed) {
        return -ETIMEDOUT;
    }
    return *installed ? 0 : -ENOENT;
}

}  // namespace

int package_info_create(const char* package_id, package_info_h* info) {
    if (info == nullptr) {
        return -EINVAL;
    }
    const int result = CheckInstalled(package_id);
    if (result == 0) {
        *info = new package_info_s{package_id};
    }
    return result;
}

int package_info_destroy(package_info_h info) {
    const std::unique_ptr<package_info_s> owner(info);
    return owner != nullptr ? 0 : -EINVAL;
}

int aul_extension_app_pkg_is_updating(const char* app_id, bool* updating) {
    if (updating == nullptr) {
        return -EINVAL;
    }
    const int result = CheckInstalled(app_id);
    if (result == 0) {
        *updating = Platform::ConfigStore::Instance().GetString(
                        Platform::StateKey("updating_package")) == std::string(app_id);
    }
    return result;
}
