// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Source.h"
#include "tools/tv-sim/MethodCall.h"
#include "tools/tv-sim/Plans.h"

namespace TvSim {

// The discovery sessions of an adapter's clients: one for each unique bus name, with the filter
// that it set; a session ends when its client leaves the bus. The caller has checked that the
// adapter is powered.
class Discovery {
public:
    // A session begins `startMs` after it was asked for. `onRunning` hears when the first one
    // begins (true) and when the last one ends.
    Discovery(GDBusConnection* connection, int startMs,
              std::function<void(const std::string& what)> say,
              std::function<void(bool running)> onRunning);
    ~Discovery();

    // Names of the keys that a filter may have.
    [[nodiscard]] static std::vector<std::string> FilterKeys();
    void SetFilter(MethodCall call);
    void Start(MethodCall call);
    void Stop(MethodCall call);
    // A session of another program, which wants everything.
    void StartOther();
    // Ends every session and forgets every filter: the radio is gone.
    void Abandon();

    [[nodiscard]] bool Running() const { return m_running; }
    [[nodiscard]] bool ReportsDuplicates() const;
    // Whether any session wants it: results of all sessions go to all clients. Once a session has a
    // pattern, those without do not help: some pattern must fit, as with bluetoothd 5.66.
    [[nodiscard]] bool Wants(const Advertisement& advertisement) const;

private:
    enum class State { kNone, kStarting, kActive, kStopping };
    struct Filter;
    struct Client;

    static void OnClientGone(GDBusConnection* connection, const char* name,
                             gpointer userData) noexcept;
    Client& FindOrAddClient(const std::string& name);
    // The client is in the first state until the call is answered, then in the second one.
    void Begin(Client& client, State now, State then, int ms, MethodCall call);
    void FollowSessions();

    GDBusConnection* m_connection;  // not owned
    int m_startMs;
    std::function<void(const std::string&)> m_say;
    std::function<void(bool)> m_onRunning;
    std::map<std::string, std::unique_ptr<Client>> m_clients;  // by unique name
    bool m_running = false;
};

}  // namespace TvSim
