// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/CHandle.h"
#include "platform/bluetooth.h"
#include "platform/linux/bluez/Mirror.h"

namespace Bluez {

// The address in upper case; empty when it is NULL or malformed.
std::string CanonicalAddress(const char* address);

// A copy for the C side, NULL for an empty text.
char* CopyOrNull(const std::string& text);

using DeviceInfoPtr = CPtr<bt_device_info_s, bt_adapter_free_device_info>;

// The record of a device; NULL when memory is short.
DeviceInfoPtr MakeRecord(const Device& device);

// The bonded device of the adapter in use with that address, in *device, borrowed from the mirror.
// Result as bt_adapter_get_bonded_device_info has it.
int FindBonded(const Mirror& mirror, const char* address, const Device** device);

}  // namespace Bluez
