// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Discovery.h"

#include <algorithm>

#include "common/BusWatch.h"

namespace TvSim {
namespace {

// What the controller needs to end a scan.
constexpr int kStopMs = 5;

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool ApplyText(DiscoveryFilter& filter, const std::string& key, const std::string& value) {
    if (key == "Transport") {
        filter.transport = value;
        return value == "auto" || value == "le" || value == "bredr";
    }
    filter.pattern = value;
    return key == "Pattern";
}

bool ApplyNumber(DiscoveryFilter& filter, const std::string& key, int value) {
    if (key == "RSSI") {
        filter.rssi = value;
        return value >= -127 && value <= 20;
    }
    filter.pathloss = value;
    return key == "Pathloss" && value <= 137;
}

bool Apply(DiscoveryFilter& filter, const std::string& key, GVariant* value) {
    const std::string type = g_variant_get_type_string(value);
    if (type == "s") {
        return ApplyText(filter, key, g_variant_get_string(value, nullptr));
    }
    if (type == "n" && key == "RSSI") {
        return ApplyNumber(filter, key, g_variant_get_int16(value));
    }
    if (type == "q" && key == "Pathloss") {
        return ApplyNumber(filter, key, g_variant_get_uint16(value));
    }
    if (type == "b") {
        if (key == "DuplicateData") {
            filter.duplicateData = g_variant_get_boolean(value) != FALSE;
        }
        // Every simulated advertiser is discoverable, so that filter lets everything through.
        return key == "DuplicateData" || key == "Discoverable";
    }
    if (type == "as" && key == "UUIDs") {
        const CPtr<const char*, g_free> uuids(g_variant_get_strv(value, nullptr));
        for (const char** uuid = uuids.get(); *uuid != nullptr; ++uuid) {
            filter.uuids.emplace_back(*uuid);
        }
        return true;
    }
    return false;
}

}  // namespace

std::optional<DiscoveryFilter> DiscoveryFilter::Parse(GVariant* dictionary) {
    DiscoveryFilter filter;
    for (gsize i = 0; i < g_variant_n_children(dictionary); ++i) {
        GStringPtr key;
        GVariantPtr value;
        const GVariantPtr entry(g_variant_get_child_value(dictionary, i));
        g_variant_get(entry.get(), "{sv}", static_cast<char**>(Out(key)),
                      static_cast<GVariant**>(Out(value)));
        if (!Apply(filter, key.get(), value.get())) {
            return std::nullopt;
        }
    }
    if (filter.rssi && filter.pathloss) {
        return std::nullopt;
    }
    return filter;
}

bool DiscoveryFilter::Wants(const Advertisement& advertisement) const {
    // No simulated advertisement tells its transmission power or a service.
    return transport != "bredr" && uuids.empty() && !pathloss &&
           (!rssi || advertisement.rssi >= *rssi);
}

bool DiscoveryFilter::Fits(const Advertisement& advertisement) const {
    return StartsWith(advertisement.address, *pattern) || StartsWith(advertisement.name, *pattern);
}

struct Discovery::Client {
    std::optional<DiscoveryFilter> filter;
    State state = State::kNone;
    std::optional<MethodCall> call;  // the start or stop under way
    Timer timer;
    BusWatch watch;
};

Discovery::Discovery(GDBusConnection* connection, int startMs, EventSink say,
                     std::function<void()> started, std::function<void()> stopped)
    : m_connection(connection),
      m_startMs(startMs),
      m_say(std::move(say)),
      m_started(std::move(started)),
      m_stopped(std::move(stopped)) {}

Discovery::~Discovery() = default;

void Discovery::SetFilter(MethodCall call) {
    const GVariantPtr dictionary(g_variant_get_child_value(call.Arguments(), 0));
    std::optional<DiscoveryFilter> filter = DiscoveryFilter::Parse(dictionary.get());
    if (!filter) {
        call.FailBluez("InvalidArguments", "Invalid arguments in method call");
        return;
    }
    Client& client = FindOrAddClient(call.Sender());
    if (g_variant_n_children(dictionary.get()) == 0) {
        client.filter.reset();
    } else {
        client.filter = std::move(filter);
    }
    call.Answer();
}

void Discovery::Start(MethodCall call) {
    Client& client = FindOrAddClient(call.Sender());
    if (client.state != State::kNone) {
        call.FailBluez("InProgress", "Operation already in progress");
        return;
    }
    m_say("adapter", "discovery started by " + call.Sender());
    client.state = State::kStarting;
    const std::string name = call.Sender();
    client.call.emplace(std::move(call));
    client.timer = Timer::Once(m_startMs, [this, name] { FinishStart(name); });
}

void Discovery::Stop(MethodCall call) {
    const auto found = m_clients.find(call.Sender());
    if (found == m_clients.end() || found->second->state == State::kNone) {
        call.FailBluez("Failed", "No discovery started");
        return;
    }
    Client& client = *found->second;
    if (client.state != State::kActive) {
        call.FailBluez("InProgress", "Operation already in progress");
        return;
    }
    m_say("adapter", "discovery stopped by " + call.Sender());
    client.state = State::kStopping;
    const std::string name = call.Sender();
    client.call.emplace(std::move(call));
    client.timer = Timer::Once(kStopMs, [this, name] { FinishStop(name); });
}

void Discovery::Abandon() {
    for (const auto& [name, client] : m_clients) {
        if (client->call) {
            client->call->FailBluez("NotReady", "Resource Not Ready");
        }
    }
    m_clients.clear();
    FollowSessions();
}

bool Discovery::ReportsDuplicates() const {
    return std::any_of(m_clients.begin(), m_clients.end(), [](const auto& entry) {
        const Client& client = *entry.second;
        return client.state == State::kActive && client.filter && client.filter->duplicateData;
    });
}

bool Discovery::Wants(const Advertisement& advertisement) const {
    bool isWanted = false;
    bool hasPattern = false;
    bool fits = false;
    for (const auto& [name, client] : m_clients) {
        if (client->state != State::kActive && client->state != State::kStopping) {
            continue;
        }
        const auto& filter = client->filter;
        isWanted = isWanted || !filter || filter->Wants(advertisement);
        if (filter && filter->pattern) {
            hasPattern = true;
            fits = fits || filter->Fits(advertisement);
        }
    }
    return isWanted && (fits || !hasPattern);
}

void Discovery::OnClientGone(GDBusConnection* /*connection*/, const char* name,
                             gpointer userData) noexcept {
    auto* self = static_cast<Discovery*>(userData);
    const auto found = self->m_clients.find(name);
    if (found != self->m_clients.end()) {
        if (found->second->state != State::kNone) {
            self->m_say("adapter", "discovery ended, " + found->first + " left the bus");
        }
        self->m_clients.erase(found);
        self->FollowSessions();
    }
}

Discovery::Client& Discovery::FindOrAddClient(const std::string& name) {
    std::unique_ptr<Client>& client = m_clients[name];
    if (client == nullptr) {
        client = std::make_unique<Client>();
        client->watch = BusWatch::OnName(m_connection, name.c_str(), nullptr, OnClientGone, this);
    }
    return *client;
}

void Discovery::FinishStart(const std::string& name) {
    Client& client = *m_clients.at(name);
    client.state = State::kActive;
    MethodCall call = std::move(*client.call);
    client.call.reset();
    FollowSessions();
    call.Answer();
}

void Discovery::FinishStop(const std::string& name) {
    Client& client = *m_clients.at(name);
    client.state = State::kNone;
    MethodCall call = std::move(*client.call);
    client.call.reset();
    FollowSessions();
    call.Answer();
}

void Discovery::FollowSessions() {
    const bool running = std::any_of(m_clients.begin(), m_clients.end(), [](const auto& entry) {
        return entry.second->state == State::kActive || entry.second->state == State::kStopping;
    });
    if (running != m_running) {
        m_running = running;
        (running ? m_started : m_stopped)();
    }
}

}  // namespace TvSim
