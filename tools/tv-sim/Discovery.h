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
#include "tools/tv-sim/Advertisement.h"
#include "tools/tv-sim/Event.h"
#include "tools/tv-sim/MethodCall.h"

namespace TvSim {

// What a client asked SetDiscoveryFilter for.
struct DiscoveryFilter {
    std::string transport = "auto";
    bool duplicateData = false;
    std::optional<int> rssi;
    std::optional<int> pathloss;
    std::vector<std::string> uuids;
    std::optional<std::string> pattern;

    // Empty when a key is unknown or a value has another type or is out of range.
    [[nodiscard]] static std::optional<DiscoveryFilter> Parse(GVariant* dictionary);
    // Its pattern aside.
    [[nodiscard]] bool Wants(const Advertisement& advertisement) const;
    // Its pattern, which there is.
    [[nodiscard]] bool Fits(const Advertisement& advertisement) const;
};

// The discovery sessions of an adapter's clients: one for each unique bus name, with the filter
// that it set; a session ends when its client leaves the bus. The caller has checked that the
// adapter is powered.
class Discovery {
public:
    // A session begins `startMs` after it was asked for. `started` when the first one begins,
    // `stopped` when the last one ends.
    Discovery(GDBusConnection* connection, int startMs, EventSink say,
              std::function<void()> started, std::function<void()> stopped);
    ~Discovery();
    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;

    void SetFilter(MethodCall call);
    void Start(MethodCall call);
    void Stop(MethodCall call);
    // Ends every session and forgets every filter: the radio is gone.
    void Abandon();

    [[nodiscard]] bool Running() const { return m_running; }
    [[nodiscard]] bool ReportsDuplicates() const;
    // Whether any session wants it: results of all sessions go to all clients. Once a session has a
    // pattern, those without do not help: some pattern must fit, as with bluetoothd 5.66.
    [[nodiscard]] bool Wants(const Advertisement& advertisement) const;

private:
    enum class State { kNone, kStarting, kActive, kStopping };
    struct Client;

    static void OnClientGone(GDBusConnection* connection, const char* name,
                             gpointer userData) noexcept;
    Client& FindOrAddClient(const std::string& name);
    void FinishStart(const std::string& name);
    void FinishStop(const std::string& name);
    void FollowSessions();

    GDBusConnection* m_connection;  // not owned
    int m_startMs;
    EventSink m_say;
    std::function<void()> m_started;
    std::function<void()> m_stopped;
    std::map<std::string, std::unique_ptr<Client>> m_clients;  // by unique name
    bool m_running = false;
};

}  // namespace TvSim
