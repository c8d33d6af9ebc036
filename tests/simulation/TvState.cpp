// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/TvState.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <utility>

#include "platform/linux/base/RootPath.h"
#include "platform/linux/config/FeatureFile.h"
#include "tests/Phones.h"
#include "tests/memory_bus/VirtualTime.h"
#include "tools/tvctl/model/ConfigText.h"
#include "tools/tvctl/model/Diagnosis.h"

namespace {

namespace fs = std::filesystem;

// What another program wrote so long ago was noticed.
constexpr int kNoticeMs = 100;
// What was sent so long ago has arrived, whatever the bus does.
constexpr int kArrivedMs = 1000;

}  // namespace

TvState::TvState()
    : m_durable(Platform::StateFolder(), Platform::ConfigFile::Kind::kDurable),
      m_volatile(Platform::RunFolder(), Platform::ConfigFile::Kind::kVolatile) {
    for (const std::string& folder :
         {Platform::SettingsFolder(), Platform::StateFolder(), Platform::RunFolder()}) {
        fs::create_directories(folder);
    }
}

void TvState::OnUpdate() {
    m_isListCertain = false;
    m_updatedMs = VirtualTime::NowMs();
}

const std::string& TvState::AddressOf(int phone) {
    static const std::string kAddresses[] = {"A0:11:22:33:44:01", "A0:11:22:33:44:02",
                                             "A0:11:22:33:44:03"};
    return kAddresses[phone % kPhones];
}

bool TvState::Load(const TvSim::Scenario& scenario) {
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
    return std::all_of(scenario.tv.keys.begin(), scenario.tv.keys.end(),
                       [this](const auto& key) { return TypeKey(key.first, key.second); });
}

void TvState::Heal() {
    EndStoreFault();
    SetRotating(true);
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

std::optional<int> TvState::NumberOf(const char* key) const {
    const auto written = m_keys.find(key);
    return m_endStoreFault || written == m_keys.end() ? std::nullopt
                                                      : std::optional<int>(written->second);
}

std::optional<bool> TvState::IsAmbient() const {
    const std::optional<int> mode = NumberOf(kModeKey);
    const std::optional<int> type = NumberOf(kTypeKey);
    return mode && type ? std::optional<bool>(*mode == 1 && *type % 2 == 1) : std::nullopt;
}

std::optional<bool> TvState::IsWakeUpGood() const {
    static const std::set<int> kBadReasons = {41, 94, 95};
    const std::optional<int> reason = NumberOf(kReasonKey);
    const std::optional<int> blocked = NumberOf(kBlockKey);
    if (!reason || !blocked) {
        return std::nullopt;
    }
    return m_isRotating.value_or(false) && kBadReasons.count(*reason) == 0 && *blocked != 1;
}

bool TvState::IsDoctorContent() const {
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

void TvState::SetKey(const std::string& key, int number) {
    if (!m_endStoreFault) {
        m_keys[key] = number;
    }
    Write(key, {Platform::ConfigType::kInt, {}, number});
}

void TvState::SetKey(const std::string& key, const std::string& text) {
    Write(key, {Platform::ConfigType::kString, text, 0});
}

bool TvState::TypeKey(const std::string& key, const std::string& text) {
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

void TvState::UnsetKey(const std::string& key) {
    m_keys.erase(key);
    static_cast<void>(FileOf(key).Remove(key));
}

std::string TvState::KeyText(const std::string& key) {
    const Platform::ConfigLookup present = FileOf(key).Lookup(key);
    return present.status == Platform::ConfigStatus::kOk ? Tvctl::TextOf(present.value) : "";
}

Platform::ConfigFile& TvState::FileOf(const std::string& key) {
    return key.compare(0, 3, "db/") == 0 ? m_durable : m_volatile;
}

// Another program that finds them locked gives up; here it would hold up everybody.
void TvState::Write(const std::string& key, const Platform::ConfigValue& value) {
    if (!m_endStoreFault) {
        static_cast<void>(FileOf(key).Store(key, value));
    }
}

void TvState::SetRotating(bool isRotating) {
    if (m_isRotating == isRotating) {
        return;
    }
    m_isRotating = isRotating;
    static_cast<void>(Platform::FeatureFile::Instance().Set(
        "com.velmora/featureconf/display_rotator_supported", isRotating ? "true" : "false"));
}

void TvState::SetPhones(const std::vector<bool>& isOn, bool isMaskOff,
                        const std::vector<int>& order) {
    std::vector<std::pair<std::string, std::string>> settings;
    std::vector<std::string> withMask;
    for (int phone = 0; phone < kPhones; ++phone) {
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

void TvState::SpoilPhones(bool isOrder, const std::string& text) {
    SetKey(isOrder ? kMirroringKey : kSettingsKey, text);
    SetKey(kOnOffKey, "");
    SetKey(kOnOffKey, text);
    m_isListCertain = false;
}

bool TvState::IsHeldUp() const {
    return m_endStoreFault || VirtualTime::NowMs() - m_storeFaultMs < kFaultLastsMs;
}

std::optional<Judge::List> TvState::ListedPhones() {
    if (m_endStoreFault || !m_isListCertain || VirtualTime::NowMs() - m_listChangedMs < kNoticeMs) {
        return std::nullopt;
    }
    std::vector<std::string> listed;
    for (int phone = 0; phone < kPhones; ++phone) {
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

void TvState::EndStoreFaultAfter(int ms, std::function<void()> end) {
    m_endStoreFault = std::move(end);
    m_isListCertain = false;
    m_storeFault = Timer::Once(ms, [this] { EndStoreFault(); });
}

void TvState::EndStoreFault() {
    m_storeFault.Cancel();
    if (const auto end = std::exchange(m_endStoreFault, nullptr)) {
        m_storeFaultMs = VirtualTime::NowMs();
        end();
        // What was written meanwhile was not.
        m_keys.clear();
    }
}

void TvState::LockKeys(int ms) {
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

void TvState::BreakKeys(int ms) {
    if (m_endStoreFault) {
        return;
    }
    const std::string file = Platform::StateFolder() + "/config.db";
    fs::rename(file, file + ".good");
    std::ofstream(file) << "this is not a database";
    EndStoreFaultAfter(ms, [file] { fs::rename(file + ".good", file); });
}
