// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Mirror.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Path.h"
#include "platform/linux/bluez/Properties.h"

namespace Bluez {

namespace {

// How long to wait for the objects, and then until they are asked for again.
constexpr int kFirstPatienceMs = 5000;
constexpr int kLongestPatienceMs = 60000;

// So many devices leave more memory behind than a moment's work is worth.
constexpr std::size_t kCrowd = 256;

}  // namespace

Mirror::Mirror()
    : m_patience(kFirstPatienceMs, kLongestPatienceMs), m_busRequest(g_cancellable_new()) {
    g_bus_get(G_BUS_TYPE_SYSTEM, m_busRequest.get(), OnBus, this);
}

void Mirror::OnBus(GObject* /*source*/, GAsyncResult* result, gpointer self) noexcept {
    GErrorPtr error;
    GObjectPtr<GDBusConnection> connection(g_bus_get_finish(result, Out(error)));
    if (connection) {
        static_cast<Mirror*>(self)->OnConnection(std::move(connection));
    } else if (!g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        static_cast<Mirror*>(self)->m_isAbsent = true;
        PLATFORM_WARN("no Bluetooth, the system bus cannot be reached: %s", error->message);
    }
}

Mirror::~Mirror() {
    g_cancellable_cancel(m_busRequest.get());
    if (m_closed != 0) {
        g_signal_handler_disconnect(m_connection.get(), m_closed);
    }
}

void Mirror::RemoveListener(Listener* listener) {
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener),
                      m_listeners.end());
}

void Mirror::OnConnection(GObjectPtr<GDBusConnection> connection) {
    m_connection = std::move(connection);
    // The bus library ends the process next; without this line that would look like an ordinary
    // stop.
    m_closed = g_signal_connect(m_connection.get(), "closed", G_CALLBACK(OnBusClosed), nullptr);
    // All of its signals, for it has hardly any others than those that the mirror needs.
    m_signals = BusWatch::OnSignal(
        m_connection.get(), kBusName, nullptr, nullptr,
        [](GDBusConnection* /*connection*/, const char* /*sender*/, const char* path,
           const char* interface, const char* signal, GVariant* parameters,
           gpointer data) noexcept {
            static_cast<Mirror*>(data)->OnSignal(path, interface, signal, parameters);
        },
        this);
    m_nameWatch = BusWatch::OnName(
        m_connection.get(), kBusName,
        [](GDBusConnection* /*connection*/, const char* /*name*/, const char* /*owner*/,
           gpointer data) noexcept { static_cast<Mirror*>(data)->OnServiceAppeared(); },
        [](GDBusConnection* /*connection*/, const char* /*name*/, gpointer data) noexcept {
            static_cast<Mirror*>(data)->OnServiceVanished();
        },
        this);
}

void Mirror::OnBusClosed(GDBusConnection* /*connection*/, gboolean /*remotePeerVanished*/,
                         GError* error, gpointer /*data*/) noexcept {
    PLATFORM_ERROR("the system bus is gone, and with it this process: %s",
                   error == nullptr ? "closed" : error->message);
}

void Mirror::OnServiceAppeared() {
    m_isAbsent = false;
    m_patience.Reset();
    ReadObjects();
}

void Mirror::ReadObjects() {
    const int patienceMs = m_patience.Next();
    m_managedObjects =
        Call(m_connection.get(), "/", kObjectManagerInterface, "GetManagedObjects", nullptr,
             patienceMs, [this, patienceMs](GVariant* reply, const GError* error) {
                 m_managedObjects.Drop();
                 m_retry = Timer::Once(patienceMs, [this] { Retry(); });
                 OnManagedObjects(reply, error);
             });
}

void Mirror::Retry() {
    if (m_isRefused && !m_managedObjects) {
        ReadObjects();
    }
}

