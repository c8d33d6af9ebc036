// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <optional>
#include <string>

#include "common/CHandle.h"

namespace Bluez {

// What is kept of a device.
struct Device {
    std::string address;  // upper case
    std::string name;     // empty when the device never told one
    bool isPaired = false;
    std::optional<bool> isBonded;  // bluetoothd tells since 5.65
    bool isConnected = false;
    guint32 deviceClass = 0;     // Class of Device; 0 for LE devices
    std::string modalias;        // who made it; empty when it does not tell
    bool hasHid = false;         // it is an input device
    bool hasA2dpSource = false;  // it can send music

    [[nodiscard]] bool HoldsBond() const { return isBonded.value_or(isPaired); }
};

// What properties of a device say of an advertisement.
struct Heard {
    GVariantPtr manufacturerData;  // a{qv}
    std::optional<int> rssi;
    bool isAny = false;  // any of them comes from one
};

// Reads the a{sv} of a device: what is to be kept, and what is not.
void ReadDevice(GVariant* values, Device& device, Heard& heard);

}  // namespace Bluez
