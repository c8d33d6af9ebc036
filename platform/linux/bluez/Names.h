// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

// Names on the bus, as BlueZ's documents (doc/org.bluez.*.rst) and the D-Bus specification have
// them, and services, as bluetoothd spells them (Bluetooth Assigned Numbers, 3.3).

namespace Bluez {

inline constexpr const char* kBusName = "org.bluez";

inline constexpr const char* kAdapterInterface = "org.bluez.Adapter1";
inline constexpr const char* kDeviceInterface = "org.bluez.Device1";
inline constexpr const char* kTransportInterface = "org.bluez.MediaTransport1";
inline constexpr const char* kPlayerInterface = "org.bluez.MediaPlayer1";
inline constexpr const char* kControlInterface = "org.bluez.MediaControl1";

inline constexpr const char* kObjectManagerInterface = "org.freedesktop.DBus.ObjectManager";
inline constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";

inline constexpr const char* kA2dpSourceUuid = "0000110a-0000-1000-8000-00805f9b34fb";
inline constexpr const char* kA2dpSinkUuid = "0000110b-0000-1000-8000-00805f9b34fb";
inline constexpr const char* kHidUuid = "00001124-0000-1000-8000-00805f9b34fb";
inline constexpr const char* kHidOverLeUuid = "00001812-0000-1000-8000-00805f9b34fb";

}  // namespace Bluez
