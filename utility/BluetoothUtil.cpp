// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/BluetoothUtil.h"

#include <optional>

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"
#include "platform/bluetooth.h"

namespace Util {

namespace {

using DeviceInfoPtr = CPtr<bt_device_info_s, bt_adapter_free_device_info>;

// One flag of a bonded device's record; none when there is no record. The record decides, whatever
// the call says.
std::optional<bool> BondedDeviceFlag(const std::string& address, bool bt_device_info_s::*flag) {
    DeviceInfoPtr info;
    bt_adapter_get_bonded_device_info(address.c_str(), Out(info));
    if (!info) {
        return std::nullopt;
    }
    return info.get()->*flag;
}

}  // namespace

int BluetoothUtil::GetAdapterState() {
    bt_adapter_state_e state = BT_ADAPTER_DISABLED;
    bt_adapter_get_state(&state);
    return state;
}

bool BluetoothUtil::IsPairedDevice(const std::string& address) {
    const std::optional<bool> isBonded = BondedDeviceFlag(address, &bt_device_info_s::is_bonded);
    if (!isBonded) {
        return false;
    }
    BTLOG_WARN("is bonded device %d", *isBonded);
    return *isBonded;
}

bool BluetoothUtil::IsConnectedDevice(const std::string& address) {
    const std::optional<bool> isConnected =
        BondedDeviceFlag(address, &bt_device_info_s::is_connected);
    if (!isConnected) {
        return false;
    }
    BTLOG_WARN("isConnected %d", *isConnected);
    return *isConnected;
}

}  // namespace Util
