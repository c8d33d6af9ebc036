// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <optional>
#include <string>
#include <vector>

namespace Tvctl {

// A bonded device with what the adapter and the device database say of it.
struct DeviceEntry {
    std::string address;  // upper case
    std::string name;     // empty when it never told one
    int type = 0;         // a bt_devices_type
    std::string kind;     // that as a text, "Mobile" for phones and computers
    bool isConnected = false;
    bool isUsed = true;
};

// Waits until what bluetoothd knows is known here, some seconds at most. What keeps it from being
// known, or the lack of a powered adapter; empty when all is well.
[[nodiscard]] std::string AwaitBluetooth();

// Makes the device database if there is none. What is wrong with it; empty when nothing is.
[[nodiscard]] std::string CheckDatabase();

// The bonded devices by address, and one of them; after AwaitBluetooth.
[[nodiscard]] std::vector<DeviceEntry> ListDevices();
[[nodiscard]] std::optional<DeviceEntry> FindDevice(const std::string& address);

// Whether any of its tables, the volume history included, has something about the device.
[[nodiscard]] bool IsInDatabase(const std::string& address);

// The entry as it is listed, and with everything that the database holds of it.
[[nodiscard]] Json::Value ToJson(const DeviceEntry& device);
[[nodiscard]] Json::Value ToJsonInFull(const DeviceEntry& device);

}  // namespace Tvctl
