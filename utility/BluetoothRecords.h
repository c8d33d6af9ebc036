// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/DeviceInfo.h"

namespace Util {

// The record of a bonded device, null when there is none: the record decides, whatever the call
// says.
inline DeviceInfoPtr ReadBondedDevice(const std::string& address) {
    DeviceInfoPtr info;
    bt_adapter_get_bonded_device_info(address.c_str(), Out(info));
    return info;
}

}  // namespace Util
