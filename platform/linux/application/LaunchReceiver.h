// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

#include "common/CHandle.h"
#include "platform/linux/application/ApplicationBus.h"

namespace Platform {

struct Launch {
    LaunchExtras extras;  // in order; a mere activation comes without any
    std::string phone;    // address of the phone that it is about, as told; empty when none was
};

// An application's side of a launch: owns the application's name on the system bus, stands there as
// org.freedesktop.Application and hands each launch to a function on the main loop. Main loop's
// thread only.
class LaunchReceiver {
public:
    // The sender has its answer when the function returns.
    using LaunchHandler = std::function<void(const Launch& launch)>;
    // The name could not be had, or is no longer, which the log says.
    using NameLostHandler = std::function<void()>;

    // `applicationId` is a valid bus name.
    LaunchReceiver(std::string applicationId, LaunchHandler onLaunch, NameLostHandler onNameLost);
    ~LaunchReceiver();
    // For an application that is about to end: when it returns, no launch comes any more, each one
    // that came is handed over and its sender has the answer, and a later one starts the
    // application again. The main loop runs meanwhile. A second call does nothing.
    void GiveUpName();
    LaunchReceiver(const LaunchReceiver&) = delete;
    LaunchReceiver& operator=(const LaunchReceiver&) = delete;

private:
    static void OnBusAcquired(GDBusConnection* bus, const char* name, gpointer userData) noexcept;
    static void OnNameLost(GDBusConnection* bus, const char* name, gpointer userData) noexcept;
    static void OnMethodCall(GDBusConnection* bus, const char* sender, const char* path,
                             const char* interface, const char* method, GVariant* parameters,
                             GDBusMethodInvocation* invocation, gpointer userData) noexcept;
    void Refuse(GDBusMethodInvocation* invocation, const std::string& reason);

    const std::string m_applicationId;
    const LaunchHandler m_onLaunch;
    const NameLostHandler m_onNameLost;
    GDBusNodeInfoPtr m_description;
    GObjectPtr<GDBusConnection> m_bus;
    guint m_registration = 0;
    guint m_nameOwner = 0;
};

}  // namespace Platform
