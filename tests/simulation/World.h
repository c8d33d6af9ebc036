// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "autoconnect/src/DbusInterface.h"
#include "common/Source.h"
#include "platform/linux/config/ConfigFile.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/memory_bus/VirtualTime.h"
#include "tests/simulation/Judge.h"
#include "tools/media-player/PlayCommand.h"
#include "tools/tv-sim/Simulator.h"

// What is around the service: bluetoothd with its adapters, phones, the keys and features that
// other programs write, the media player, the bus. Of a story, three phones: all do what they
// should until a step makes them do something else. Of a scenario, what it says. Main loop only.
class World {
public:
    // The service's root folder is $TV_ROOT. `say` hears of everything that happens, unless it is
    // empty.
    World(MemoryBus& bus, Judge& judge, std::function<void(const std::string&)> say);
    ~World();

    // A story begins or ends: what is there works as it should, and nothing is connected.
    void Heal();
    // A scenario begins: its phones, keys and features. False when a key cannot have its value.
    [[nodiscard]] bool Load(const TvSim::Scenario& scenario);
    // Told of what happens to bluetoothd and its phones, unless it is empty.
    TvSim::EventSink onEvent;

    // ---- the TV ----
    void Command(const char* name, GVariant* parameters);
    void Update(const std::string& text) {
        Command(kMobileUpdateCommand, g_variant_new("(s)", text.c_str()));
        m_isListCertain = false;
        m_updatedMs = VirtualTime::NowMs();
    }
    void SetLatency(int ms) { m_bus.SetLatency(ms); }
    void Wake() { Command(kPrepareCommand, nullptr); }
    // Write keys as another program does.
    void SetKey(const std::string& key, int number);
    void SetKey(const std::string& key, const std::string& text);
    // As an engineer types it: of the type that the key has, or that the text looks like. False
    // when it is not of that type.
    [[nodiscard]] bool TypeKey(const std::string& key, const std::string& text);
    void UnsetKey(const std::string& key);
    // As text; empty when it has no value.
    [[nodiscard]] std::string KeyText(const std::string& key);
    void SetRotating(bool isRotating);
    // Which phones are on (of those that are not, the mask is missing, too, if `isMaskOff`), and
    // the order in which they are tried.
    void SetPhones(const std::vector<bool>& isOn, bool isMaskOff, const std::vector<int>& order);
    // Some program wrote what is no list of phones, or not the order of any.
    void SpoilPhones(bool isOrder, const std::string& text);
    // For that time the keys are locked by another program, or those that last are not a database.
    void LockKeys(int ms);
    void BreakKeys(int ms);

    // What the service asks after each wake-up.
    static constexpr char kReasonKey[] = "memory/platform/wakeup_reason";
    static constexpr char kModeKey[] = "memory/platform/ambient_mode";
    static constexpr char kTypeKey[] = "memory/platform/ambient_type";
    static constexpr char kBlockKey[] = "memory/bluetooth_nirvoui/musictvfail";

    // ---- the platform ----
    // It refuses the next scan.
    void SpoilScan() { m_isScanSpoilt = true; }
    [[nodiscard]] bool TakeSpoiltScan() { return std::exchange(m_isScanSpoilt, false); }

    // ---- bluetoothd ----
    void StartBluez();
    void StopBluez() { m_simulator.reset(); }
    void KillBluez();
    // Does nothing while there is none.
    void WithBluez(const std::function<void(TvSim::Simulator&)>& action);
    void Renumber(TvSim::Which which, int number);
    // What becomes of the next `count` calls of the method.
    void Treat(const std::string& method, int count, const MemoryBus::Treatment& how) {
        m_faults[method] = {count, how};
    }

    // ---- the phones, by number; the last one is the first one as the second adapter knows it ----
    static constexpr int kPhones = 4;
    static constexpr int kListedPhones = 3;
    static const std::string& AddressOf(int phone);
    static std::string IdOf(int phone);
    // From now on; also of the next bluetoothd's.
    void ChangePhone(int phone, const std::function<void(TvSim::PhonePlan&)>& change);
    // Does nothing while there is no bluetoothd.
    void WithPhone(int phone, const std::function<void(TvSim::Phone&)>& action);
    // The user removes it on the TV.
    void RemoveBond(int phone);
    // Somebody advertises that phone's address; on the adapter that is not in use, if it is
    // `elsewhere`.
    void Advertise(int phone, const std::string& from, bool elsewhere);

    // A connected phone that plays.
    [[nodiscard]] bool HasMusic() const;

private:
    struct State {
        bool isConnected = false;
        bool isTold = false;  // its status
        std::string status;
        gint64 sinceMs = 0;
    };
    // The application as the bus started it for one phone.
    struct Player {
        Bluez::Mirror mirror;
        std::optional<PlayCommand> command;
    };
    struct Fault {
        int left;
        MemoryBus::Treatment how;
    };

    void Say(const char* direction, const MemoryBus::CallInfo& call) const;
    MemoryBus::Treatment TreatCall(const MemoryBus::CallInfo& call);
    [[nodiscard]] static TvSim::PhonePlan MakePlan(int phone);
    // Or may the service not know better yet.
    [[nodiscard]] bool IsBonded(const std::string& path);
    // Nothing where the service may not know better yet.
    [[nodiscard]] std::optional<bool> IsPlaying(const std::string& path);
    [[nodiscard]] std::optional<int> NumberOf(const char* key) const;
    [[nodiscard]] std::optional<bool> IsAmbient() const;
    [[nodiscard]] std::optional<bool> IsWakeUpGood() const;
    // Whether the doctor finds nothing wrong with the TV.
    [[nodiscard]] bool IsDoctorContent() const;
    // Of the phone with that object path; NULL when there is none.
    [[nodiscard]] const TvSim::PhonePlan* PlanAt(const std::string& path);
    void Play(const MemoryBus::CallInfo& call);
    void OnEvent(const std::string& subject, const std::string& what);
    std::optional<Judge::List> ListedPhones();
    Platform::ConfigFile& FileOf(const std::string& key);
    void Write(const std::string& key, const Platform::ConfigValue& value);
    void MakeKeys();
    void EndStoreFault();
    void EndStoreFaultAfter(int ms, std::function<void()> end);

    MemoryBus& m_bus;
    Judge& m_judge;
    std::function<void(const std::string&)> m_say;
    TvSim::Scenario m_scenario;
    std::unique_ptr<TvSim::Simulator> m_simulator;
    std::map<std::string, State> m_states;    // of the phones, by id
    std::map<std::string, Fault> m_faults;    // by method
    std::map<std::string, Player> m_players;  // by phone
    Platform::ConfigFile m_durable;
    Platform::ConfigFile m_volatile;
    std::map<std::string, int> m_keys;  // as they were written
    std::optional<bool> m_isRotating;
    std::vector<bool> m_isOn;
    std::vector<int> m_order;
    gint64 m_bondsChangedMs = 0;
    gint64 m_listChangedMs = 0;
    gint64 m_updatedMs = 0;
    bool m_isListCertain = true;            // the service read what is written
    std::map<TvSim::Which, int> m_numbers;  // of the adapters
    bool m_isScanSpoilt = false;
    std::function<void()> m_endStoreFault;
    Timer m_storeFault;
};
