// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/Source.h"
#include "platform/linux/config/ConfigFile.h"
#include "tests/simulation/Judge.h"
#include "tools/tv-sim/Scenario.h"

// The keys and features that other programs write, and what the service must make of them. Main
// loop only.
class TvState {
public:
    // The folders of $TV_ROOT.
    TvState();

    // A story begins or ends: it is a rotating TV, in the right state, and all phones are on.
    void Heal();
    // A scenario begins. False when a key cannot have its value.
    [[nodiscard]] bool Load(const TvSim::Scenario& scenario);

    // ---- what other programs do ----
    void SetKey(const std::string& key, int number);
    void SetKey(const std::string& key, const std::string& text);
    // As an engineer types it: of the type that the key has, or that the text looks like. False
    // when it is not of that type.
    [[nodiscard]] bool TypeKey(const std::string& key, const std::string& text);
    void UnsetKey(const std::string& key);
    void SetRotating(bool isRotating);
    // Which phones are on (of those that are not, the mask is missing, too, if `isMaskOff`), and
    // the order in which they are tried.
    void SetPhones(const std::vector<bool>& isOn, bool isMaskOff, const std::vector<int>& order);
    // Some program wrote what is no list of phones, or not the order of any.
    void SpoilPhones(bool isOrder, const std::string& text);
    // For that time the keys are locked by another program, or those that last are not a database.
    void LockKeys(int ms);
    void BreakKeys(int ms);
    // The service was sent a setting, and may write it.
    void OnUpdate();

    // ---- what there is to know; nothing where the service may not know it yet ----
    // As text; empty when it has no value.
    [[nodiscard]] std::string KeyText(const std::string& key);
    [[nodiscard]] std::optional<bool> IsAmbient() const;
    // Whether the TV is one that connects phones, and woke for a reason for which it does.
    [[nodiscard]] std::optional<bool> IsWakeUpGood() const;
    // Whether the doctor finds nothing wrong with the TV.
    [[nodiscard]] bool IsDoctorContent() const;
    [[nodiscard]] std::optional<Judge::List> ListedPhones();
    // Whether the keys are locked or broken, or were a moment ago.
    [[nodiscard]] bool IsHeldUp() const;

    // What the service asks after each wake-up.
    static constexpr char kReasonKey[] = "memory/platform/wakeup_reason";
    static constexpr char kModeKey[] = "memory/platform/ambient_mode";
    static constexpr char kTypeKey[] = "memory/platform/ambient_type";
    static constexpr char kBlockKey[] = "memory/bluetooth_nirvoui/musictvfail";
    // The phones of stories, by number from 0; higher numbers begin again.
    static constexpr int kPhones = 3;
    [[nodiscard]] static const std::string& AddressOf(int phone);

private:
    static constexpr int kFaultLastsMs = 15000;
    [[nodiscard]] std::optional<int> NumberOf(const char* key) const;
    Platform::ConfigFile& FileOf(const std::string& key);
    void Write(const std::string& key, const Platform::ConfigValue& value);
    void EndStoreFault();
    void EndStoreFaultAfter(int ms, std::function<void()> end);

    Platform::ConfigFile m_durable;
    Platform::ConfigFile m_volatile;
    std::map<std::string, int> m_keys;  // as they were written
    std::optional<bool> m_isRotating;
    std::vector<bool> m_isOn;
    std::vector<int> m_order;
    gint64 m_listChangedMs = 0;
    gint64 m_updatedMs = 0;
    bool m_isListCertain = true;  // the service read what is written
    std::function<void()> m_endStoreFault;
    gint64 m_storeFaultMs = -kFaultLastsMs;  // when the last one ended
    Timer m_storeFault;
};
