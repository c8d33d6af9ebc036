// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Record.h"

#include <cstdlib>
#include <cstring>

#include "common/Address.h"

namespace Bluez {

namespace {

// Where the fields of a Class of Device are (Bluetooth Assigned Numbers, 2.8).
constexpr unsigned int kMajorShift = 8;
constexpr unsigned int kMajorMask = 0x1F;
constexpr unsigned int kMinorMask = 0xFC;

}  // namespace

char* CopyOrNull(const std::string& text) {
    return text.empty() ? nullptr : strdup(text.c_str());
}

DeviceInfoPtr MakeRecord(const Device& device) {
    DeviceInfoPtr record(static_cast<bt_device_info_s*>(std::calloc(1, sizeof(bt_device_info_s))));
    if (record) {
        record->remote_address = strdup(device.address.c_str());
        record->remote_name = CopyOrNull(device.name);
        record->bt_class.major_device_class =
            static_cast<int>((device.deviceClass >> kMajorShift) & kMajorMask);
        record->bt_class.minor_device_class = static_cast<int>(device.deviceClass & kMinorMask);
        record->is_bonded = device.HoldsBond();
        record->is_connected = device.isConnected;
    }
    return record;
}

int FindBonded(const Mirror& mirror, const char* address, const Device** device) {
    const std::string canonical = CanonicalAddress(address);
    if (canonical.empty()) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const std::string adapter = mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    const Device* found = mirror.FindDevice(mirror.DevicePath(adapter, canonical));
    if (found == nullptr || !found->HoldsBond()) {
        return BT_ERROR_REMOTE_DEVICE_NOT_BONDED;
    }
    *device = found;
    return BT_ERROR_NONE;
}

}  // namespace Bluez