void Mirror::OnServiceVanished() {
    m_managedObjects.Drop();
    m_isRefused = false;
    PLATFORM_WARN("%s", m_isFilled ? "bluetoothd left the bus" : "bluetoothd is not on the bus");
    m_isFilled = false;
    m_isAbsent = true;
    Clear();
    ForEachListener([](Listener& listener) { listener.OnServiceGone(); });
}

void Mirror::OnManagedObjects(GVariant* reply, const GError* error) {
    if (reply == nullptr || !g_variant_is_of_type(reply, G_VARIANT_TYPE("(a{oa{sa{sv}}})"))) {
        if (!std::exchange(m_isRefused, true)) {
            PLATFORM_WARN("bluetoothd does not tell its objects: %s",
                          error == nullptr ? "malformed answer" : error->message);
        }
        return;
    }
    m_isRefused = false;
    const GVariantPtr objects(g_variant_get_child_value(reply, 0));
    // What streams and players say is about devices and adapters, which must be known by then.
    AddObjects(objects.get(), {kAdapterInterface, kDeviceInterface});
    AddObjects(objects.get(), {kTransportInterface, kPlayerInterface, kControlInterface});
    m_isFilled = true;
    const std::string adapter = PoweredAdapter();
    PLATFORM_INFO("bluetoothd is there, %s",
                  adapter.empty() ? "no powered adapter" : ("adapter " + adapter).c_str());
}

void Mirror::OnSignal(const char* path, const char* interface, const char* member,
                      GVariant* parameters) {
    const auto is = [&](const char* wantedInterface, const char* wantedMember, const char* type) {
        return Is(member, wantedMember) && Is(interface, wantedInterface) &&
               g_variant_is_of_type(parameters, G_VARIANT_TYPE(type)) != FALSE;
    };
    if (is(kPropertiesInterface, "PropertiesChanged", "(sa{sv}as)")) {
        ChangeProperties(path, parameters);
    } else if (is(kObjectManagerInterface, "InterfacesAdded", "(oa{sa{sv}})")) {
        const GVariantPtr object(g_variant_get_child_value(parameters, 0));
        const GVariantPtr interfaces(g_variant_get_child_value(parameters, 1));
        AddInterfaces(g_variant_get_string(object.get(), nullptr), interfaces.get());
    } else if (is(kObjectManagerInterface, "InterfacesRemoved", "(oas)")) {
        const GVariantPtr object(g_variant_get_child_value(parameters, 0));
        const GVariantPtr names(g_variant_get_child_value(parameters, 1));
        RemoveInterfaces(g_variant_get_string(object.get(), nullptr), names.get());
    }
}

// Streams in the order in which they came to be: the last one counts.
void Mirror::AddObjects(GVariant* objects, const std::vector<std::string>& wanted) {
    std::multimap<int, GVariantPtr> inOrder;
    for (gsize i = 0; i < g_variant_n_children(objects); ++i) {
        GVariantPtr object(g_variant_get_child_value(objects, i));
        const GVariantPtr path(g_variant_get_child_value(object.get(), 0));
        const int number = TransportNumber(g_variant_get_string(path.get(), nullptr));
        inOrder.emplace(number, std::move(object));
    }
    for (const auto& [number, object] : inOrder) {
        const char* path = nullptr;
        GVariantPtr interfaces;
        g_variant_get(object.get(), "{&o@a{sa{sv}}}", &path,
                      static_cast<GVariant**>(Out(interfaces)));
        for (const std::string& interface : wanted) {
            const GVariantPtr values(g_variant_lookup_value(interfaces.get(), interface.c_str(),
                                                            G_VARIANT_TYPE_VARDICT));
            if (values) {
                ApplyProperties(path, interface, values.get());
            }
        }
    }
}

// The object was made just now, so what it says of an advertisement was just received.
void Mirror::AddInterfaces(const std::string& path, GVariant* interfaces) {
    GVariantIter iter;
    g_variant_iter_init(&iter, interfaces);
    const char* interface = nullptr;
    GVariant* values = nullptr;
    while (g_variant_iter_loop(&iter, "{&s@a{sv}}", &interface, &values)) {
        const Heard heard = ApplyProperties(path, interface, values);
        // Without a signal strength the device was made for another reason than being heard.
        if (heard.rssi) {
            TellAdvertisement(path, heard);
        }
    }
}

