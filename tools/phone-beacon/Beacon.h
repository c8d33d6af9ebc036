// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <string>
#include <utility>
#include <vector>

#include "common/BusWatch.h"
#include "common/CHandle.h"

namespace PhoneBeacon {

struct Plan {
    std::string adapter;      // "hci0"; empty: the first one that is on
    std::string address;      // whom to name, upper case; empty: the adapter itself
    bool isPairable = false;  // lets others find the adapter and pair with it meanwhile
    int restartMs = 0;        // begin the advertisement anew so often; 0: never
};

// Makes an adapter of this machine advertise as a phone with the TV's application does, by
// bluetoothd, and prints who connects and leaves. What it changed is as before when it is gone.
class Beacon {
public:
    // The connection must outlive it.
    Beacon(GDBusConnection* bus, Plan plan) : m_bus(bus), m_plan(std::move(plan)) {}
    ~Beacon();
    Beacon(const Beacon&) = delete;
    Beacon& operator=(const Beacon&) = delete;

    // Advertises until the process is to end. Why it does not, or not any more; empty when it did.
    [[nodiscard]] std::string Run();

private:
    static void OnCall(GDBusConnection* bus, const char* sender, const char* path,
                       const char* interface, const char* method, GVariant* arguments,
                       GDBusMethodInvocation* invocation, gpointer self) noexcept;
    static GVariant* OnGet(GDBusConnection* bus, const char* sender, const char* path,
                           const char* interface, const char* property, GError** error,
                           gpointer self) noexcept;
    static void OnChanged(GDBusConnection* bus, const char* sender, const char* path,
                          const char* interface, const char* signal, GVariant* parameters,
                          gpointer self) noexcept;
    static void OnDaemonGone(GDBusConnection* bus, const char* name, gpointer self) noexcept;

    // Calls bluetoothd, and serves it meanwhile: it asks back before it answers. `arguments` is
    // floating or NULL. Nothing on failure, whose reason is then in m_problem.
    GVariantPtr Ask(const std::string& path, const char* interface, const char* method,
                    GVariant* arguments = nullptr);
    [[nodiscard]] bool FindAdapter();
    // Takes the adapter with these interfaces if it is the one that is meant and can advertise.
    void Consider(const std::string& path, GVariant* interfaces);
    // Sets the adapter's property to true and remembers to undo it.
    [[nodiscard]] bool SwitchOn(const char* property);
    [[nodiscard]] bool SetProperty(const char* property, bool value);
    [[nodiscard]] bool Export();
    [[nodiscard]] bool Register();
    void Restart();
    // Ends it with that reason.
    void End(const std::string& reason);

    GDBusConnection* m_bus;  // not owned
    Plan m_plan;
    std::string m_path;  // of the adapter
    guint m_object = 0;
    bool m_isRegistered = false;
    bool m_isRestarting = false;
    std::vector<const char*> m_switchedOn;
    std::string m_problem;
    std::string m_endReason;
    bool m_isOver = false;
    BusWatch m_devices;
    BusWatch m_daemon;
};

}  // namespace PhoneBeacon
