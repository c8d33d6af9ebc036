// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Simulator.h"

#include "tools/tv-sim/Strangers.h"

namespace TvSim {

Simulator::Simulator(Scenario scenario, GDBusConnection* connection, EventSink say,
                     std::function<void()> onNameLost)
    : m_scenario(std::move(scenario)),
      m_say(say ? std::move(say) : [](const std::string&, const std::string&) {}),
      m_tree(connection, m_scenario.adapter, m_say),
      m_adapter(m_tree, connection, m_scenario.adapter, m_say),
      m_onNameLost(std::move(onNameLost)) {
    for (const PhonePlan& plan : m_scenario.phones) {
        auto phone = std::make_unique<Phone>(plan, m_tree, m_adapter);
        m_phones[plan.id] = phone.get();
        m_adapter.Add(std::move(phone));
    }
    m_adapter.Add(MakeStrangers(m_scenario.strangers, m_adapter));
    m_adapter.Add(MakeNobody());
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
    m_adapter.SetPowered(false);
    m_adapter.SetPresent(false);
    g_bus_unown_name(m_nameOwner);
}

Phone* Simulator::FindPhone(const std::string& id) const {
    const auto found = m_phones.find(id);
    return found == m_phones.end() ? nullptr : found->second;
}

void Simulator::OnNameAcquired() {
    m_say("bus", "name org.bluez acquired");
    const AdapterPlan& plan = m_scenario.adapter;
    if (plan.appearsAfterMs > 0) {
        m_appearTimer = Timer::Once(plan.appearsAfterMs, [this] { m_adapter.SetPresent(true); });
    } else if (plan.present) {
        m_adapter.SetPresent(true);
    }
}

void Simulator::OnNameLost(bool hasBus) {
    m_say("bus", hasBus ? "name org.bluez refused" : "connection lost");
    if (m_onNameLost) {
        m_onNameLost();
    }
}

}  // namespace TvSim
