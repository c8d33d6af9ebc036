// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/package.h"
#include "tests/fake_platform/FakeState.h"

struct app_context_s {
    std::string appId;
};
struct app_info_s {
    std::string appId;
};
struct package_info_s {};

namespace Fake {

namespace {

Application* Find(const char* appId) {
    const auto found = TheWorld().applications.find(appId);
    return found == TheWorld().applications.end() ? nullptr : &found->second;
}

auto FindExtra(app_control_h request, const char* key) {
    return std::find_if(request->extras.begin(), request->extras.end(),
                        [key](const auto& extra) { return extra.first == key; });
}

// "ID,KEY=VALUE,…"; the operation only when it is not the default one.
std::string Describe(const app_control_s& request) {
    std::string text = request.appId;
    if (request.operation != APP_CONTROL_OPERATION_DEFAULT) {
        text += " operation '" + request.operation + "'";
    }
    for (const auto& [key, value] : request.extras) {
        text += "," + key + "=" + value;
    }
    return text;
}

}  // namespace

bool FinishLaunch(app_control_error_e result) {
    if (Main().launches.empty()) {
        return false;
    }
    Launch launch = std::move(Main().launches.front());
    Main().launches.pop_front();
    launch.callback(&launch.request, result, launch.data);
    return true;
}

}  // namespace Fake

// Refuses what the family of functions says of a NULL argument.
#define REFUSE_IF(condition) FAKE_REFUSE_IF(condition, APP_CONTROL_ERROR_INVALID_PARAMETER)

extern "C" {

int app_control_create(app_control_h* handle) {
    REFUSE_IF(handle == nullptr);
    *handle = Fake::Give(app_control_s());
    return 0;
}

int app_control_destroy(app_control_h handle) {
    REFUSE_IF(handle == nullptr);
    return Fake::Release(handle);
}

int app_control_set_operation(app_control_h handle, const char* operation) {
    handle->operation = operation;
    return 0;
}

int app_control_set_app_id(app_control_h handle, const char* app_id) {
    REFUSE_IF(app_id == nullptr);
    handle->appId = app_id;
    return 0;
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value) {
    REFUSE_IF(g_utf8_validate(key, -1, nullptr) == FALSE ||
              g_utf8_validate(value, -1, nullptr) == FALSE);
    const auto known = Fake::FindExtra(handle, key);
    if (known != handle->extras.end()) {
        known->second = value;
    } else {
        handle->extras.emplace_back(key, value);
    }
    return 0;
}

int app_control_get_app_id(app_control_h handle, char** app_id) {
    REFUSE_IF(app_id == nullptr);
    *app_id = nullptr;
    FAKE_QUERY_ANYWHERE();
    REFUSE_IF(handle->appId.empty());
    *app_id = strdup(handle->appId.c_str());
    return 0;
}

int app_control_get_extra_data(app_control_h handle, const char* key, char** value) {
    *value = nullptr;
    FAKE_QUERY_ANYWHERE(key);
    REFUSE_IF(key == nullptr);
    const auto extra = Fake::FindExtra(handle, key);
    FAKE_REFUSE_IF(extra == handle->extras.end(), APP_CONTROL_ERROR_KEY_NOT_FOUND);
    *value = strdup(extra->second.c_str());
    return 0;
}

int app_control_foreach_extra_data(app_control_h handle, app_control_extra_data_cb callback,
                                   void* user_data) {
    REFUSE_IF(callback == nullptr);
    return Fake::ForEach(handle->extras, [&](const auto& extra) {
        return callback(handle, extra.first.c_str(), user_data);
    });
}

int app_control_send_launch_request(app_control_h handle, app_control_reply_cb, void*) {
    REFUSE_IF(handle == nullptr);
    FAKE_CALL(kCommand, kAny, Fake::Describe(*handle));
    const Fake::Application* application = Fake::Find(handle->appId.c_str());
    FAKE_REFUSE_IF(gettid() != getpid() && !Fake::TheWorld().applications.empty() &&
                       (application == nullptr || !application->running),
                   APP_CONTROL_ERROR_APP_NOT_FOUND);
    return 0;
}

int app_control_send_launch_request_async(app_control_h handle,
                                          app_control_result_cb result_callback,
                                          app_control_reply_cb, void* user_data) {
    FAKE_COMMAND(Fake::Describe(*handle));
    Fake::Main().launches.push_back({*handle, result_callback, user_data});
    return 0;
}

int app_manager_is_running(const char* app_id, bool* running) {
    REFUSE_IF(running == nullptr);
    const Fake::Application* application = Fake::Find(app_id);
    *running = application != nullptr && application->running;
    return 0;
}

int app_manager_get_app_context(const char* app_id, app_context_h* context) {
    const Fake::Application* application = Fake::Find(app_id);
    FAKE_REFUSE_IF(application == nullptr || !application->running,
                   APP_CONTROL_ERROR_APP_NOT_FOUND);
    *context = Fake::Give(app_context_s{app_id});
    return 0;
}

int app_context_get_app_state(app_context_h context, app_state_e* state) {
    FAKE_QUERY_ANYWHERE();
    *state = Fake::TheWorld().applications[context->appId].state;
    return 0;
}

int app_context_get_app_id(app_context_h context, char** app_id) {
    FAKE_QUERY_ANYWHERE();
    *app_id = strdup(context->appId.c_str());
    return 0;
}

int app_context_destroy(app_context_h context) {
    return Fake::Release(context);
}

int app_manager_foreach_visible_app_context(app_manager_app_context_cb callback, void* user_data) {
    return Fake::ForEach(Fake::TheWorld().applications, [&](const auto& application) {
        app_context_s context{application.first};
        const bool isVisible = application.second.running && application.second.visible;
        return !isVisible || callback(&context, user_data);
    });
}

int app_manager_get_app_info(const char* app_id, app_info_h* info) {
    REFUSE_IF(info == nullptr);
    FAKE_REFUSE_IF(Fake::Find(app_id) == nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND);
    *info = Fake::Give(app_info_s{app_id});
    return 0;
}

int app_info_foreach_metadata(app_info_h info, app_info_metadata_cb callback, void* user_data) {
    return Fake::ForEach(Fake::TheWorld().applications[info->appId].metadata,
                         [&](const auto& item) {
                             return callback(item.first.c_str(), item.second.c_str(), user_data);
                         });
}

int app_info_destroy(app_info_h info) {
    return Fake::Release(info);
}

int package_info_create(const char* package_id, package_info_h* info) {
    FAKE_REFUSE_IF(Fake::Find(package_id) == nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND);
    *info = Fake::Give(package_info_s());
    return 0;
}

int package_info_destroy(package_info_h info) {
    return Fake::Release(info);
}

int aul_extension_app_pkg_is_updating(const char* app_id, bool* updating) {
    const Fake::Application* application = Fake::Find(app_id);
    FAKE_REFUSE_IF(application == nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND);
    *updating = application->updating;
    return 0;
}

}  // extern "C"