void Mirror::RemoveInterfaces(const std::string& path, GVariant* names) {
    GVariantIter iter;
    g_variant_iter_init(&iter, names);
    const char* interface = nullptr;
    while (g_variant_iter_loop(&iter, "&s", &interface)) {
        if (const Kind* kind = FindKind(interface)) {
            (this->*kind->drop)(path);
        }
    }
}

void Mirror::ChangeProperties(const std::string& path, GVariant* parameters) {
    const char* interface = nullptr;
    GVariantPtr values;
    GVariantPtr invalidated;
    g_variant_get(parameters, "(&s@a{sv}@as)", &interface, static_cast<GVariant**>(Out(values)),
                  static_cast<GVariant**>(Out(invalidated)));
    const Heard heard = ApplyProperties(path, interface, values.get());
    if (heard.isAny) {
        TellAdvertisement(path, heard);
    }
}

// What is done with the interfaces that the mirror knows.
const Mirror::Kind* Mirror::FindKind(const std::string& interface) {
    static constexpr Kind kKinds[] = {
        {kDeviceInterface, &Mirror::ApplyDevice, &Mirror::DropDevice},
        {kAdapterInterface, &Mirror::ApplyAdapter, &Mirror::DropAdapter},
        {kTransportInterface, &Mirror::ApplyTransport, &Mirror::DropTransport},
        {kPlayerInterface, &Mirror::ApplyPlayer, &Mirror::DropPlayer},
        {kControlInterface, &Mirror::ApplyControl, &Mirror::DropControl},
    };
    const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [&](const Kind& each) { return interface == each.interface; });
    return kind == std::end(kKinds) ? nullptr : kind;
}

Heard Mirror::ApplyProperties(const std::string& path, const std::string& interface,
                              GVariant* values) {
    Heard heard;
    if (const Kind* kind = FindKind(interface)) {
        (this->*kind->apply)(path, values, heard);
    }
    return heard;
}

void Mirror::ApplyAdapter(const std::string& path, GVariant* values, Heard& /*heard*/) {
    Adapter& adapter = m_adapters[path];
    m_hadAdapter = true;
    const bool wasPowered = adapter.isPowered;
    ForEachProperty(values, [&adapter](const char* name, GVariant* value) {
        if (Is(name, "Alias")) {
            Read(value, adapter.alias);
        } else if (Is(name, "UUIDs")) {
            adapter.hasA2dpSink = Names(value, kA2dpSinkUuid);
        } else if (Is(name, "Discovering")) {
            Read(value, adapter.isDiscovering);
        } else if (Is(name, "Powered")) {
            Read(value, adapter.isPowered);
        }
    });
    if (adapter.isPowered != wasPowered) {
        PLATFORM_INFO("adapter %s is %s", path.c_str(), adapter.isPowered ? "on" : "off");
    }
    if (wasPowered && !adapter.isPowered) {
        ForEachListener([&path](Listener& listener) { listener.OnAdapterLost(path); });
    }
}

void Mirror::ApplyDevice(const std::string& path, GVariant* values, Heard& heard) {
    const auto [entry, isNew] = m_devices.try_emplace(path);
    Device& device = entry->second;
    const std::string oldAddress = device.address;
    if (isNew) {
        device.address = AddressOfPath(path);
    }
    const bool wasConnected = device.isConnected;
    ReadDevice(values, device, heard);
    if (device.address != oldAddress) {
        DropAddress(path, oldAddress);
        m_devicePaths.emplace(device.address, path);
    }
    if (wasConnected && !device.isConnected) {
        ForEachListener([&path](Listener& listener) { listener.OnDeviceDisconnected(path); });
    }
}

