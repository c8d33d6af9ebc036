// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Adapter.h"

#include <algorithm>
#include <utility>

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

// bluetoothd shows an adapter before it switches it on (AutoEnable).
constexpr int kAutoEnableMs = 50;

Properties InitialProperties(const AdapterPlan& plan) {
    return {{"Address", Text(plan.address)},
            {"AddressType", Text("public")},
            {"Name", Text(plan.name)},
            {"Alias", Text(plan.name)},
            {"Class", Own(g_variant_new_uint32(0x0C043C))},
            {"Powered", Bool(false)},
            {"Discoverable", Bool(false)},
            {"DiscoverableTimeout", Own(g_variant_new_uint32(180))},
            {"Pairable", Bool(true)},
            {"PairableTimeout", Own(g_variant_new_uint32(0))},
            {"Discovering", Bool(false)},
            {"UUIDs", Texts({kSinkUuid, "0000110c-0000-1000-8000-00805f9b34fb",
                             "0000110e-0000-1000-8000-00805f9b34fb"})},
            {"Modalias", Text("usb:v1D6Bp0246d0542")},
            {"Roles", Texts({"central", "peripheral"})}};
}

}  // namespace

Adapter::Adapter(ObjectTree& tree, GDBusConnection* connection, AdapterPlan plan,
                 std::string subject, EventSink say)
    : m_tree(tree),
      m_plan(std::move(plan)),
      m_subject(std::move(subject)),
      m_say(std::move(say)),
      m_discovery(
          connection, m_plan.discoveryTakesMs, [this](const std::string& what) { SayOwn(what); },
          [this](bool running) { OnDiscovery(running); }),
      m_advertising(connection, [this](const std::string& what) { SayOwn(what); }),
      m_devices(tree, Path(), m_plan.forgetsAfterMs,
                [this](const std::string& address, MethodCall call) {
                    NeighbourAt(address).OnCall(address, std::move(call));
                }) {}

std::string Adapter::Path() const {
    return "/org/bluez/hci" + std::to_string(m_plan.number);
}

void Adapter::TellNeighbours(void (Neighbour::*what)()) {
    for (const std::unique_ptr<Neighbour>& neighbour : m_neighbours) {
        ((*neighbour).*what)();
    }
}

Neighbour& Adapter::NeighbourAt(const std::string& address) const {
    return **std::find_if(m_neighbours.begin(), m_neighbours.end(),
                          [&](const auto& neighbour) { return neighbour->Has(address); });
}

void Adapter::Begin() {
    if (m_plan.appearsAfterMs > 0) {
        m_presenceTimer = Timer::Once(m_plan.appearsAfterMs, [this] { SetPresent(true); });
    } else if (m_plan.present) {
        SetPresent(true);
    }
}

void Adapter::SetPresent(bool present) {
    m_presenceTimer.Cancel();
    if (present == m_present) {
        return;
    }
    if (!present) {
        LosePower();
        m_powerTimer.Cancel();
        m_present = false;
        m_powered = false;
        m_devices.Clear();
        m_tree.Remove(Path());
        SayOwn("vanished");
        return;
    }
    m_present = true;
    m_tree.Add(Path(), {kAdapterInterface, InitialProperties(m_plan),
                        [this](MethodCall call) { OnCall(std::move(call)); },
                        [this](const std::string& property, GVariant* value, MethodCall& call) {
                            return OnSet(property, value, call);
                        }});
    m_tree.Add(Path(), {kAdvertisingInterface, {}, [this](MethodCall call) {
                            m_advertising.OnCall(std::move(call));
                        }});
    SayOwn("appeared");
    TellNeighbours(&Neighbour::OnAdapterAppeared);
    PowerOnAfter(m_plan.powered ? kAutoEnableMs : m_plan.powersOnAfterMs);
}

void Adapter::PowerOnAfter(int ms) {
    if (ms > 0) {
        m_powerTimer = Timer::Once(ms, [this] { SetPowered(true); });
    }
}

