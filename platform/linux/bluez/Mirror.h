// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/BusWatch.h"
#include "common/CHandle.h"
#include "common/Source.h"
#include "platform/linux/base/GrowingPause.h"
#include "platform/linux/base/MemoryTrim.h"
#include "platform/linux/bluez/Call.h"
#include "platform/linux/bluez/Device.h"
#include "platform/linux/bluez/Listener.h"

namespace Bluez {

struct Adapter {
    std::string alias;  // the name that others see
    bool isPowered = false;
    bool hasA2dpSink = false;    // something on this machine renders music
    bool isDiscovering = false;  // for any program, this one included
};

struct Player {
    std::string device;                 // object path
    std::optional<std::string> status;  // the player has not told it yet when empty
};

// A mirror of the objects of bluetoothd that the Bluetooth interface answers from, kept by the
// daemon's own signals: asking it never waits for the daemon. The daemon may be absent, come, crash
// and return at any time; while it is away the mirror is empty. Main loop only.
class Mirror {
public:
    // Reaches for the system bus; the mirror fills when the loop runs.
    Mirror();
    ~Mirror();
    Mirror(const Mirror&) = delete;
    Mirror& operator=(const Mirror&) = delete;

    // `listener` must outlive the mirror or be removed.
    void AddListener(Listener* listener) { m_listeners.push_back(listener); }
    void RemoveListener(Listener* listener);

    // NULL before the bus was reached.
    [[nodiscard]] GDBusConnection* Connection() const { return m_connection.get(); }
    // Whether the objects of a running bluetoothd are known.
    [[nodiscard]] bool IsFilled() const { return m_isFilled; }
    // Whether it is known if there is one: it is filled, or there is no bluetoothd or no bus.
    [[nodiscard]] bool IsSettled() const { return m_isFilled || m_isAbsent; }

    // When bluetoothd did not tell its objects, asks for them again without waiting longer.
    void Retry();

    // Path of the adapter in use: the powered one with the lowest number. Empty when none.
    [[nodiscard]] std::string PoweredAdapter() const;
    // Path of the adapter in use, else of the one with the lowest number; empty when none.
    [[nodiscard]] std::string AnyAdapter() const;
    // Why there is no adapter in use, for a person.
    [[nodiscard]] const char* WhyOff() const;
    [[nodiscard]] const Adapter* FindAdapter(const std::string& path) const;
    // Paths of the bonded devices below the adapter, by address.
    [[nodiscard]] std::vector<std::string> BondedDevices(const std::string& adapter) const;
    [[nodiscard]] const Device* FindDevice(const std::string& path) const;
    // Path of the device with that address, in any case, below that adapter; empty when unknown.
    [[nodiscard]] std::string DevicePath(const std::string& adapter,
                                         const std::string& address) const;
    // The address of the device at that path, known or not.
    [[nodiscard]] std::string AddressOf(const std::string& device) const;
    [[nodiscard]] bool HasTransport(const std::string& device) const;
    // Path of the device's player: the one that it is addressed by, else the first; empty when it
    // has none.
    [[nodiscard]] std::string PlayerPath(const std::string& device) const;
    [[nodiscard]] const Player* FindPlayer(const std::string& path) const;
    // Connected devices with an A2DP stream, the one that connected last first, also when that was
    // before there was a mirror.
    [[nodiscard]] std::vector<std::string> DevicesWithTransport() const;

    // A crowd of devices may have come and gone: gives its memory back when it is quiet.
    void TrimSoon() { m_trim.Soon(); }

private:
    static void OnBusClosed(GDBusConnection* connection, gboolean remotePeerVanished, GError* error,
                            gpointer data) noexcept;
    static void OnBus(GObject* source, GAsyncResult* result, gpointer self) noexcept;
    void OnConnection(GObjectPtr<GDBusConnection> connection);
    void OnServiceAppeared();
    void OnServiceVanished();
    void ReadObjects();
    void OnManagedObjects(GVariant* reply, const GError* error);
    void OnSignal(const char* path, const char* interface, const char* member,
                  GVariant* parameters);

    // Order of adapters by path: 'hci10' comes after 'hci9'.
    struct ByNumber {
        bool operator()(const std::string& a, const std::string& b) const {
            return a.size() != b.size() ? a.size() < b.size() : a < b;
        }
    };

    // An interface that the mirror knows: what to do with its properties, and when it goes.
    struct Kind {
        const char* interface;
        void (Mirror::*apply)(const std::string& path, GVariant* values, Heard& heard);
        void (Mirror::*drop)(const std::string& path);
    };
    static const Kind* FindKind(const std::string& interface);

    void AddObjects(GVariant* objects, const std::vector<std::string>& wanted);
    void AddInterfaces(const std::string& path, GVariant* interfaces);
    void RemoveInterfaces(const std::string& path, GVariant* names);
    void ChangeProperties(const std::string& path, GVariant* parameters);
    Heard ApplyProperties(const std::string& path, const std::string& interface, GVariant* values);
    void ApplyAdapter(const std::string& path, GVariant* values, Heard& heard);
    void ApplyDevice(const std::string& path, GVariant* values, Heard& heard);
    void ApplyTransport(const std::string& path, GVariant* values, Heard& heard);
    void ApplyPlayer(const std::string& path, GVariant* values, Heard& heard);
    void ApplyControl(const std::string& path, GVariant* values, Heard& heard);
    void TellAdvertisement(const std::string& path, const Heard& heard);
    void DropAdapter(const std::string& path);
    void DropDevice(const std::string& path);
    void CountDropped(std::size_t devices);
    void DropAddress(const std::string& path, const std::string& address);
    void DropTransport(const std::string& path);
    void DropPlayer(const std::string& path);
    void DropControl(const std::string& path);
    void Clear();

    template <typename Tell>
    void ForEachListener(Tell tell) {
        for (Listener* listener : m_listeners) {
            tell(*listener);
        }
    }

    GObjectPtr<GDBusConnection> m_connection;
    std::vector<Listener*> m_listeners;  // not owned
    std::map<std::string, Adapter, ByNumber> m_adapters;
    bool m_hadAdapter = false;  // this bluetoothd
    std::unordered_map<std::string, Device> m_devices;
    std::unordered_multimap<std::string, std::string> m_devicePaths;  // by address
    // The A2DP streams in which this machine is the sink, and whose they are: path to device.
    std::map<std::string, std::string> m_transports;
    std::map<std::string, Player> m_players;
    std::map<std::string, std::string> m_addressedPlayers;  // device to player
    std::size_t m_dropped = 0;  // devices, since memory was last given back
    Platform::MemoryTrim m_trim;
    bool m_isFilled = false;
    bool m_isAbsent = false;
    bool m_isRefused = false;  // it is there, and did not tell its objects
    Call m_managedObjects;
    Timer m_retry;
    Platform::GrowingPause m_patience;
    GObjectPtr<GCancellable> m_busRequest;
    BusWatch m_signals;
    BusWatch m_nameWatch;
    gulong m_closed = 0;
};

}  // namespace Bluez
