// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/UiAppLaunch.h"

#include <stdexcept>
#include <utility>

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/event_wait.h"
#include "utility/AppControl.h"

namespace {

constexpr const char* kUiAppId = "org.orlix.nirvoui";
constexpr const char* kReadyEvent = "/tmp/.nivoui_ready";
constexpr int kReadyTimeoutMs = 10000;
constexpr int kLaunchAttempts = 3;

}  // namespace

UiAppLaunch::UiAppLaunch() {
    BTLOG_TRACE();
    m_worker = std::thread([this] { ThreadFunction(); });
}

UiAppLaunch::~UiAppLaunch() {
    BTLOG_TRACE();
    {
        // Without the lock the worker could miss the notification: it could read the flag before
        // this store and begin to wait after the notification.
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
    }
    m_condition.notify_all();
    if (m_worker.joinable()) {
        m_worker.join();
    }
}

void UiAppLaunch::Launch(const nirvo_event& event) {
    BTLOG_TRACE();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_stopped) {
            throw std::runtime_error("thread stopped");
        }
        m_queue.push_back(event);
    }
    m_condition.notify_one();
    BTLOG_INFO("request launch org.orlix.nirvoui");
}

void UiAppLaunch::ThreadFunction() {
    BTLOG_TRACE();
    while (true) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait(lock, [this] { return m_stopped || !m_queue.empty(); });
        if (m_queue.empty()) {
            return;
        }
        const nirvo_event event = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        SendNirvoUiMessage(event);
    }
}

void UiAppLaunch::SendNirvoUiMessage(const nirvo_event& event) {
    BTLOG_TRACE();
    for (int attempt = 0; attempt < kLaunchAttempts; ++attempt) {
        if (LaunchApp(event)) {
            BTLOG_INFO("org.orlix.nirvoui launched");
            // If the application never gets ready, only this time is lost.
            LwipcWaitEvent(kReadyEvent, kReadyTimeoutMs);
            return;
        }
        BTLOG_ERROR("Failed to launch org.orlix.nirvoui");
    }
}

bool UiAppLaunch::LaunchApp(const nirvo_event& event) {
    BTLOG_TRACE();
    const AppControlPtr handle = MakeLaunchRequest(kUiAppId);
    AddEventDataTo(handle.get(), event);
    return app_control_send_launch_request(handle.get(), nullptr, nullptr) == 0;
}

void UiAppLaunch::AddEventDataTo(app_control_h handle, const nirvo_event& event) {
    BTLOG_TRACE();
    const std::string number = std::to_string(event.msg_no);
    const std::string type = std::to_string(event.msg_type);
    app_control_add_extra_data(handle, "msg_no", number.c_str());
    app_control_add_extra_data(handle, "msg_type", type.c_str());
    std::string text = "msg_no:" + number + ", msg_type:" + type;
    const std::pair<const char*, const std::string&> arguments[] = {
        {"msg1", event.msg1}, {"msg2", event.msg2}, {"msg3", event.msg3}, {"msg4", event.msg4}};
    for (const auto& [key, value] : arguments) {
        if (!value.empty()) {
            app_control_add_extra_data(handle, key, value.c_str());
            text += std::string(", ") + key + ":" + value;
        }
    }
    BTLOG_INFO("%s", text.c_str());
}
