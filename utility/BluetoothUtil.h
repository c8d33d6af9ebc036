// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Util {

// Questions about the local adapter and bonded devices. Stateless. Addresses are
// 'XX:XX:XX:XX:XX:XX', either case. Main loop's thread only.
class BluetoothUtil {
public:
    // bt_adapter_state_e: 1 enabled; 0 disabled, also when the Bluetooth service cannot tell.
    static int GetAdapterState();

    // Whether the adapter holds a bond with the device; false for an unknown address.
    static bool IsPairedDevice(const std::string& address);

    // Whether a bonded device is connected; false for an unknown address.
    static bool IsConnectedDevice(const std::string& address);
};

}  // namespace Util
