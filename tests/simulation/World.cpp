// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/World.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "common/Address.h"
#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/base/RootPath.h"
#include "platform/linux/bluez/Path.h"
#include "platform/linux/config/FeatureFile.h"
#include "tests/Phones.h"
#include "tools/tvctl/model/ConfigText.h"
#include "tools/tvctl/model/Diagnosis.h"

namespace {

namespace fs = std::filesystem;

// A status that was told so long ago has arrived, whatever the bus does.
constexpr int kArrivedMs = 1000;
// Rarely, for the sake of many wake-ups.
constexpr int kAdvertiseEveryMs = 1000;
// What a phone advertises, and where its address is in it.
constexpr std::size_t kDataSize = 15;
constexpr std::size_t kAddressStart = 7;
// What another program wrote so long ago was noticed.
constexpr int kNoticeMs = 100;

}  // namespace

World::World(MemoryBus& bus, Judge& judge, std::function<void(const std::string&)> say)
    : m_bus(bus),
      m_judge(judge),
      m_say(std::move(say)),
      m_durable(Platform::StateFolder(), Platform::ConfigFile::Kind::kDurable),
      m_volatile(Platform::RunFolder(), Platform::ConfigFile::Kind::kVolatile) {
    for (const std::string& folder :
         {Platform::SettingsFolder(), Platform::StateFolder(), Platform::RunFolder()}) {
        fs::create_directories(folder);
    }
    m_bus.treat = [this](const MemoryBus::CallInfo& call) { return TreatCall(call); };
    m_bus.onCallOver = [this](const MemoryBus::CallInfo& call) {
        Say("< ", call);
        m_judge.OnCallOver(call);
    };
    m_judge.isBonded = [this](const std::string& path) { return IsBonded(path); };
    m_judge.attempt.isPlaying = [this](const std::string& address) {
        return IsPlaying(m_judge.PathOf(address));
    };
    m_judge.attempt.isAmbient = [this] { return IsAmbient(); };
    m_judge.attempt.isWakeUpGood = [this] { return IsWakeUpGood(); };
    m_judge.attempt.isDoctorContent = [this] { return IsDoctorContent(); };
    m_judge.listedPhones = [this] { return ListedPhones(); };
}

World::~World() {
    m_bus.treat = nullptr;
    m_bus.onCallOver = nullptr;
}

const std::string& World::AddressOf(int phone) {
    static const std::string kAddresses[] = {"A0:11:22:33:44:01", "A0:11:22:33:44:02",
                                             "A0:11:22:33:44:03"};
    return kAddresses[phone % kListedPhones];
}

std::string World::IdOf(int phone) {
    return std::string(1, static_cast<char>('A' + phone));
}