void Adapter::SetPowered(bool powered) {
    if (!m_present) {
        m_plan.powered = powered;
        return;
    }
    if (powered == m_powered) {
        return;
    }
    if (!powered) {
        LosePower();
    }
    m_powered = powered;
    m_tree.Change(Path(), kAdapterInterface, {{"Powered", Bool(powered)}});
    SayOwn(powered ? "powered on" : "powered off");
    if (powered) {
        TellNeighbours(&Neighbour::OnAdapterPoweredOn);
        if (m_plan.othersDiscover) {
            m_discovery.StartOther();
        }
    }
}

void Adapter::Renumber(int number) {
    const bool wasPresent = m_present;
    SetPresent(false);
    m_plan.number = number;
    m_devices.SetAdapterPath(Path());
    SetPresent(wasPresent);
}

bool Adapter::Hear(const Advertisement& advertisement) {
    if (!Powered() || !m_discovery.Running() || !m_discovery.Wants(advertisement)) {
        return false;
    }
    m_devices.Hear(advertisement, m_discovery.ReportsDuplicates());
    return true;
}

void Adapter::OnCall(MethodCall call) {
    const std::string method = call.Method();
    if (method == "GetDiscoveryFilters") {
        call.Answer(g_variant_new("(@as)", Texts(Discovery::FilterKeys()).get()));
    } else if (!m_powered) {
        call.FailBluez("NotReady", "Resource Not Ready");
    } else if (method == "SetDiscoveryFilter" && !m_plan.knowsPattern &&
               GVariantPtr(g_variant_lookup_value(call.Argument(0).get(), "Pattern", nullptr))) {
        call.FailBluez("InvalidArguments", "Invalid arguments in method call");
    } else if (method == "SetDiscoveryFilter") {
        m_discovery.SetFilter(std::move(call));
    } else if (method == "StartDiscovery") {
        m_discovery.Start(std::move(call));
    } else if (method == "StopDiscovery") {
        m_discovery.Stop(std::move(call));
    } else {
        RemoveDevice(std::move(call));
    }
}

bool Adapter::OnSet(const std::string& property, GVariant* value, MethodCall& call) {
    if (property == "Powered") {
        SetPowered(g_variant_get_boolean(value) != FALSE);
        call.Answer();
        return true;
    }
    if (property == "Discoverable" && !m_powered) {
        call.FailBluez("Failed", "Not Powered");
        return true;
    }
    return false;
}

void Adapter::OnDiscovery(bool running) {
    m_tree.Change(Path(), kAdapterInterface, {{"Discovering", Bool(running)}});
    if (running) {
        TellNeighbours(&Neighbour::OnDiscoveryStarted);
        if (m_plan.pulledAfterMs > 0) {
            m_presenceTimer = Timer::Once(m_plan.pulledAfterMs, [this] { SetPresent(false); });
        }
        if (const int ms = std::exchange(m_plan.powersOffAfterMs, 0); ms > 0) {
            m_powerTimer = Timer::Once(ms, [this] {
                SetPowered(false);
                PowerOnAfter(m_plan.powersOnAfterMs);
            });
        }
    } else {
        TellNeighbours(&Neighbour::OnDiscoveryStopped);
        m_devices.OnDiscoveryStopped();
    }
}

void Adapter::RemoveDevice(MethodCall call) {
    GVariant* address = m_tree.Get(call.TextArgument(0), kDeviceInterface, "Address");
    if (address == nullptr) {
        call.FailBluez("DoesNotExist", "Does Not Exist");
        return;
    }
    const std::string removed = g_variant_get_string(address, nullptr);
    NeighbourAt(removed).OnDeviceRemoved();
    m_devices.Remove(removed);
    call.Answer();
}

void Adapter::LosePower() {
    if (m_powered) {
        TellNeighbours(&Neighbour::OnAdapterLosesPower);
        m_discovery.Abandon();
        m_devices.ForgetTemporary();
    }
}

}  // namespace TvSim
