// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>

#include "tools/tv-sim/Adapter.h"
#include "tools/tv-sim/Phone.h"
#include "tools/tv-sim/Scenario.h"

namespace TvSim {

// Owns org.bluez on a bus, with one adapter, phones and strangers around it. It runs on the main
// loop of the process only and never blocks it. As with the real daemon the bus name comes first
// and the objects follow. A daemon that crashes is a connection that is closed; one that stops is a
// destroyed simulator.
class Simulator {
public:
    // Asks for the name at once. The connection, which may be used for other things too, must be
    // open; `say` hears of everything that happens and may be empty; `onNameLost` is called when
    // the name is refused (another process has it) or lost (the connection closed).
    Simulator(Scenario scenario, GDBusConnection* connection, EventSink say = {},
              std::function<void()> onNameLost = {});
    // Takes the objects off the bus and gives the name back.
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // The phone of the scenario with this id, null when there is none; not owned.
    [[nodiscard]] Phone* FindPhone(const std::string& id) const;
    void SetAdapterPowered(bool powered) { m_adapter.SetPowered(powered); }
    // An advertisement of anybody; whether the TV heard it.
    bool Advertise(const Advertisement& advertisement) { return m_adapter.Hear(advertisement); }

private:
    void OnNameAcquired();
    void OnNameLost(bool hasBus);

    Scenario m_scenario;
    EventSink m_say;
    ObjectTree m_tree;
    Adapter m_adapter;
    std::map<std::string, Phone*> m_phones;  // by id; the adapter owns them
    std::function<void()> m_onNameLost;
    Timer m_appearTimer;
    guint m_nameOwner;
};

}  // namespace TvSim
