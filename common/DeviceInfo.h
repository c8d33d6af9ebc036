// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/CHandle.h"
#include "platform/bluetooth.h"

// Owner of a record of the Bluetooth interface.
using DeviceInfoPtr = CPtr<bt_device_info_s, bt_adapter_free_device_info>;

// The record of a bonded device, null when there is none. The call's result is not looked at, only
// whether it gave a record.
inline DeviceInfoPtr ReadBondedDevice(const std::string& address) {
    DeviceInfoPtr info;
    bt_adapter_get_bonded_device_info(address.c_str(), Out(info));
    return info;
}
