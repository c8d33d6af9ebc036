// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/DeviceTable.h"

#include <algorithm>
#include <cstdlib>

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

// A weaker change of the signal is not worth a property change, says BlueZ.
constexpr int kRssiThreshold = 8;
// The device class's major part for phones.
constexpr std::uint32_t kMajorPhone = 2;

Value NewManufacturerData(const ManufacturerData& data) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{qv}"));
    for (const auto& [company, bytes] : data) {
        g_variant_builder_add(&builder, "{qv}", company, NewBytes(bytes));
    }
    return Own(g_variant_builder_end(&builder));
}

std::vector<std::string> PhoneServices() {
    constexpr char kBase[] = "-0000-1000-8000-00805f9b34fb";
    std::vector<std::string> uuids;
    for (const char* service : {"00001105", "0000110a", "0000110c", "0000110e", "00001112",
                                "0000111f", "0000112f", "00001132", "00001200"}) {
        uuids.push_back(std::string(service) + kBase);
    }
    return uuids;
}

// What every device tells.
Properties BasicProperties(const std::string& address, const std::string& adapterPath) {
    std::string alias = address;
    std::replace(alias.begin(), alias.end(), ':', '-');
    return {{"Address", Text(address)},     {"AddressType", Text("public")},
            {"Alias", Text(alias)},         {"Paired", Bool(false)},
            {"Bonded", Bool(false)},        {"Trusted", Bool(false)},
            {"Blocked", Bool(false)},       {"LegacyPairing", Bool(false)},
            {"Connected", Bool(false)},     {"UUIDs", Texts({})},
            {"Adapter", Path(adapterPath)}, {"ServicesResolved", Bool(false)}};
}

}  // namespace

DeviceTable::DeviceTable(ObjectTree& tree, std::string adapterPath, int forgetsAfterMs,
                         CallHandler onCall)
    : m_tree(tree),
      m_adapterPath(std::move(adapterPath)),
      m_forgetsAfterMs(forgetsAfterMs),
      m_onCall(std::move(onCall)) {}

std::string DeviceTable::PathOf(const std::string& address) const {
    std::string name = address;
    std::replace(name.begin(), name.end(), ':', '_');
    return m_adapterPath + "/dev_" + name;
}

void DeviceTable::AddBonded(const PhonePlan& phone) {
    Remove(phone.address);
    m_devices[phone.address].bonded = true;
    Properties properties = BasicProperties(phone.address, m_adapterPath);
    properties["Name"] = properties["Alias"] = Text(phone.name);
    properties["Class"] = Own(g_variant_new_uint32(phone.deviceClass));
    if ((phone.deviceClass >> 8U & 0x1FU) == kMajorPhone) {
        properties["Icon"] = Text("phone");
    }
    properties["Paired"] = properties["Bonded"] = properties["Trusted"] = Bool(true);
    properties["UUIDs"] = Texts(PhoneServices());
    properties["Modalias"] = Text(phone.modalias);
    Add(phone.address, std::move(properties));
}

void DeviceTable::Add(const std::string& address, Properties properties) {
    m_tree.Add(PathOf(address),
               {kDeviceInterface, std::move(properties),
                [this, address](MethodCall call) { m_onCall(address, std::move(call)); }});
}

void DeviceTable::SetConnected(const std::string& address, bool connected) {
    const auto found = m_devices.find(address);
    if (found != m_devices.end() && found->second.connected != connected) {
        found->second.connected = connected;
        found->second.heardAtUs = g_get_monotonic_time();
        m_tree.Change(PathOf(address), kDeviceInterface,
                      {{"Connected", Bool(connected)}, {"ServicesResolved", Bool(connected)}});
    }
}

void DeviceTable::Remove(const std::string& address) {
    if (m_devices.erase(address) != 0) {
        m_tree.Remove(PathOf(address));
    }
}

void DeviceTable::Hear(const Advertisement& advertisement, bool duplicates) {
    const auto found = m_devices.find(advertisement.address);
    if (found == m_devices.end()) {
        AddHeard(advertisement);
        return;
    }
    Device& device = found->second;
    device.heardAtUs = g_get_monotonic_time();
    Properties changed;
    const int threshold = duplicates ? 1 : kRssiThreshold;
    if (!device.rssi || std::abs(*device.rssi - advertisement.rssi) >= threshold) {
        device.rssi = advertisement.rssi;
        changed["RSSI"] = Own(g_variant_new_int16(static_cast<gint16>(advertisement.rssi)));
    }
    ManufacturerData data = duplicates ? ManufacturerData() : device.manufacturerData;
    for (const auto& [company, bytes] : advertisement.manufacturerData) {
        data[company] = bytes;
    }
    if (!data.empty() && (duplicates || data != device.manufacturerData)) {
        changed["ManufacturerData"] = NewManufacturerData(data);
        device.manufacturerData = std::move(data);
    }
    if (!changed.empty()) {
        m_tree.Change(PathOf(advertisement.address), kDeviceInterface, changed);
    }
}

void DeviceTable::AddHeard(const Advertisement& advertisement) {
    Device& device = m_devices[advertisement.address];
    device.connectable = advertisement.connectable;
    device.rssi = advertisement.rssi;
    device.heardAtUs = g_get_monotonic_time();
    device.manufacturerData = advertisement.manufacturerData;
    Properties properties = BasicProperties(advertisement.address, m_adapterPath);
    if (advertisement.randomAddress) {
        properties["AddressType"] = Text("random");
    }
    properties["RSSI"] = Own(g_variant_new_int16(static_cast<gint16>(advertisement.rssi)));
    if (!advertisement.manufacturerData.empty()) {
        properties["ManufacturerData"] = NewManufacturerData(advertisement.manufacturerData);
    }
    Add(advertisement.address, std::move(properties));
    if (!m_forgetTimer.IsRunning()) {
        // Ten sweeps in a device's lifetime are exact enough.
        m_forgetTimer = Timer::Every(std::max(m_forgetsAfterMs / 10, 1), [this] { ForgetOld(); });
    }
}

void DeviceTable::OnDiscoveryStopped() {
    for (auto& [address, device] : m_devices) {
        if (device.rssi) {
            device.rssi.reset();
            m_tree.Change(PathOf(address), kDeviceInterface, {}, {"RSSI"});
        }
    }
    RemoveIf([](const Device& device) { return !device.connectable && !device.connected; });
}

void DeviceTable::Clear() {
    m_forgetTimer.Cancel();
    while (!m_devices.empty()) {
        Remove(std::string(m_devices.begin()->first));
    }
}

void DeviceTable::ForgetOld() {
    const gint64 oldest = g_get_monotonic_time() - gint64{1000} * m_forgetsAfterMs;
    RemoveIf([&](const Device& device) { return device.heardAtUs < oldest && !device.connected; });
    if (std::all_of(m_devices.begin(), m_devices.end(),
                    [](const auto& entry) { return entry.second.bonded; })) {
        m_forgetTimer.Cancel();
    }
}

void DeviceTable::RemoveIf(const std::function<bool(const Device&)>& condition) {
    std::vector<std::string> addresses;
    for (const auto& [address, device] : m_devices) {
        if (!device.bonded && condition(device)) {
            addresses.push_back(address);
        }
    }
    for (const std::string& address : addresses) {
        Remove(address);
    }
}

}  // namespace TvSim
