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
#include "tests/memory_bus/MemoryBus.h"
#include "tests/simulation/Judge.h"
#include "tests/simulation/TvState.h"
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
    TvState tv;
    void Command(const char* name, GVariant* parameters);
    void Update(const std::string& text) {
        Command(kMobileUpdateCommand, g_variant_new("(s)", text.c_str()));
        tv.OnUpdate();
    }
    void SetLatency(int ms) { m_bus.SetLatency(ms); }
    void Wake() { Command(kPrepareCommand, nullptr); }
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
    // Of the phone with that object path; NULL when there is none.
    [[nodiscard]] const TvSim::PhonePlan* PlanAt(const std::string& path);
    void Play(const MemoryBus::CallInfo& call);
    void OnEvent(const std::string& subject, const std::string& what);

    MemoryBus& m_bus;
    Judge& m_judge;
    std::function<void(const std::string&)> m_say;
    TvSim::Scenario m_scenario;
    std::unique_ptr<TvSim::Simulator> m_simulator;
    std::map<std::string, State> m_states;    // of the phones, by id
    std::map<std::string, Fault> m_faults;    // by method
    std::map<std::string, Player> m_players;  // by phone
    gint64 m_bondsChangedMs = 0;
    std::map<TvSim::Which, int> m_numbers;  // of the adapters
    bool m_isScanSpoilt = false;
};
