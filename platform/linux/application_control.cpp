// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "platform/application.h"
#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/application/AskedPhone.h"
#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/PlatformLog.h"

struct app_control_s {
    std::string operation;
    std::string appId;
    Platform::LaunchExtras extras;
};

namespace {

using Platform::DescribeError;

constexpr int kSyncTimeoutMs = 10000;
// The bus may take as long as this to start an application.
constexpr int kAsyncTimeoutMs = 25000;

int GiveCopy(const std::string& text, char** copy) {
    *copy = strdup(text.c_str());
    return *copy != nullptr ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

auto FindExtra(app_control_h handle, const char* key) {
    return std::find_if(handle->extras.begin(), handle->extras.end(),
                        [key](const auto& extra) { return extra.first == key; });
}

app_control_error_e ResultOf(const GError& error) {
    if (g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
        g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
        return APP_CONTROL_ERROR_APP_NOT_FOUND;
    }
    const bool isTimeout = g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ||
                           g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) ||
                           g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) ||
                           g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_TIMED_OUT);
    return isTimeout ? APP_CONTROL_ERROR_TIMED_OUT : APP_CONTROL_ERROR_LAUNCH_FAILED;
}

// A launch on its way: the bus connection first, then the call. It owns itself until Finish.
class PendingLaunch {
public:
    static void Start(const app_control_s& request, app_control_result_cb callback,
                      void* userData) {
        auto* launch = new PendingLaunch{request, callback, userData};
        g_bus_get(G_BUS_TYPE_SYSTEM, nullptr, OnBus, launch);
    }

private:
    PendingLaunch(app_control_s request, app_control_result_cb callback, void* userData)
        : m_request(std::move(request)),
          m_phone(Platform::AskedPhone()),
          m_callback(callback),
          m_userData(userData) {}

    static void OnBus(GObject* /*source*/, GAsyncResult* result, gpointer userData) noexcept {
        auto* self = static_cast<PendingLaunch*>(userData);
        GErrorPtr error;
        const GObjectPtr<GDBusConnection> bus(g_bus_get_finish(result, Out(error)));
        if (bus == nullptr) {
            self->Finish(error.get());
            return;
        }
        const std::string& id = self->m_request.appId;
        g_dbus_connection_call(bus.get(), id.c_str(), Platform::ObjectPathOf(id).c_str(),
                               Platform::kApplicationInterface, "ActivateAction",
                               Platform::LaunchArguments(self->m_request.extras, self->m_phone),
                               nullptr, G_DBUS_CALL_FLAGS_NONE, kAsyncTimeoutMs, nullptr, OnReply,
                               self);
    }

    static void OnReply(GObject* source, GAsyncResult* result, gpointer userData) noexcept {
        GErrorPtr error;
        const GVariantPtr reply(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, Out(error)));
        static_cast<PendingLaunch*>(userData)->Finish(error.get());
    }

    // `error` is NULL after a success.
    void Finish(const GError* error) {
        const std::unique_ptr<PendingLaunch> self(this);
        if (m_callback != nullptr) {
            if (error != nullptr) {
                PLATFORM_DEBUG("launch of %s failed: %s", m_request.appId.c_str(),
                               DescribeError(*error).c_str());
            }
            m_callback(&m_request, error != nullptr ? ResultOf(*error) : APP_CONTROL_ERROR_NONE,
                       m_userData);
        } else if (error != nullptr) {
            // Nobody else will ever hear of it.
            PLATFORM_ERROR("launch of %s failed: %s", m_request.appId.c_str(),
                           DescribeError(*error).c_str());
        }
    }

    app_control_s m_request;
    std::string m_phone;  // when it was asked for: another one may be when the bus is reached
    app_control_result_cb m_callback;
    void* m_userData;
};

