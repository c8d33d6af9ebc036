// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <functional>

#include "common/Address.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Path.h"

// The questions that the mirror answers; Mirror.cpp keeps it.

namespace Bluez {

std::string Mirror::PoweredAdapter() const {
    const auto powered = std::find_if(m_adapters.begin(), m_adapters.end(),
                                      [](const auto& adapter) { return adapter.second.isPowered; });
    return powered == m_adapters.end() ? "" : powered->first;
}

std::string Mirror::AnyAdapter() const {
    const std::string powered = PoweredAdapter();
    return powered.empty() && !m_adapters.empty() ? m_adapters.begin()->first : powered;
}

const char* Mirror::WhyOff() const {
    if (!IsSettled()) {
        return "bluetoothd has not answered yet";
    }
    if (!m_isFilled) {
        return "bluetoothd is not there";
    }
    if (!m_adapters.empty()) {
        return "no adapter has power";
    }
    return m_hadAdapter ? "the adapter is gone" : "there is no adapter";
}

const Adapter* Mirror::FindAdapter(const std::string& path) const {
    const auto adapter = m_adapters.find(path);
    return adapter == m_adapters.end() ? nullptr : &adapter->second;
}

std::vector<std::string> Mirror::BondedDevices(const std::string& adapter) const {
    std::vector<std::string> paths;
    for (const auto& [path, device] : m_devices) {
        if (device.HoldsBond() && IsBelow(path, adapter)) {
            paths.push_back(path);
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

const Device* Mirror::FindDevice(const std::string& path) const {
    const auto device = m_devices.find(path);
    return device == m_devices.end() ? nullptr : &device->second;
}

// A phone that was paired under a random address keeps the path of that address until bluetoothd
// starts again, and has its own as a property: only the property is right.
std::string Mirror::DevicePath(const std::string& adapter, const std::string& address) const {
    const auto [first, last] = m_devicePaths.equal_range(CanonicalAddress(address.c_str()));
    const auto found = std::find_if(
        first, last, [&adapter](const auto& entry) { return IsBelow(entry.second, adapter); });
    return found == last ? "" : found->second;
}

std::string Mirror::AddressOf(const std::string& device) const {
    const Device* known = FindDevice(device);
    return known == nullptr ? AddressOfPath(device) : known->address;
}

bool Mirror::HasTransport(const std::string& device) const {
    return std::any_of(m_transports.begin(), m_transports.end(),
                       [&device](const auto& entry) { return entry.second == device; });
}

std::string Mirror::PlayerPath(const std::string& device) const {
    const auto addressed = m_addressedPlayers.find(device);
    if (addressed != m_addressedPlayers.end() && m_players.count(addressed->second) != 0) {
        return addressed->second;
    }
    for (const auto& [path, player] : m_players) {
        if (player.device == device || IsBelow(path, device)) {
            return path;
        }
    }
    return "";
}

const Player* Mirror::FindPlayer(const std::string& path) const {
    const auto player = m_players.find(path);
    return player == m_players.end() ? nullptr : &player->second;
}

std::vector<std::string> Mirror::DevicesWithTransport() const {
    std::multimap<int, std::string, std::greater<>> newestFirst;
    for (const auto& [path, device] : m_transports) {
        newestFirst.emplace(TransportNumber(path), device);
    }
    std::vector<std::string> devices;
    for (const auto& [number, device] : newestFirst) {
        devices.push_back(device);
    }
    return devices;
}

}  // namespace Bluez
