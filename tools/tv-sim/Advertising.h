// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>

#include "tools/tv-sim/MethodCall.h"

namespace TvSim {

// What programs have an adapter send. It says what that is; nobody hears it.
class Advertising {
public:
    Advertising(GDBusConnection* connection, std::function<void(const std::string& what)> say)
        : m_connection(connection), m_say(std::move(say)), m_requests(g_cancellable_new()) {}
    ~Advertising() { g_cancellable_cancel(m_requests.get()); }
    Advertising(const Advertising&) = delete;
    Advertising& operator=(const Advertising&) = delete;

    // A call of the advertising manager. As with bluetoothd, an advertisement's object is asked
    // what to send before the registration is answered.
    void OnCall(MethodCall call);

private:
    using Key = std::pair<std::string, std::string>;  // the program and the object
    struct Request;
    static void OnProperties(GObject* connection, GAsyncResult* result, gpointer data) noexcept;

    GDBusConnection* m_connection;  // not owned
    std::function<void(const std::string&)> m_say;
    std::set<Key> m_registered;
    GObjectPtr<GCancellable> m_requests;
};

}  // namespace TvSim
