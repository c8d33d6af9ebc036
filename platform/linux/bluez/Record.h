// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/DeviceInfo.h"
#include "platform/linux/bluez/Mirror.h"

namespace Bluez {

// A copy for the C side, NULL for an empty text.
char* CopyOrNull(const std::string& text);

// The record of a device; NULL when memory is short.
DeviceInfoPtr MakeRecord(const Device& device);

// The bonded device of the adapter in use with that address, in *device, borrowed from the mirror.
// Result as bt_adapter_get_bonded_device_info has it.
int FindBonded(const Mirror& mirror, const char* address, const Device** device);

}  // namespace Bluez
