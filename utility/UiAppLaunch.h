// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "platform/application.h"

// An event for the package's UI application.
// NOLINTNEXTLINE(readability-identifier-naming): a record of the platform's style
struct nirvo_event {
    int msg_no;    // message number, always sent
    int msg_type;  // message type, always sent
    // Arguments, sent when they are not empty.
    std::string msg1;
    std::string msg2;
    std::string msg3;
    std::string msg4;
};

// Delivers events to the package's UI application, "org.orlix.nirvoui". Launch queues an event and
// returns at once; the launcher's own thread launches the application with it, three times at most,
// waits until the application says that it is ready, and only then takes the next event. The
// destructor delivers what is queued before it returns.
class UiAppLaunch {
public:
    // Starts the worker thread.
    UiAppLaunch();
    ~UiAppLaunch();
    UiAppLaunch(const UiAppLaunch&) = delete;
    UiAppLaunch& operator=(const UiAppLaunch&) = delete;

    // Queues a copy of the event. Any thread. Throws std::runtime_error("thread stopped") once the
    // destruction has begun.
    void Launch(const nirvo_event& event);

private:
    void ThreadFunction();
    void SendNirvoUiMessage(const nirvo_event& event);
    bool LaunchApp(const nirvo_event& event);
    void AddEventDataTo(app_control_h handle, const nirvo_event& event);

    std::thread m_worker;
    std::deque<nirvo_event> m_queue;
    std::mutex m_mutex;  // guards m_queue and m_stopped
    std::condition_variable m_condition;
    bool m_stopped = false;
};
