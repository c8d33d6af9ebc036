// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>

#include "platform/event_wait.h"
#include "platform/package.h"
#include "tests/fake_platform/FakeState.h"

struct app_control_s {
    std::string operation;
    std::string appId;
    std::vector<std::pair<std::string, std::string>> extras;
};
struct app_context_s {
    std::string appId;
};
struct app_info_s {
    std::string appId;
};
struct package_info_s {};

namespace Fake {

namespace {

struct Launch {
    app_control_s request;
    app_control_result_cb callback;
    void* data;
};

struct Events {
    std::mutex mutex;
    std::condition_variable raised;
    bool held = false;
    int count = 0;
};

std::deque<Launch>& Launches() {
    static std::deque<Launch>& launches = *new std::deque<Launch>;
    return launches;
}

Events& TheEvents() {
    static Events& events = *new Events;
    return events;
}

Application* Find(const char* appId) {
    const auto found =
        appId == nullptr ? TheWorld().applications.end() : TheWorld().applications.find(appId);
    return found == TheWorld().applications.end() ? nullptr : &found->second;
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

template <typename Handle>
int Release(const char* kind, Handle* handle) {
    FAKE_REFUSE_IF(handle == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    Own(kind, -1);
    delete handle;
    return 0;
}

}  // namespace

void ResetApplications() {
    Launches().clear();
    const std::lock_guard<std::mutex> lock(TheEvents().mutex);
    TheEvents().held = false;
    TheEvents().count = 0;
}

bool FinishLaunch(app_control_error_e result) {
    if (Launches().empty()) {
        return false;
    }
    Launch launch = std::move(Launches().front());
    Launches().pop_front();
    launch.callback(&launch.request, result, launch.data);
    return true;
}

void HoldEvents(bool held) {
    const std::lock_guard<std::mutex> lock(TheEvents().mutex);
    TheEvents().held = held;
    TheEvents().raised.notify_all();
}

void RaiseEvent() {
    const std::lock_guard<std::mutex> lock(TheEvents().mutex);
    ++TheEvents().count;
    TheEvents().raised.notify_all();
}

}  // namespace Fake

extern "C" {

int app_control_create(app_control_h* handle) {
    FAKE_QUERY_ANYWHERE();
    FAKE_REFUSE_IF(handle == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    Fake::Own("launch request", 1);
    *handle = new app_control_s;
    return 0;
}

int app_control_destroy(app_control_h handle) {
    return Fake::Release("launch request", handle);
}

int app_control_set_operation(app_control_h handle, const char* operation) {
    FAKE_REFUSE_IF(handle == nullptr || operation == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    handle->operation = operation;
    return 0;
}

int app_control_set_app_id(app_control_h handle, const char* app_id) {
    FAKE_REFUSE_IF(handle == nullptr || app_id == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    handle->appId = app_id;
    return 0;
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value) {
    FAKE_REFUSE_IF(handle == nullptr || key == nullptr || value == nullptr ||
                       g_utf8_validate(key, -1, nullptr) == FALSE ||
                       g_utf8_validate(value, -1, nullptr) == FALSE,
                   APP_CONTROL_ERROR_INVALID_PARAMETER);
    const auto known = std::find_if(handle->extras.begin(), handle->extras.end(),
                                    [key](const auto& extra) { return extra.first == key; });
    if (known != handle->extras.end()) {
        known->second = value;
    } else {
        handle->extras.emplace_back(key, value);
    }
    return 0;
}

int app_control_get_app_id(app_control_h handle, char** app_id) {
    FAKE_REFUSE_IF(app_id == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    *app_id = nullptr;
    FAKE_QUERY_ANYWHERE();
    FAKE_REFUSE_IF(handle == nullptr || handle->appId.empty(), APP_CONTROL_ERROR_INVALID_PARAMETER);
    *app_id = strdup(handle->appId.c_str());
    return 0;
}

int app_control_get_extra_data(app_control_h handle, const char* key, char** value) {
    FAKE_REFUSE_IF(value == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    *value = nullptr;
    FAKE_QUERY_ANYWHERE(key);
    FAKE_REFUSE_IF(handle == nullptr || key == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    for (const auto& extra : handle->extras) {
        if (extra.first == key) {
            *value = strdup(extra.second.c_str());
            return 0;
        }
    }
    return APP_CONTROL_ERROR_KEY_NOT_FOUND;
}

int app_control_foreach_extra_data(app_control_h handle, app_control_extra_data_cb callback,
                                   void* user_data) {
    FAKE_REFUSE_IF(handle == nullptr || callback == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    for (const auto& extra : handle->extras) {
        if (!callback(handle, extra.first.c_str(), user_data)) {
            break;
        }
    }
    return 0;
}

int app_control_send_launch_request(app_control_h handle, app_control_reply_cb, void*) {
    FAKE_REFUSE_IF(handle == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    FAKE_CALL(kCommand, kAny, Fake::Describe(*handle));
    return 0;
}

int app_control_send_launch_request_async(app_control_h handle,
                                          app_control_result_cb result_callback,
                                          app_control_reply_cb, void* user_data) {
    FAKE_REFUSE_IF(handle == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    FAKE_COMMAND(Fake::Describe(*handle));
    Fake::Launches().push_back({*handle, result_callback, user_data});
    return 0;
}

int app_manager_is_running(const char* app_id, bool* running) {
    FAKE_QUERY_ANYWHERE(app_id);
    FAKE_REFUSE_IF(app_id == nullptr || running == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    const Fake::Application* application = Fake::Find(app_id);
    *running = application != nullptr && application->running;
    return 0;
}

int app_manager_get_app_context(const char* app_id, app_context_h* context) {
    FAKE_QUERY_ANYWHERE();
    const Fake::Application* application = Fake::Find(app_id);
    FAKE_REFUSE_IF(context == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(application == nullptr || !application->running,
                   APP_CONTROL_ERROR_APP_NOT_FOUND);
    Fake::Own("application context", 1);
    *context = new app_context_s{app_id};
    return 0;
}

int app_context_get_app_state(app_context_h context, app_state_e* state) {
    FAKE_QUERY_ANYWHERE();
    FAKE_REFUSE_IF(context == nullptr || state == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    *state = Fake::TheWorld().applications[context->appId].state;
    return 0;
}

int app_context_get_app_id(app_context_h context, char** app_id) {
    FAKE_QUERY_ANYWHERE();
    FAKE_REFUSE_IF(context == nullptr || app_id == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    *app_id = strdup(context->appId.c_str());
    return 0;
}

int app_context_destroy(app_context_h context) {
    return Fake::Release("application context", context);
}

int app_manager_foreach_visible_app_context(app_manager_app_context_cb callback, void* user_data) {
    FAKE_REFUSE_IF(callback == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    for (const auto& [id, application] : Fake::TheWorld().applications) {
        app_context_s context{id};
        if (application.running && application.visible && !callback(&context, user_data)) {
            break;
        }
    }
    return 0;
}

int app_manager_get_app_info(const char* app_id, app_info_h* info) {
    FAKE_REFUSE_IF(info == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(Fake::Find(app_id) == nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND);
    Fake::Own("application info", 1);
    *info = new app_info_s{app_id};
    return 0;
}

int app_info_foreach_metadata(app_info_h info, app_info_metadata_cb callback, void* user_data) {
    FAKE_REFUSE_IF(info == nullptr || callback == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    for (const auto& [key, value] : Fake::TheWorld().applications[info->appId].metadata) {
        if (!callback(key.c_str(), value.c_str(), user_data)) {
            break;
        }
    }
    return 0;
}

int app_info_destroy(app_info_h info) {
    return Fake::Release("application info", info);
}

int package_info_create(const char* package_id, package_info_h* info) {
    FAKE_REFUSE_IF(info == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(Fake::Find(package_id) == nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND);
    Fake::Own("package info", 1);
    *info = new package_info_s;
    return 0;
}

int package_info_destroy(package_info_h info) {
    return Fake::Release("package info", info);
}

int aul_extension_app_pkg_is_updating(const char* app_id, bool* updating) {
    const Fake::Application* application = Fake::Find(app_id);
    FAKE_REFUSE_IF(updating == nullptr, APP_CONTROL_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(application == nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND);
    *updating = application->updating;
    return 0;
}

int LwipcWaitEvent(const char* path, int timeout_ms) {
    FAKE_QUERY_ANYWHERE(path, timeout_ms);
    Fake::Events& events = Fake::TheEvents();
    std::unique_lock<std::mutex> lock(events.mutex);
    const bool raised = events.raised.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                                               [&] { return !events.held || events.count > 0; });
    if (events.held && events.count > 0) {
        --events.count;
    }
    return raised ? 0 : -1;
}

}  // extern "C"
