// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/AppManagerUtil.h"

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"
#include "platform/package.h"
#include "utility/AppControl.h"
#include "utility/TvStatusUtil.h"

namespace Util {

namespace {

constexpr const char* kSettingsAppId = "org.orlix.menu";

using AppContextPtr = CPtr<app_context_s, app_context_destroy>;
using AppInfoPtr = CPtr<app_info_s, app_info_destroy>;
using PackageInfoPtr = CPtr<package_info_s, package_info_destroy>;

bool CollectExtra(app_control_h appControl, const char* key, void* data) noexcept {
    if (key == nullptr || data == nullptr || appControl == nullptr) {
        BTLOG_ERROR("%s is null", key == nullptr ? "key" : data == nullptr ? "data" : "appControl");
        return true;
    }
    MallocPtr<char> value;
    app_control_get_extra_data(appControl, key, Out(value));
    if (value) {
        static_cast<AppManagerUtil::Extras*>(data)->emplace_back(key, value.get());
    }
    return true;
}

bool LaunchAgain(app_control_h request, const char* appId) {
    AppManagerUtil::Extras extras;
    app_control_foreach_extra_data(request, CollectExtra, &extras);
    return AppManagerUtil::LaunchApp(appId, extras, false);
}

bool CollectMetadata(const char* key, const char* value, void* data) noexcept {
    if (key != nullptr && value != nullptr) {
        static_cast<AppManagerUtil::Extras*>(data)->emplace_back(key, value);
    }
    return true;
}

bool CollectAppId(app_context_h context, void* data) noexcept {
    MallocPtr<char> appId;
    app_context_get_app_id(context, Out(appId));
    if (appId) {
        static_cast<std::vector<std::string>*>(data)->emplace_back(appId.get());
    }
    return true;
}

}  // namespace

UiAppLaunch AppManagerUtil::uiappLaunch;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool AppManagerUtil::LaunchApp(const std::string& appId, Extras extras, bool isSync) {
    const AppControlPtr handle = MakeLaunchRequest(appId.c_str());
    for (const auto& [key, value] : extras) {
        BTLOG_DEBUG("key: %s, value: %s", key.c_str(), value.c_str());
        app_control_add_extra_data(handle.get(), key.c_str(), value.c_str());
    }
    BTLOG_INFO("launch %s", appId.c_str());
    const int result = isSync ? app_control_send_launch_request(handle.get(), nullptr, nullptr)
                              : app_control_send_launch_request_async(
                                    handle.get(), OnAppControlResult, nullptr, nullptr);
    if (result != 0) {
        BTLOG_ERROR("Failed to launch %s", appId.c_str());
    }
    return result == 0;
}

void AppManagerUtil::OnAppControlResult(app_control_h request, app_control_error_e result,
                                        void* /*userData*/) noexcept {
    static int retryCnt = 0;
    MallocPtr<char> appId;
    app_control_get_app_id(request, Out(appId));
    if (!appId) {
        BTLOG_ERROR("appId is null");
    } else if (result == APP_CONTROL_ERROR_NONE) {
        BTLOG_INFO("success to launch %s", appId.get());
    } else if (retryCnt == 0 && LaunchAgain(request, appId.get())) {
        ++retryCnt;
        BTLOG_INFO("Retry(#%d)", retryCnt);
        return;
    } else {
        BTLOG_ERROR("Fail to launch %s(%d)", appId.get(), result);
    }
    retryCnt = 0;
}

bool AppManagerUtil::launchBluetoothDeviceist(bool isSync) {
    return LaunchApp(kSettingsAppId, {{"type", "add-bluetooth-keyboard"}}, isSync);
}

bool AppManagerUtil::launchBluetoothAudioList(bool isSync) {
    return LaunchApp(kSettingsAppId, {{"type", "soundoutput_1000"}}, isSync);
}

bool AppManagerUtil::SendNirvoUiMessage(const nirvo_event& event, bool pictureOn) {
    BTLOG_INFO("sendMessage via launch app");
    try {
        uiappLaunch.Launch(event);
        if (pictureOn) {
            TvStatusUtil::PictureOn();
        }
        return true;
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
        return false;
    }
}

bool AppManagerUtil::IsAppRunning(const std::string& appId) {
    bool isRunning = false;
    const int result = app_manager_is_running(appId.c_str(), &isRunning);
    BTLOG_INFO("result = %d, appName : %s, isRunning : %d", result, appId.c_str(), isRunning);
    return isRunning;
}

bool AppManagerUtil::IsAppForeGround(const std::string& appId) {
    AppContextPtr context;
    if (app_manager_get_app_context(appId.c_str(), Out(context)) != 0) {
        BTLOG_ERROR("fail app_manager_get_app_context ");
        return false;
    }
    app_state_e state = APP_STATE_UNDEFINED;
    if (app_context_get_app_state(context.get(), &state) != 0) {
        BTLOG_ERROR("fail app_context_get_app_state ");
    }
    BTLOG_INFO("appName : %s, state : %d", appId.c_str(), state);
    return state == APP_STATE_FOREGROUND;
}

bool AppManagerUtil::IsPackageInstalled(const std::string& pkgId) {
    PackageInfoPtr info;
    const int result = package_info_create(pkgId.c_str(), Out(info));
    const bool isInstalled = result == 0 && info;
    BTLOG_WARN("%s is %sinstalled", pkgId.c_str(), isInstalled ? "" : "not ");
    return isInstalled;
}

bool AppManagerUtil::IsUpdating(const std::string& appId) {
    bool isUpdating = false;
    if (aul_extension_app_pkg_is_updating(appId.c_str(), &isUpdating) != 0) {
        throw std::string("fail aul_extension_app_pkg_is_updating ");
    }
    return isUpdating;
}

bool AppManagerUtil::DoesHaveMetadata(const std::string& appId, const std::string& key,
                                      const std::string& value) {
    AppInfoPtr info;
    app_manager_get_app_info(appId.c_str(), Out(info));
    if (!info) {
        BTLOG_ERROR("fail to get appInfo");
        return false;
    }
    Extras items;
    app_info_foreach_metadata(info.get(), CollectMetadata, &items);
    info.reset();
    // NOLINTNEXTLINE(readability-use-anyofallof): each item is logged on the way
    for (const auto& [itemKey, itemValue] : items) {
        BTLOG_INFO("%s, %s", itemKey.c_str(), itemValue.c_str());
        if (itemKey == key && itemValue == value) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> AppManagerUtil::GetVisibleAppList() {
    std::vector<std::string> appIds;
    app_manager_foreach_visible_app_context(CollectAppId, &appIds);
    for (const std::string& appId : appIds) {
        BTLOG_INFO("visible app : %s", appId.c_str());
    }
    return appIds;
}

}  // namespace Util
