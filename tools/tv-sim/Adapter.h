// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/tv-sim/DeviceTable.h"
#include "tools/tv-sim/Discovery.h"
#include "tools/tv-sim/ObjectTree.h"

namespace TvSim {

// What the adapter tells the world around it.
class AdapterObserver {
public:
    virtual ~AdapterObserver() = default;
    // It is on the bus; bonded devices are to be added now.
    virtual void OnAdapterAppeared() = 0;
    virtual void OnAdapterPoweredOn() = 0;
    // Its radio is going: every link and connection request ends. Its objects are still there.
    virtual void OnAdapterLosesPower() = 0;
    virtual void OnDiscoveryStarted() = 0;
    virtual void OnDiscoveryStopped() = 0;
    virtual void OnDeviceCall(const std::string& address, MethodCall call) = 0;
    // A client had the device removed.
    virtual void OnDeviceRemoved(const std::string& address) = 0;
};

// The adapter /org/bluez/hci0 with its discovery and its devices.
class Adapter {
public:
    // The tree, the connection and the observer must outlive it. It is not on the bus until
    // SetPresent(true).
    Adapter(ObjectTree& tree, GDBusConnection* connection, const AdapterPlan& plan, EventSink say,
            AdapterObserver& observer);

    [[nodiscard]] bool Present() const { return m_present; }
    [[nodiscard]] bool Powered() const { return m_present && m_powered; }
    [[nodiscard]] bool Discovering() const { return m_discovery.Running(); }
    [[nodiscard]] DeviceTable& Devices() { return m_devices; }
    // Numbers media transports; none comes twice.
    [[nodiscard]] int NextTransport() { return m_nextTransport++; }

    // Plugs it in or pulls it out.
    void SetPresent(bool present);
    // Of an absent adapter: how it will be when it appears.
    void SetPowered(bool powered);
    // A transmission nearby; whether the TV heard it.
    bool Hear(const Advertisement& advertisement);

private:
    void OnCall(MethodCall call);
    void OnSet(const std::string& property, GVariant* value, MethodCall call);
    void OnDiscovery(bool running);
    void RemoveDevice(MethodCall call);
    void LosePower();

    ObjectTree& m_tree;
    AdapterPlan m_plan;
    EventSink m_say;
    AdapterObserver& m_observer;
    bool m_present = false;
    bool m_powered = false;
    int m_nextTransport = 0;
    Discovery m_discovery;
    DeviceTable m_devices;
    Timer m_powerTimer;
};

}  // namespace TvSim