void Mirror::ApplyTransport(const std::string& path, GVariant* values, Heard& /*heard*/) {
    std::string device;
    std::string uuid;
    ForEachProperty(values, [&](const char* name, GVariant* value) {
        if (Is(name, "Device")) {
            Read(value, device);
        } else if (Is(name, "UUID")) {
            Read(value, uuid);
        }
    });
    // A change of an existing stream names neither. The UUID is the local end's role: with another
    // than the sink's this machine does not render.
    if (AddressOfPath(device).empty() || g_ascii_strcasecmp(uuid.c_str(), kA2dpSinkUuid) != 0) {
        return;
    }
    m_transports[path] = device;
    ForEachListener([&device](Listener& listener) { listener.OnTransportAdded(device); });
}

void Mirror::ApplyPlayer(const std::string& path, GVariant* values, Heard& /*heard*/) {
    Player& player = m_players[path];
    ForEachProperty(values, [&player](const char* name, GVariant* value) {
        if (Is(name, "Device")) {
            Read(value, player.device);
        } else if (Is(name, "Status")) {
            if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING)) {
                player.status = g_variant_get_string(value, nullptr);
            }
        }
    });
    ForEachListener([&path](Listener& listener) { listener.OnPlayerChanged(path); });
}

void Mirror::ApplyControl(const std::string& path, GVariant* values, Heard& /*heard*/) {
    ForEachProperty(values, [this, &path](const char* name, GVariant* value) {
        if (Is(name, "Player")) {
            Read(value, m_addressedPlayers[path]);
        }
    });
}

void Mirror::TellAdvertisement(const std::string& path, const Heard& heard) {
    // What bluetoothd reports as RSSI when the controller gave none.
    constexpr int kUnknownRssi = 127;
    ForEachListener([&](Listener& listener) {
        listener.OnAdvertisement(path, heard.manufacturerData.get(),
                                 heard.rssi.value_or(kUnknownRssi));
    });
}

void Mirror::DropAdapter(const std::string& path) {
    if (m_adapters.erase(path) == 0) {
        return;
    }
    PLATFORM_INFO("adapter %s is gone", path.c_str());
    ForEachListener([&path](Listener& listener) { listener.OnAdapterLost(path); });
}

void Mirror::DropDevice(const std::string& path) {
    const auto device = m_devices.extract(path);
    if (device.empty()) {
        return;
    }
    DropAddress(path, device.mapped().address);
    CountDropped(1);
    if (device.mapped().isConnected) {
        ForEachListener([&path](Listener& listener) { listener.OnDeviceDisconnected(path); });
    }
}

void Mirror::CountDropped(std::size_t devices) {
    m_dropped += devices;
    if (m_dropped < kCrowd) {
        return;
    }
    m_dropped = 0;
    m_trim.Soon();
    if (m_devices.bucket_count() > 8 * m_devices.size()) {
        m_devices.rehash(0);
        m_devicePaths.rehash(0);
    }
}

void Mirror::DropAddress(const std::string& path, const std::string& address) {
    const auto [first, last] = m_devicePaths.equal_range(address);
    const auto known =
        std::find_if(first, last, [&path](const auto& entry) { return entry.second == path; });
    if (known != last) {
        m_devicePaths.erase(known);
    }
}

void Mirror::DropTransport(const std::string& path) {
    const auto transport = m_transports.extract(path);
    if (!transport.empty()) {
        ForEachListener(
            [&](Listener& listener) { listener.OnTransportRemoved(transport.mapped()); });
    }
}

void Mirror::DropPlayer(const std::string& path) {
    m_players.erase(path);
}

void Mirror::DropControl(const std::string& path) {
    m_addressedPlayers.erase(path);
}

void Mirror::Clear() {
    m_adapters.clear();
    m_hadAdapter = false;
    const std::size_t devices = m_devices.size();
    m_devices.clear();
    m_devicePaths.clear();
    CountDropped(devices);
    m_transports.clear();
    m_players.clear();
    m_addressedPlayers.clear();
}

}  // namespace Bluez