int LaunchAndWait(const app_control_s& request) {
    GErrorPtr error;
    const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    if (bus != nullptr) {
        const GVariantPtr reply(g_dbus_connection_call_sync(
            bus.get(), request.appId.c_str(), Platform::ObjectPathOf(request.appId).c_str(),
            Platform::kApplicationInterface, "ActivateAction",
            Platform::LaunchArguments(request.extras, ""), nullptr, G_DBUS_CALL_FLAGS_NONE,
            kSyncTimeoutMs, nullptr, Out(error)));
    }
    if (error == nullptr) {
        return APP_CONTROL_ERROR_NONE;
    }
    PLATFORM_DEBUG("launch of %s failed: %s", request.appId.c_str(), DescribeError(*error).c_str());
    return ResultOf(*error);
}

}  // namespace

int app_control_create(app_control_h* handle) {
    if (handle == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    *handle = new app_control_s{APP_CONTROL_OPERATION_DEFAULT, {}, {}};
    return APP_CONTROL_ERROR_NONE;
}

int app_control_destroy(app_control_h handle) {
    const std::unique_ptr<app_control_s> owner(handle);
    return owner != nullptr ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_INVALID_PARAMETER;
}

int app_control_set_operation(app_control_h handle, const char* operation) {
    if (handle == nullptr || operation == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    handle->operation = operation;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_set_app_id(app_control_h handle, const char* app_id) {
    if (handle == nullptr || app_id == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    handle->appId = app_id;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value) {
    if (handle == nullptr || key == nullptr || value == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    // The bus carries nothing else.
    if (g_utf8_validate(key, -1, nullptr) == FALSE ||
        g_utf8_validate(value, -1, nullptr) == FALSE) {
        PLATFORM_WARN("launch of %s without the extra %s=%s: it is not UTF-8",
                      handle->appId.c_str(), key, value);
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    const auto present = FindExtra(handle, key);
    if (present != handle->extras.end()) {
        present->second = value;
    } else {
        handle->extras.emplace_back(key, value);
    }
    return APP_CONTROL_ERROR_NONE;
}

int app_control_get_app_id(app_control_h handle, char** app_id) {
    if (app_id == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    *app_id = nullptr;
    if (handle == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    return handle->appId.empty() ? APP_CONTROL_ERROR_KEY_NOT_FOUND
                                 : GiveCopy(handle->appId, app_id);
}

int app_control_get_extra_data(app_control_h handle, const char* key, char** value) {
    if (value == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    *value = nullptr;
    if (handle == nullptr || key == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    const auto present = FindExtra(handle, key);
    return present == handle->extras.end() ? APP_CONTROL_ERROR_KEY_NOT_FOUND
                                           : GiveCopy(present->second, value);
}

int app_control_foreach_extra_data(app_control_h handle, app_control_extra_data_cb callback,
                                   void* user_data) {
    if (handle == nullptr || callback == nullptr) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    // Over a copy, for the callback may add to the request.
    const Platform::LaunchExtras extras = handle->extras;
    for (const auto& extra : extras) {
        if (!callback(handle, extra.first.c_str(), user_data)) {
            break;
        }
    }
    return APP_CONTROL_ERROR_NONE;
}

int app_control_send_launch_request(app_control_h handle, app_control_reply_cb /*reply_callback*/,
                                    void* /*user_data*/) {
    if (handle == nullptr || !Platform::IsApplicationId(handle->appId)) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    if (!Platform::IsMainLoopThread()) {
        return LaunchAndWait(*handle);
    }
    PendingLaunch::Start(*handle, nullptr, nullptr);
    return APP_CONTROL_ERROR_NONE;
}

int app_control_send_launch_request_async(app_control_h handle,
                                          app_control_result_cb result_callback,
                                          app_control_reply_cb /*reply_callback*/,
                                          void* user_data) {
    if (handle == nullptr || !Platform::IsApplicationId(handle->appId) ||
        !Platform::IsMainLoopThread()) {
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    PendingLaunch::Start(*handle, result_callback, user_data);
    return APP_CONTROL_ERROR_NONE;
}
