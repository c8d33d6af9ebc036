// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

namespace Tvctl {

// A bonded device with what the adapter and the device database say about it.
struct DeviceEntry {
    std::string address;  // upper case
    std::string name;     // empty when it has not told one
    int type = 0;         // a bt_devices_type
    std::string kind;     // the same as a text, "Mobile" for phones and computers
    bool isConnected = false;
    bool isUsed = true;
};

// Makes the device database if there is none. Why it cannot be used; empty when it can.
[[nodiscard]] std::string CheckDatabase();

// The bonded devices by address. Waits for bluetoothd some seconds at most; why it or the database
// cannot be asked, else "", in `obstacle`.
[[nodiscard]] std::vector<DeviceEntry> ListDevices(std::string& obstacle);

// Whether any of its tables, the volume history included, has something about the device.
[[nodiscard]] bool IsInDatabase(const std::string& address);

// The entry as it is listed, and with everything that the database holds about it.
[[nodiscard]] Json::Value ToJson(const DeviceEntry& device);
[[nodiscard]] Json::Value ToJsonInFull(const DeviceEntry& device);

}  // namespace Tvctl
