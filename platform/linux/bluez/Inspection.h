// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Bluez {

// What a tool asks about bluetoothd's objects beyond the C interface. Main loop only.

// Waits until the objects are known, 5 s at most. Why there is no adapter to use; empty when there
// is one.
[[nodiscard]] std::string AwaitAdapter();

// All false and empty when there is no powered adapter, or no such device.
struct AdapterState {
    std::string path;
    bool hasA2dpSink = false;
    bool isDiscovering = false;  // for any program
};
struct DeviceState {
    bool isBonded = false;
    bool hasA2dpSource = false;
    bool isConnected = false;
    std::string name;
};
[[nodiscard]] AdapterState PoweredAdapter();
[[nodiscard]] DeviceState StateOf(const std::string& address);

}  // namespace Bluez
