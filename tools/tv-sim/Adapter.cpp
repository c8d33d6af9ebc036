// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Adapter.h"

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

constexpr char kPath[] = "/org/bluez/hci0";
// bluetoothd shows an adapter before it switches it on (AutoEnable).
constexpr int kAutoEnableMs = 50;

Properties InitialProperties(const AdapterPlan& plan) {
    return {{"Address", Text(plan.address)},
            {"AddressType", Text("public")},
            {"Name", Text(plan.name)},
            {"Alias", Text(plan.name)},
            {"Class", Uint32(0x0C043C)},
            {"Powered", Bool(false)},
            {"Discoverable", Bool(false)},
            {"DiscoverableTimeout", Uint32(180)},
            {"Pairable", Bool(true)},
            {"PairableTimeout", Uint32(0)},
            {"Discovering", Bool(false)},
            {"UUIDs", Texts({kSinkUuid, "0000110c-0000-1000-8000-00805f9b34fb",
                             "0000110e-0000-1000-8000-00805f9b34fb"})},
            {"Modalias", Text("usb:v1D6Bp0246d0542")},
            {"Roles", Texts({"central", "peripheral"})}};
}

bool HasPattern(GVariant* arguments) {
    const GVariantPtr filter(g_variant_get_child_value(arguments, 0));
    return GVariantPtr(g_variant_lookup_value(filter.get(), "Pattern", nullptr)) != nullptr;
}

Value NewFilterNames() {
    return Texts(
        {"UUIDs", "RSSI", "Pathloss", "Transport", "DuplicateData", "Discoverable", "Pattern"});
}

}  // namespace

Adapter::Adapter(ObjectTree& tree, GDBusConnection* connection, const AdapterPlan& plan,
                 EventSink say, AdapterObserver& observer)
    : m_tree(tree),
      m_plan(plan),
      m_say(std::move(say)),
      m_observer(observer),
      m_discovery(
          connection, plan.discoveryTakesMs, m_say, [this] { OnDiscovery(true); },
          [this] { OnDiscovery(false); }),
      m_devices(tree, kPath, plan.forgetsAfterMs,
                [this](const std::string& address, MethodCall call) {
                    m_observer.OnDeviceCall(address, std::move(call));
                }) {}

void Adapter::SetPresent(bool present) {
    if (present == m_present) {
        return;
    }
    if (!present) {
        LosePower();
        m_powerTimer.Cancel();
        m_present = false;
        m_powered = false;
        m_devices.Clear();
        m_tree.Remove(kPath);
        m_say("adapter", "vanished");
        return;
    }
    m_present = true;
    m_tree.Add(kPath, {kAdapterInterface, InitialProperties(m_plan),
                       [this](MethodCall call) { OnCall(std::move(call)); },
                       [this](const std::string& property, GVariant* value, MethodCall call) {
                           OnSet(property, value, std::move(call));
                       }});
    m_say("adapter", "appeared");
    m_observer.OnAdapterAppeared();
    const int powersOnAfterMs = m_plan.powered ? kAutoEnableMs : m_plan.powersOnAfterMs;
    if (powersOnAfterMs > 0) {
        m_powerTimer = Timer::Once(powersOnAfterMs, [this] { SetPowered(true); });
    }
}

void Adapter::SetPowered(bool powered) {
    if (powered == m_powered || !m_present) {
        return;
    }
    if (!powered) {
        LosePower();
    }
    m_powered = powered;
    m_tree.Change(kPath, kAdapterInterface, {{"Powered", Bool(powered)}});
    m_say("adapter", powered ? "powered on" : "powered off");
    if (powered) {
        m_observer.OnAdapterPoweredOn();
    }
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
        call.Answer(g_variant_new("(@as)", NewFilterNames().get()));
    } else if (!m_powered) {
        call.FailBluez("NotReady", "Resource Not Ready");
    } else if (method == "SetDiscoveryFilter" && !m_plan.knowsPattern &&
               HasPattern(call.Arguments())) {
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

void Adapter::OnSet(const std::string& property, GVariant* value, MethodCall call) {
    if (property == "Powered") {
        SetPowered(g_variant_get_boolean(value) != FALSE);
    } else if (!m_powered && property == "Discoverable") {
        call.FailBluez("Failed", "Not Powered");
        return;
    } else {
        const bool reset = property == "Alias" && g_variant_get_string(value, nullptr)[0] == '\0';
        m_tree.Change(kPath, kAdapterInterface,
                      {{property, reset ? Text(m_plan.name) : Own(g_variant_ref(value))}});
    }
    call.Answer();
}

void Adapter::OnDiscovery(bool running) {
    m_tree.Change(kPath, kAdapterInterface, {{"Discovering", Bool(running)}});
    if (running) {
        m_observer.OnDiscoveryStarted();
        if (m_plan.pulledAfterMs > 0) {
            m_powerTimer = Timer::Once(m_plan.pulledAfterMs, [this] { SetPresent(false); });
        }
    } else {
        m_observer.OnDiscoveryStopped();
        m_devices.OnDiscoveryStopped();
    }
}

void Adapter::RemoveDevice(MethodCall call) {
    const GVariantPtr path(g_variant_get_child_value(call.Arguments(), 0));
    GVariant* address =
        m_tree.Get(g_variant_get_string(path.get(), nullptr), kDeviceInterface, "Address");
    if (address == nullptr) {
        call.FailBluez("DoesNotExist", "Does Not Exist");
        return;
    }
    const std::string removed = g_variant_get_string(address, nullptr);
    m_observer.OnDeviceRemoved(removed);
    m_devices.Remove(removed);
    call.Answer();
}

void Adapter::LosePower() {
    if (m_powered) {
        m_observer.OnAdapterLosesPower();
        m_discovery.Abandon();
        m_devices.ForgetTemporary();
    }
}

}  // namespace TvSim