TvSim::PhonePlan World::MakePlan(int phone) {
    TvSim::PhonePlan plan = TvSim::MakePhone(IdOf(phone), AddressOf(phone));
    plan.advertiseEveryMs = kAdvertiseEveryMs;
    plan.advertiseFrom = plan.address;
    plan.adapter = phone < kListedPhones ? TvSim::Which::kFirst : TvSim::Which::kSecond;
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

std::optional<int> World::NumberOf(const char* key) const {
    const auto written = m_keys.find(key);
    return m_endStoreFault || written == m_keys.end() ? std::nullopt
                                                      : std::optional<int>(written->second);
}

std::optional<bool> World::IsAmbient() const {
    const std::optional<int> mode = NumberOf(kModeKey);
    const std::optional<int> type = NumberOf(kTypeKey);
    return mode && type ? std::optional<bool>(*mode == 1 && *type % 2 == 1) : std::nullopt;
}

std::optional<bool> World::IsWakeUpGood() const {
    static const std::set<int> kBadReasons = {41, 94, 95};
    const std::optional<int> reason = NumberOf(kReasonKey);
    const std::optional<int> blocked = NumberOf(kBlockKey);
    if (!reason || !blocked) {
        return std::nullopt;
    }
    return m_isRotating.value_or(false) && kBadReasons.count(*reason) == 0 && *blocked != 1;
}

bool World::IsDoctorContent() const {
    Tvctl::Examination seen;
    seen.isServiceRunning = seen.isPlayerInstalled = seen.hasSink = true;
    seen.isZemi = m_isRotating.value_or(false);
    seen.wakeUpReason = NumberOf(kReasonKey).value_or(0);
    seen.blocked = NumberOf(kBlockKey).value_or(0);
    seen.ambientMode = NumberOf(kModeKey).value_or(0);
    seen.ambientType = NumberOf(kTypeKey).value_or(0);
    seen.phones = {{AddressOf(0), true, true, false}};
    const std::vector<Tvctl::Finding> findings = Tvctl::Diagnose(seen);
    return std::all_of(findings.begin(), findings.end(),
                       [](const Tvctl::Finding& finding) { return finding.holds; });
}

void World::Heal() {
    m_faults.clear();
    m_isScanSpoilt = false;
    m_bus.SetLatency(0);
    EndStoreFault();
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
    SetRotating(true);
    MakeKeys();
}

bool World::Load(const TvSim::Scenario& scenario) {
    m_scenario = scenario;
    m_isListCertain = false;
    SetRotating(scenario.tv.zemi);
    for (const auto& [feature, value] : scenario.tv.features) {
        static_cast<void>(Platform::FeatureFile::Instance().Set(feature, value));
    }
    SetKey(kReasonKey, scenario.tv.wakeupReason);
    SetKey(kModeKey, scenario.tv.ambientMode);
    SetKey(kTypeKey, scenario.tv.ambientType);
    m_keys[kBlockKey] = 0;
    std::vector<std::pair<std::string, std::string>> settings;
    std::vector<std::string> phones;
    for (const TvSim::PhonePlan& phone : scenario.phones) {
        if (phone.registered != "no") {
            settings.emplace_back(phone.address, phone.registered == "on" ? "Y" : "N");
            phones.push_back(phone.address);
        }
    }
    SetKey(kSettingsKey, Settings(settings));
    SetKey(kOnOffKey, Joined(MaskedAll(phones), ","));
    m_numbers = {{TvSim::Which::kFirst, scenario.adapter.number},
                 {TvSim::Which::kSecond, scenario.secondAdapter.number}};
    StartBluez();
    return std::all_of(scenario.tv.keys.begin(), scenario.tv.keys.end(),
                       [this](const auto& key) { return TypeKey(key.first, key.second); });
}

void World::MakeKeys() {
    for (const auto& [key, number] : std::map<std::string, int>{
             {kReasonKey, 1}, {kModeKey, 1}, {kTypeKey, 3}, {kBlockKey, 0}}) {
        if (m_keys.count(key) == 0 || m_keys[key] != number) {
            SetKey(key, number);
        }
    }
    const std::vector<bool> all = {true, true, true};
    if (!m_isListCertain || m_isOn != all || !m_order.empty()) {
        SetPhones(all, false, {});
    }
}

void World::Command(const char* name, GVariant* parameters) {
    m_bus.Signal(kObjectPath, kInterfaceName, name,
                 parameters == nullptr ? g_variant_new("()") : parameters);
}

void World::SetKey(const std::string& key, int number) {
    if (!m_endStoreFault) {
        m_keys[key] = number;
    }
    Write(key, {Platform::ConfigType::kInt, {}, number});
}

void World::SetKey(const std::string& key, const std::string& text) {
    Write(key, {Platform::ConfigType::kString, text, 0});
}

bool World::TypeKey(const std::string& key, const std::string& text) {
    const Platform::ConfigLookup present = FileOf(key).Lookup(key);
    const auto value = Tvctl::ParseValue(
        present.status == Platform::ConfigStatus::kOk ? present.value.type : Tvctl::GuessType(text),
        text);
    if (value) {
        m_keys[key] = value->number;
        Write(key, *value);
    }
    return value.has_value();
}

void World::UnsetKey(const std::string& key) {
    m_keys.erase(key);
    static_cast<void>(FileOf(key).Remove(key));
}

std::string World::KeyText(const std::string& key) {
    const Platform::ConfigLookup present = FileOf(key).Lookup(key);
    return present.status == Platform::ConfigStatus::kOk ? Tvctl::TextOf(present.value) : "";
}

Platform::ConfigFile& World::FileOf(const std::string& key) {
    return key.compare(0, 3, "db/") == 0 ? m_durable : m_volatile;
}

// Another program that finds them locked gives up; here it would hold up everybody.
void World::Write(const std::string& key, const Platform::ConfigValue& value) {
    if (!m_endStoreFault) {
        static_cast<void>(FileOf(key).Store(key, value));
    }
}

void World::SetRotating(bool isRotating) {
    if (m_isRotating == isRotating) {
        return;
    }
    m_isRotating = isRotating;
    static_cast<void>(Platform::FeatureFile::Instance().Set(
        "com.velmora/featureconf/display_rotator_supported", isRotating ? "true" : "false"));
}

void World::SetPhones(const std::vector<bool>& isOn, bool isMaskOff,
                      const std::vector<int>& order) {
    std::vector<std::pair<std::string, std::string>> settings;
    std::vector<std::string> withMask;
    for (int phone = 0; phone < kListedPhones; ++phone) {
        const bool on = isOn[static_cast<std::size_t>(phone)];
        settings.emplace_back(AddressOf(phone), on || isMaskOff ? "Y" : "N");
        if (on || !isMaskOff) {
            withMask.push_back(AddressOf(phone));
        }
    }
    std::vector<std::string> first;
    for (const int phone : order) {
        first.push_back(AddressOf(phone));
    }
    m_listChangedMs = VirtualTime::NowMs();
    // A setting that is on its way comes on top.
    m_isListCertain = !m_endStoreFault && m_listChangedMs - m_updatedMs > kArrivedMs;
    m_isOn = isOn;
    m_order = order;
    SetKey(kSettingsKey, Settings(settings));
    SetKey(kMirroringKey, Mirroring(first));
    // Last: what tells the service, also if it is what it was.
    SetKey(kOnOffKey, "");
    SetKey(kOnOffKey, Joined(MaskedAll(withMask), ","));
}

void World::SpoilPhones(bool isOrder, const std::string& text) {
    SetKey(isOrder ? kMirroringKey : kSettingsKey, text);
    SetKey(kOnOffKey, "");
    SetKey(kOnOffKey, text);
    m_isListCertain = false;
}

std::optional<Judge::List> World::ListedPhones() {
    if (m_endStoreFault || !m_isListCertain || VirtualTime::NowMs() - m_listChangedMs < kNoticeMs) {
        return std::nullopt;
    }
    std::vector<std::string> listed;
    for (int phone = 0; phone < kListedPhones; ++phone) {
        if (m_isOn[static_cast<std::size_t>(phone)]) {
            listed.push_back(AddressOf(phone));
        }
    }
    const std::string masks = Joined(MaskedAll(listed), ",");
    std::size_t front = 0;
    for (const int phone : m_order) {
        const auto found = std::find(listed.begin() + static_cast<std::ptrdiff_t>(front),
                                     listed.end(), AddressOf(phone));
        if (found != listed.end()) {
            std::swap(listed[front++], *found);
        }
    }
    return Judge::List{listed, masks};
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

void World::EndStoreFaultAfter(int ms, std::function<void()> end) {
    m_endStoreFault = std::move(end);
    m_isListCertain = false;
    m_storeFault = Timer::Once(ms, [this] { EndStoreFault(); });
}

void World::EndStoreFault() {
    m_storeFault.Cancel();
    if (const auto end = std::exchange(m_endStoreFault, nullptr)) {
        end();
        // What was written meanwhile was not.
        m_keys.clear();
    }
}

void World::LockKeys(int ms) {
    if (m_endStoreFault) {
        return;
    }
    std::vector<std::shared_ptr<sqlite3>> locks;
    for (const std::string& folder : {Platform::StateFolder(), Platform::RunFolder()}) {
        sqlite3* database = nullptr;
        sqlite3_open((folder + "/config.db").c_str(), &database);
        locks.emplace_back(database, sqlite3_close);
        sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    }
    EndStoreFaultAfter(ms, [locks] {});
}

void World::BreakKeys(int ms) {
    if (m_endStoreFault) {
        return;
    }
    const std::string file = Platform::StateFolder() + "/config.db";
    fs::rename(file, file + ".good");
    std::ofstream(file) << "this is not a database";
    EndStoreFaultAfter(ms, [file] { fs::rename(file + ".good", file); });
}
