// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "tools/tv-sim/Adapter.h"
#include "tools/tv-sim/Phone.h"
#include "tools/tv-sim/Scenario.h"

namespace TvSim {

// Owns org.bluez on a bus, with one or two adapters, phones and strangers around them. It runs on
// the main loop of the process only and never blocks it. As with the real daemon the bus name comes
// first and the objects follow. Its functions, and the phones' ones, are not to be called by `say`.
class Simulator {
public:
    // Asks for the name at once. The connection, which may be used for other things too, must be
    // open; `say` hears of everything that happens and may be empty; `onNameLost` is called when
    // the name is refused (another process has it) or lost (the connection closed).
    Simulator(Scenario scenario, GDBusConnection* connection, EventSink say = {},
              std::function<void()> onNameLost = {});
    // The daemon stops: takes the objects off the bus and gives the name back.
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // The daemon is killed: the objects vanish without a signal, what waits for an answer never
    // gets one, and then the name goes. Nothing happens any more, and there are no phones; a new
    // simulator is the daemon that comes back.
    void Crash();

    // The phone of the scenario with this id, null when there is none; not owned.
    [[nodiscard]] Phone* FindPhone(const std::string& id) const;
    // Plugs an adapter in or pulls it out.
    void SetAdapterPresent(Which which, bool present);
    // Of an absent adapter: how it will be when it appears.
    void SetAdapterPowered(Which which, bool powered);
    // As a USB adapter after a resume: a present one is pulled and comes back at once under that
    // number, which the other one must not have; an absent one will have it.
    void RenumberAdapter(Which which, int number);
    // An advertisement of anybody; whether the TV heard it.
    bool Advertise(const Advertisement& advertisement, Which which = Which::kFirst);
    // What is done with the calls that come from now on.
    [[nodiscard]] CallFaults& Faults() { return m_tree.Faults(); }

private:
    // Null after a crash.
    [[nodiscard]] Adapter* At(Which which) const;
    void OnNameAcquired();
    void OnNameLost(bool hasBus);

    EventSink m_say;
    ObjectTree m_tree;
    std::map<Which, std::unique_ptr<Adapter>> m_adapters;
    std::map<std::string, Phone*> m_phones;  // by id; the adapters own them
    std::function<void()> m_onNameLost;
    guint m_nameOwner;  // 0 after a crash
};

}  // namespace TvSim
