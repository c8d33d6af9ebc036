// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <string>

namespace TvSim {

constexpr char kAdapterInterface[] = "org.bluez.Adapter1";
constexpr char kAdvertisingInterface[] = "org.bluez.LEAdvertisingManager1";
constexpr char kDeviceInterface[] = "org.bluez.Device1";
constexpr char kEndpointInterface[] = "org.bluez.MediaEndpoint1";
constexpr char kTransportInterface[] = "org.bluez.MediaTransport1";
constexpr char kControlInterface[] = "org.bluez.MediaControl1";
constexpr char kPlayerInterface[] = "org.bluez.MediaPlayer1";
constexpr char kIntrospectableInterface[] = "org.freedesktop.DBus.Introspectable";
constexpr char kPropertiesInterface[] = "org.freedesktop.DBus.Properties";
constexpr char kObjectManagerInterface[] = "org.freedesktop.DBus.ObjectManager";

constexpr char kSourceUuid[] = "0000110a-0000-1000-8000-00805f9b34fb";
constexpr char kSinkUuid[] = "0000110b-0000-1000-8000-00805f9b34fb";

// What BlueZ declares of an interface, null for one that is not simulated. Valid for ever.
[[nodiscard]] GDBusInterfaceInfo* FindInterfaceInfo(const std::string& name);

}  // namespace TvSim
