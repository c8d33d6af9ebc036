// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Simulator.h"

namespace TvSim {

Simulator::Simulator(Scenario scenario, GDBusConnection* connection, EventSink say,
                     std::function<void()> onNameLost)
    : m_scenario(std::move(scenario)),
      m_say(say ? std::move(say) : [](const std::string&, const std::string&) {}),
      m_tree(connection, m_scenario.adapter, m_say),
      m_adapter(m_tree, connection, m_scenario.adapter, m_say),
      m_strangers(m_scenario.strangers, m_adapter, m_say),
      m_onNameLost(std::move(onNameLost)) {
    for (const PhonePlan& plan : m_scenario.phones) {
        m_phones.push_back(std::make_unique<Phone>(plan, m_tree, m_adapter, m_say));
        m_adapter.Add(*m_phones.back());
    }
    m_adapter.Add(m_strangers);
    m_adapter.Add(m_nobody);
    m_nameOwner =
        g_bus_own_name_on_connection(connection, "org.bluez", G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE,
                                     OnNameAcquired, OnNameLost, this, nullptr);
}

Simulator::~Simulator() {
    m_adapter.SetPowered(false);
    m_adapter.SetPresent(false);
    g_bus_unown_name(m_nameOwner);
}

Phone* Simulator::FindPhone(const std::string& id) {
    for (const std::unique_ptr<Phone>& phone : m_phones) {
        if (phone->Plan().id == id) {
            return phone.get();
        }
    }
    return nullptr;
}

void Simulator::OnNameAcquired(GDBusConnection* /*connection*/, const char* /*name*/,
                               gpointer userData) noexcept {
    auto* self = static_cast<Simulator*>(userData);
    self->m_say("bus", "name org.bluez acquired");
    const AdapterPlan& plan = self->m_scenario.adapter;
    if (plan.appearsAfterMs > 0) {
        self->m_appearTimer =
            Timer::Once(plan.appearsAfterMs, [self] { self->m_adapter.SetPresent(true); });
    } else if (plan.present) {
        self->m_adapter.SetPresent(true);
    }
}

void Simulator::OnNameLost(GDBusConnection* connection, const char* /*name*/,
                           gpointer userData) noexcept {
    auto* self = static_cast<Simulator*>(userData);
    self->m_say("bus", connection == nullptr ? "connection lost" : "name org.bluez refused");
    if (self->m_onNameLost) {
        self->m_onNameLost();
    }
}

}  // namespace TvSim
