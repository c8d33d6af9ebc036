// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/World.h"

#include <algorithm>
#include <set>
#include <utility>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "common/Address.h"
#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/bluez/Path.h"
#include "tests/memory_bus/VirtualTime.h"

namespace {

// A status that was told so long ago has arrived, whatever the bus does.
constexpr int kArrivedMs = 1000;
// Rarely, for the sake of many wake-ups.
constexpr int kAdvertiseEveryMs = 1000;
// What a phone advertises, and where its address is in it.
constexpr std::size_t kDataSize = 15;
constexpr std::size_t kAddressStart = 7;

}  // namespace

World::World(MemoryBus& bus, Judge& judge, std::function<void(const std::string&)> say)
    : m_bus(bus), m_judge(judge), m_say(std::move(say)) {
    m_bus.treat = [this](const MemoryBus::CallInfo& call) { return TreatCall(call); };
    m_bus.onCallOver = [this](const MemoryBus::CallInfo& call) {
        Say("< ", call);
        m_judge.OnCallOver(call);
    };
    m_judge.isBonded = [this](const std::string& path) { return IsBonded(path); };
    m_judge.attempt.isPlaying = [this](const std::string& address) {
        return IsPlaying(m_judge.PathOf(address));
    };
    m_judge.attempt.isHeldUp = [this] { return tv.IsHeldUp(); };
    m_judge.attempt.isAmbient = [this] { return tv.IsAmbient(); };
    m_judge.attempt.isWakeUpGood = [this] { return tv.IsWakeUpGood(); };
    m_judge.attempt.isDoctorContent = [this] { return tv.IsDoctorContent(); };
    m_judge.listedPhones = [this] { return tv.ListedPhones(); };
}

World::~World() {
    m_bus.treat = nullptr;
    m_bus.onCallOver = nullptr;
}

std::string World::IdOf(int phone) {
    return std::string(1, static_cast<char>('A' + phone));
}

TvSim::PhonePlan World::MakePlan(int phone) {
    TvSim::PhonePlan plan = TvSim::MakePhone(IdOf(phone), TvState::AddressOf(phone));
    plan.advertiseEveryMs = kAdvertiseEveryMs;
    plan.advertiseFrom = plan.address;
    plan.adapter = phone < TvState::kPhones ? TvSim::Which::kFirst : TvSim::Which::kSecond;
    return plan;
}

const TvSim::PhonePlan* World::PlanAt(const std::string& path) {
    const auto found =
        std::find_if(m_scenario.phones.begin(), m_scenario.phones.end(), [&](const auto& plan) {
            const std::string adapter = "/org/bluez/hci" + std::to_string(m_numbers[plan.adapter]);
            return Bluez::IsBelow(path, adapter) && Bluez::AddressOfPath(path) == plan.address;
        });
    return found == m_scenario.phones.end() ? nullptr : &*found;
}

bool World::IsBonded(const std::string& path) {
    const TvSim::PhonePlan* plan = PlanAt(path);
    return (plan != nullptr && plan->bonded) ||
           VirtualTime::NowMs() - m_bondsChangedMs < kArrivedMs;
}

std::optional<bool> World::IsPlaying(const std::string& path) {
    static const std::set<std::string> kPlays = {"playing", "forward-seek", "reverse-seek"};
    const TvSim::PhonePlan* plan = PlanAt(path);
    const State state = plan == nullptr ? State() : m_states[plan->id];
    return state.isTold && VirtualTime::NowMs() - state.sinceMs >= kArrivedMs
               ? std::optional<bool>(kPlays.count(state.status) != 0)
               : std::nullopt;
}

void World::Heal() {
    m_faults.clear();
    m_isScanSpoilt = false;
    m_bus.SetLatency(0);
    m_scenario.adapter = {};
    m_scenario.secondAdapter = TvSim::SecondAdapter();
    for (int phone = static_cast<int>(m_scenario.phones.size()); phone < kPhones; ++phone) {
        m_scenario.phones.push_back(MakePlan(phone));
    }
    if (m_simulator == nullptr) {
        StartBluez();
    }
    WithBluez([](TvSim::Simulator& bluez) {
        bluez.Faults() = {};
        bluez.SetAdapterPresent(TvSim::Which::kSecond, false);
    });
    Renumber(TvSim::Which::kSecond, 1);
    Renumber(TvSim::Which::kFirst, 0);
    m_simulator->SetAdapterPresent(TvSim::Which::kFirst, true);
    m_simulator->SetAdapterPowered(TvSim::Which::kFirst, true);
    for (int phone = 0; phone < kPhones; ++phone) {
        m_scenario.phones[static_cast<std::size_t>(phone)] = MakePlan(phone);
        WithPhone(phone, [phone](TvSim::Phone& each) {
            // Ends what it is doing, also a connection that hangs.
            each.OnAdapterLosesPower();
            each.Pair();
            each.SetPlan(MakePlan(phone));
        });
    }
    tv.Heal();
}

bool World::Load(const TvSim::Scenario& scenario) {
    m_scenario = scenario;
    m_numbers = {{TvSim::Which::kFirst, scenario.adapter.number},
                 {TvSim::Which::kSecond, scenario.secondAdapter.number}};
    StartBluez();
    return tv.Load(scenario);
}

void World::Command(const char* name, GVariant* parameters) {
    m_bus.Signal(kObjectPath, kInterfaceName, name,
                 parameters == nullptr ? g_variant_new("()") : parameters);
}

