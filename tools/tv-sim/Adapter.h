// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/tv-sim/Advertising.h"
#include "tools/tv-sim/DeviceTable.h"
#include "tools/tv-sim/Discovery.h"
#include "tools/tv-sim/ObjectTree.h"

namespace TvSim {

// Somebody within the adapter's reach, who hears what happens to it.
class Neighbour {
public:
    virtual ~Neighbour() = default;
    // It is on the bus; bonded devices are to be added now.
    virtual void OnAdapterAppeared() {}
    virtual void OnAdapterPoweredOn() {}
    // Its radio is going: every link and connection request ends. Its objects are still there.
    virtual void OnAdapterLosesPower() {}
    virtual void OnDiscoveryStarted() {}
    virtual void OnDiscoveryStopped() {}
    // Whether this is who answers to the address.
    [[nodiscard]] virtual bool Has(const std::string& /*address*/) const { return false; }
    // A call to the device with that address.
    virtual void OnCall(const std::string& /*address*/, MethodCall /*call*/) {}
    // A client had the device removed.
    virtual void OnDeviceRemoved() {}
};

// An adapter, /org/bluez/hciN, with its discovery and its devices.
class Adapter {
public:
    // The tree and the connection must outlive it. It is not on the bus before Begin(). `subject`
    // is whom events tell of.
    Adapter(ObjectTree& tree, GDBusConnection* connection, AdapterPlan plan, std::string subject,
            EventSink say);

    // The neighbour hears of everything from now on. The last one must have every address.
    void Add(std::unique_ptr<Neighbour> neighbour) { m_neighbours.push_back(std::move(neighbour)); }

    [[nodiscard]] bool Present() const { return m_present; }
    [[nodiscard]] bool Powered() const { return m_present && m_powered; }
    // For any program.
    [[nodiscard]] bool Discovering() const { return m_discovery.Running(); }
    [[nodiscard]] DeviceTable& Devices() { return m_devices; }
    void Say(const std::string& subject, const std::string& what) const { m_say(subject, what); }

    // The daemon is up: the adapter appears when its plan says.
    void Begin();
    // Plugs it in or pulls it out.
    void SetPresent(bool present);
    // Of an absent adapter: how it will be when it appears.
    void SetPowered(bool powered);
    // A present one is pulled and comes back at once.
    void Renumber(int number);
    // A transmission nearby; whether the TV heard it.
    bool Hear(const Advertisement& advertisement);

private:
    void OnCall(MethodCall call);
    bool OnSet(const std::string& property, GVariant* value, MethodCall& call);
    void OnDiscovery(bool running);
    void PowerOnAfter(int ms);
    void RemoveDevice(MethodCall call);
    void LosePower();
    [[nodiscard]] std::string Path() const;
    void SayOwn(const std::string& what) const { m_say(m_subject, what); }
    void TellNeighbours(void (Neighbour::*what)());
    [[nodiscard]] Neighbour& NeighbourAt(const std::string& address) const;

    ObjectTree& m_tree;
    AdapterPlan m_plan;
    const std::string m_subject;
    EventSink m_say;
    bool m_present = false;
    bool m_powered = false;
    Discovery m_discovery;
    Advertising m_advertising;
    DeviceTable m_devices;
    std::vector<std::unique_ptr<Neighbour>> m_neighbours;
    Timer m_presenceTimer;
    Timer m_powerTimer;
};

}  // namespace TvSim
