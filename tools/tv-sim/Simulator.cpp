// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Simulator.h"

#include "tools/tv-sim/Strangers.h"

namespace TvSim {

Simulator::Simulator(Scenario scenario, GDBusConnection* connection, EventSink say,
                     std::function<void()> onNameLost)
    : m_say(say ? std::move(say) : [](const std::string&, const std::string&) {}),
      m_tree(connection, std::move(scenario.faults), m_say),
      m_onNameLost(std::move(onNameLost)) {
    m_adapters[Which::kFirst] =
        std::make_unique<Adapter>(m_tree, connection, scenario.adapter, "adapter", m_say);
    m_adapters[Which::kSecond] = std::make_unique<Adapter>(
        m_tree, connection, scenario.secondAdapter, "adapter second", m_say);
    for (const PhonePlan& plan : scenario.phones) {
        Adapter& adapter = *At(plan.adapter);
        auto phone = std::make_unique<Phone>(plan, m_tree, adapter);
        m_phones[plan.id] = phone.get();
        adapter.Add(std::move(phone));
    }
    for (const auto& [which, adapter] : m_adapters) {
        adapter->Add(MakeStrangers(scenario.strangers, *adapter));
        adapter->Add(MakeNobody());
    }
    m_nameOwner = g_bus_own_name_on_connection(
        connection, "org.bluez", G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE,
        [](GDBusConnection* /*connection*/, const char* /*name*/, gpointer self) noexcept {
            static_cast<Simulator*>(self)->OnNameAcquired();
        },
        [](GDBusConnection* bus, const char* /*name*/, gpointer self) noexcept {
            static_cast<Simulator*>(self)->OnNameLost(bus != nullptr);
        },
        this, nullptr);
}

Simulator::~Simulator() {
    for (const auto& [which, adapter] : m_adapters) {
        adapter->SetPowered(false);
        adapter->SetPresent(false);
    }
    if (m_nameOwner != 0) {
        g_bus_unown_name(m_nameOwner);
    }
}

void Simulator::Crash() {
    m_tree.Crash();
    m_phones.clear();
    m_adapters.clear();
    m_say("bus", "crashed");
    if (m_nameOwner != 0) {
        g_bus_unown_name(std::exchange(m_nameOwner, 0U));
    }
}

Phone* Simulator::FindPhone(const std::string& id) const {
    const auto found = m_phones.find(id);
    return found == m_phones.end() ? nullptr : found->second;
}

Adapter* Simulator::At(Which which) const {
    const auto found = m_adapters.find(which);
    return found == m_adapters.end() ? nullptr : found->second.get();
}

void Simulator::SetAdapterPresent(Which which, bool present) {
    if (Adapter* adapter = At(which)) {
        adapter->SetPresent(present);
    }
}

void Simulator::SetAdapterPowered(Which which, bool powered) {
    if (Adapter* adapter = At(which)) {
        adapter->SetPowered(powered);
    }
}

void Simulator::RenumberAdapter(Which which, int number) {
    if (Adapter* adapter = At(which)) {
        adapter->Renumber(number);
    }
}

bool Simulator::Advertise(const Advertisement& advertisement, Which which) {
    Adapter* adapter = At(which);
    return adapter != nullptr && adapter->Hear(advertisement);
}

void Simulator::OnNameAcquired() {
    m_say("bus", "name org.bluez acquired");
    for (const auto& [which, adapter] : m_adapters) {
        adapter->Begin();
    }
}

void Simulator::OnNameLost(bool hasBus) {
    m_say("bus", hasBus ? "name org.bluez refused" : "connection lost");
    if (m_onNameLost) {
        m_onNameLost();
    }
}

}  // namespace TvSim