void World::StartBluez() {
    m_simulator = std::make_unique<TvSim::Simulator>(
        m_scenario, g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr),
        [this](const std::string& subject, const std::string& what) { OnEvent(subject, what); });
}

void World::KillBluez() {
    WithBluez([](TvSim::Simulator& bluez) { bluez.Crash(); });
    m_simulator.reset();
}

void World::WithBluez(const std::function<void(TvSim::Simulator&)>& action) {
    if (m_simulator != nullptr) {
        action(*m_simulator);
    }
}

void World::Renumber(TvSim::Which which, int number) {
    if (m_numbers[which] == number) {
        return;
    }
    (which == TvSim::Which::kFirst ? m_scenario.adapter : m_scenario.secondAdapter).number = number;
    WithBluez([&](TvSim::Simulator& bluez) { bluez.RenumberAdapter(which, number); });
    m_numbers[which] = number;
    m_bondsChangedMs = VirtualTime::NowMs();
}

void World::Say(const char* direction, const MemoryBus::CallInfo& call) const {
    if (m_say) {
        m_say(direction + call.method + " " + call.path);
    }
}

MemoryBus::Treatment World::TreatCall(const MemoryBus::CallInfo& call) {
    Say("> ", call);
    m_judge.OnCall(call);
    MemoryBus::Treatment treatment;
    const auto fault = m_faults.find(call.method);
    if (fault != m_faults.end() && fault->second.left-- > 0) {
        treatment = fault->second.how;
    }
    if (call.destination == Conditions::kMediaPlayerAppId) {
        Play(call);
        treatment.isDelivered = false;
    }
    return treatment;
}

// A launch reaches the media player, which the bus starts for it.
void World::Play(const MemoryBus::CallInfo& call) {
    const GVariantPtr data(g_variant_get_child_value(call.arguments.get(), 2));
    const char* address = "";
    g_variant_lookup(data.get(), Platform::kPhoneData, "&s", &address);
    m_judge.OnPlay(address);
    Player& player = m_players[address];
    if (!player.command) {
        player.command.emplace(player.mirror, address,
                               [this, phone = std::string(address)] { m_players.erase(phone); });
    }
}

void World::ChangePhone(int phone, const std::function<void(TvSim::PhonePlan&)>& change) {
    TvSim::PhonePlan& plan = m_scenario.phones[static_cast<std::size_t>(phone)];
    change(plan);
    WithPhone(phone, [&plan](TvSim::Phone& each) { each.SetPlan(plan); });
}

void World::WithPhone(int phone, const std::function<void(TvSim::Phone&)>& action) {
    if (m_simulator != nullptr) {
        action(*m_simulator->FindPhone(IdOf(phone)));
    }
}

void World::RemoveBond(int phone) {
    ChangePhone(phone, [](TvSim::PhonePlan& plan) { plan.bonded = false; });
    WithPhone(phone, [](TvSim::Phone& each) { each.LoseBond(); });
    m_bondsChangedMs = VirtualTime::NowMs();
}

void World::Advertise(int phone, const std::string& from, bool elsewhere) {
    const TvSim::PhonePlan& plan = m_scenario.phones[static_cast<std::size_t>(phone)];
    if (elsewhere) {
        const std::vector<unsigned char>& bytes = plan.manufacturerData.begin()->second;
        GVariant* values = g_variant_new_parsed(
            "{'RSSI': <int16 -60>, 'ManufacturerData': <{uint16 117: <%@ay>}>}",
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1));
        m_bus.Signal("/org/bluez/hci7/dev_00_00_00_00_00_01", "org.freedesktop.DBus.Properties",
                     "PropertiesChanged",
                     g_variant_new("(s@a{sv}as)", "org.bluez.Device1", values, nullptr));
    } else if (m_simulator != nullptr &&
               m_simulator->Advertise({from, true, true, -60, plan.manufacturerData})) {
        m_judge.attempt.OnHeard(plan.address);
    }
}

bool World::HasMusic() const {
    return std::any_of(m_states.begin(), m_states.end(), [](const auto& entry) {
        return entry.second.isConnected && entry.second.isTold && entry.second.status == "playing";
    });
}

void World::OnEvent(const std::string& subject, const std::string& what) {
    if (m_say) {
        m_say(subject + ": " + what);
    }
    if (onEvent) {
        onEvent(subject, what);
    }
    if (what.compare(0, 17, "discovery started") == 0) {
        m_judge.attempt.OnDiscovery();
    }
    if (subject.compare(0, 6, "phone ") != 0) {
        return;
    }
    const std::string id = subject.substr(6);
    State& state = m_states[id];
    const std::string told = "tells its status ";
    if (what == "connected" || what == "disconnected") {
        state = {};
        state.isConnected = what == "connected";
    } else if (what.compare(0, told.size(), told) == 0) {
        state.isTold = true;
        state.status = what.substr(told.size());
    } else if (what == "plays" || what.compare(0, 3, "is ") == 0) {
        state.status = what == "plays" ? "playing" : what.substr(3);
    } else if (what.compare(0, 10, "advertises") == 0) {
        const TvSim::PhonePlan& plan = *m_scenario.FindPhone(id);
        if (plan.bonded && (plan.advertiseFrom == plan.address || !plan.hasApplication)) {
            m_judge.attempt.OnHeard(plan.address);
        }
        for (const auto& [company, bytes] : plan.manufacturerData) {
            if (bytes.size() >= kDataSize) {
                m_judge.attempt.OnHeard(FormatAddress(&bytes[kAddressStart]));
            }
        }
    }
    state.sinceMs = VirtualTime::NowMs();
}
