// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/CHandle.h"
#include "platform/application.h"
#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/base/RootPath.h"
#include "platform/linux/config/ConfigStore.h"

struct app_context_s {
    std::string appId;
};

struct app_info_s {
    bool hasMetadata = true;
    std::vector<std::pair<std::string, std::string>> metadata;
};

namespace {

constexpr char kMetadataGroup[] = "metadata";

// The one application that covers the screen, empty when it is none.
std::string FullscreenApplication() {
    return Platform::ConfigStore::Instance()
        .GetString("memory/appfw/current_fullscreen_appid")
        .value_or("");
}

// An application without a description has no metadata; one that cannot be read is a fault.
std::unique_ptr<app_info_s> ReadDescription(const std::string& appId) {
    auto info = std::make_unique<app_info_s>();
    const std::string path = Platform::SettingsFolder() + "/applications/" + appId + ".conf";
    const GKeyFilePtr file(g_key_file_new());
    GErrorPtr error;
    if (g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, Out(error)) == FALSE) {
        info->hasMetadata = g_error_matches(error.get(), G_FILE_ERROR, G_FILE_ERROR_NOENT) != FALSE;
        if (!info->hasMetadata) {
            PLATFORM_WARN("%s: %s", path.c_str(), error->message);
        }
        return info;
    }
    const GStrvPtr keys(g_key_file_get_keys(file.get(), kMetadataGroup, nullptr, nullptr));
    for (char** key = keys.get(); key != nullptr && *key != nullptr; ++key) {
        const GStringPtr value(g_key_file_get_string(file.get(), kMetadataGroup, *key, nullptr));
        if (value != nullptr) {
            info->metadata.emplace_back(*key, value.get());
        }
    }
    return info;
}

}  // namespace

int app_manager_is_running(const char* app_id, bool* running) {
    if (app_id == nullptr || running == nullptr || !Platform::IsApplicationId(app_id)) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    const auto answer = Platform::IsRunning(app_id);
    if (!answer) {
        return APP_CONTROL_ERROR_TIMED_OUT;
    }
    *running = *answer;
    return APP_CONTROL_ERROR_NONE;
}

int app_manager_get_app_context(const char* app_id, app_context_h* context) {
    if (context == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    bool running = false;
    const int result = app_manager_is_running(app_id, &running);
    if (result != APP_CONTROL_ERROR_NONE) {
        return result;
    }
    if (!running) {
        return APP_CONTROL_ERROR_APP_NOT_FOUND;
    }
    *context = new app_context_s{app_id};
    return APP_CONTROL_ERROR_NONE;
}

int app_context_get_app_state(app_context_h context, app_state_e* state) {
    if (context == nullptr || state == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    *state =
        FullscreenApplication() == context->appId ? APP_STATE_FOREGROUND : APP_STATE_BACKGROUND;
    return APP_CONTROL_ERROR_NONE;
}

int app_context_get_app_id(app_context_h context, char** app_id) {
    if (context == nullptr || app_id == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    *app_id = strdup(context->appId.c_str());
    return *app_id != nullptr ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

int app_context_destroy(app_context_h context) {
    const std::unique_ptr<app_context_s> owner(context);
    return owner != nullptr ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_INVALID_PARAMETER;
}

int app_manager_foreach_visible_app_context(app_manager_app_context_cb callback, void* user_data) {
    if (callback == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    app_context_s context = {FullscreenApplication()};
    if (!Platform::IsApplicationId(context.appId)) {
        return APP_CONTROL_ERROR_NONE;
    }
    const auto running = Platform::IsRunning(context.appId);
    if (!running) {
        return APP_CONTROL_ERROR_TIMED_OUT;
    }
    if (*running) {
        callback(&context, user_data);
    }
    return APP_CONTROL_ERROR_NONE;
}

int app_manager_get_app_info(const char* app_id, app_info_h* info) {
    if (app_id == nullptr || info == nullptr || !Platform::IsApplicationId(app_id)) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    const auto installed = Platform::IsInstalled(app_id);
    if (!installed) {
        return APP_CONTROL_ERROR_TIMED_OUT;
    }
    if (!*installed) {
        return APP_CONTROL_ERROR_APP_NOT_FOUND;
    }
    *info = ReadDescription(app_id).release();
    return APP_CONTROL_ERROR_NONE;
}

int app_info_foreach_metadata(app_info_h info, app_info_metadata_cb callback, void* user_data) {
    if (info == nullptr || callback == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    if (!info->hasMetadata) {
        return APP_CONTROL_ERROR_KEY_NOT_FOUND;
    }
    for (const auto& [key, value] : info->metadata) {
        if (!callback(key.c_str(), value.c_str(), user_data)) {
            break;
        }
    }
    return APP_CONTROL_ERROR_NONE;
}

int app_info_destroy(app_info_h info) {
    const std::unique_ptr<app_info_s> owner(info);
    return owner != nullptr ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_INVALID_PARAMETER;
}
