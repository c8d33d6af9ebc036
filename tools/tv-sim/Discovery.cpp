// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Discovery.h"

#include <algorithm>

#include "common/BusWatch.h"
#include "tools/tv-sim/Address.h"

namespace TvSim {
namespace {

// What the controller needs to end a scan.
constexpr int kStopMs = 5;

constexpr std::pair<const char*, const char*> kKeyTypes[] = {
    {"UUIDs", "as"},        {"RSSI", "n"},         {"Pathloss", "q"}, {"Transport", "s"},
    {"DuplicateData", "b"}, {"Discoverable", "b"}, {"Pattern", "s"}};

bool IsKnown(GVariant* entry) {
    const char* key = nullptr;
    GVariantPtr value;
    g_variant_get(entry, "{&sv}", &key, static_cast<GVariant**>(Out(value)));
    return std::any_of(std::begin(kKeyTypes), std::end(kKeyTypes), [&](const auto& known) {
        return g_str_equal(known.first, key) != FALSE &&
               g_str_equal(known.second, g_variant_get_type_string(value.get())) != FALSE;
    });
}

}  // namespace

// What a client asked SetDiscoveryFilter for.
struct Discovery::Filter {
    // Empty when a key is unknown or a value has another type or is out of range.
    static std::optional<Filter> Parse(GVariant* dictionary);

    bool duplicateData = false;
    // Whether it asks for BR/EDR, services or a path loss, which no simulated advertisement tells.
    bool wantsOthers = false;
    int rssi = 0;  // at least
    std::optional<std::string> pattern;
};

std::optional<Discovery::Filter> Discovery::Filter::Parse(GVariant* dictionary) {
    for (gsize i = 0; i < g_variant_n_children(dictionary); ++i) {
        if (!IsKnown(GVariantPtr(g_variant_get_child_value(dictionary, i)).get())) {
            return std::nullopt;
        }
    }
    // Every simulated advertiser is discoverable, so that key lets everything through.
    gboolean duplicateData = FALSE;
    gint16 rssi = -127;
    guint16 pathloss = 0;
    const char* text = "auto";
    g_variant_lookup(dictionary, "DuplicateData", "b", &duplicateData);
    g_variant_lookup(dictionary, "Transport", "&s", &text);
    const std::string transport = text;
    const bool hasRssi = g_variant_lookup(dictionary, "RSSI", "n", &rssi) != FALSE;
    const bool hasPathloss = g_variant_lookup(dictionary, "Pathloss", "q", &pathloss) != FALSE;
    const GVariantPtr uuids(g_variant_lookup_value(dictionary, "UUIDs", nullptr));
    if ((transport != "auto" && transport != "le" && transport != "bredr") || rssi < -127 ||
        rssi > 20 || pathloss > 137 || (hasRssi && hasPathloss)) {
        return std::nullopt;
    }
    Filter filter;
    filter.duplicateData = duplicateData != FALSE;
    filter.wantsOthers = transport == "bredr" || hasPathloss ||
                         (uuids != nullptr && g_variant_n_children(uuids.get()) != 0);
    filter.rssi = rssi;
    if (g_variant_lookup(dictionary, "Pattern", "&s", &text) != FALSE) {
        filter.pattern = text;
    }
    return filter;
}

struct Discovery::Client {
    [[nodiscard]] bool Discovers() const {
        return state == State::kActive || state == State::kStopping;
    }

    std::optional<Filter> filter;
    State state = State::kNone;
    std::optional<MethodCall> call;  // the start or stop under way
    Timer timer;
    BusWatch watch;
};

Discovery::Discovery(GDBusConnection* connection, int startMs,
                     std::function<void(const std::string&)> say,
                     std::function<void(bool)> onRunning)
    : m_connection(connection),
      m_startMs(startMs),
      m_say(std::move(say)),
      m_onRunning(std::move(onRunning)) {}

Discovery::~Discovery() = default;

std::vector<std::string> Discovery::FilterKeys() {
    std::vector<std::string> keys;
    for (const auto& [key, type] : kKeyTypes) {
        keys.emplace_back(key);
    }
    return keys;
}

void Discovery::SetFilter(MethodCall call) {
    const GVariantPtr dictionary = call.Argument(0);
    std::optional<Filter> filter = Filter::Parse(dictionary.get());
    if (!filter) {
        call.FailBluez("InvalidArguments", "Invalid arguments in method call");
        return;
    }
    if (g_variant_n_children(dictionary.get()) == 0) {
        filter.reset();
    }
    FindOrAddClient(call.Sender()).filter = std::move(filter);
    call.Answer();
}

void Discovery::Start(MethodCall call) {
    Client& client = FindOrAddClient(call.Sender());
    if (client.state != State::kNone) {
        call.FailBluez("InProgress", "Operation already in progress");
        return;
    }
    m_say("discovery started by " + call.Sender());
    Begin(client, State::kStarting, State::kActive, m_startMs, std::move(call));
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
    m_say("discovery stopped by " + call.Sender());
    Begin(client, State::kStopping, State::kNone, kStopMs, std::move(call));
}

void Discovery::Begin(Client& client, State now, State then, int ms, MethodCall call) {
    client.state = now;
    client.call.emplace(std::move(call));
    client.timer = Timer::Once(ms, [this, &client, then] {
        client.state = then;
        MethodCall answered = std::move(*client.call);
        client.call.reset();
        FollowSessions();
        answered.Answer();
    });
}

void Discovery::StartOther() {
    const std::string name = "another program";
    m_say("discovery started by " + name);
    auto client = std::make_unique<Client>();
    client->filter.emplace().duplicateData = true;
    client->filter->rssi = -127;
    client->state = State::kActive;
    m_clients[name] = std::move(client);
    FollowSessions();
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
        if (!client->Discovers()) {
            continue;
        }
        const auto& filter = client->filter;
        isWanted |= !filter || (!filter->wantsOthers && advertisement.rssi >= filter->rssi);
        if (filter && filter->pattern) {
            hasPattern = true;
            // No simulated advertisement carries a name, which may fit as well.
            fits |= StartsWith(advertisement.address, *filter->pattern);
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
            self->m_say("discovery ended, " + found->first + " left the bus");
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

void Discovery::FollowSessions() {
    const bool running = std::any_of(m_clients.begin(), m_clients.end(),
                                     [](const auto& entry) { return entry.second->Discovers(); });
    if (running != m_running) {
        m_running = running;
        m_onRunning(running);
    }
}

}  // namespace TvSim
