// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/BluetoothUtil.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"
#include "utility/BluetoothRecords.h"
#include "utility/CommonUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/VconfUtil.h"

// The device's kind and what the device database says are in BluetoothUtilTypes.cpp and
// BluetoothUtilDatabase.cpp.

namespace Util {

namespace {

constexpr int kMajorComputer = 1;
constexpr int kMajorPhone = 2;
constexpr int kAvrcpPowerCommand = 0x40;
constexpr const char* kTvNamePrefix = "[TV]";

// Accessories that are connected all the time and are nobody's devices.
constexpr const char* kAccessoryNames[] = {"Trellis Remote A", "Swivel Mount B", "Corvi Toggle C"};

using AudioInfoPtr = CPtr<bt_audio_connected_info_s, bt_audio_free_connected_info>;

// One flag of a bonded device's record; none when there is no record.
std::optional<bool> BondedDeviceFlag(const std::string& address, bool bt_device_info_s::*flag) {
    const DeviceInfoPtr info = ReadBondedDevice(address);
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

bool BluetoothUtil::IsMobile(const std::string& address) {
    const DeviceInfoPtr info = ReadBondedDevice(address);
    if (!info) {
        BTLOG_ERROR("EXIT, dev_info is NULL");
        return false;
    }
    const int major = info->bt_class.major_device_class;
    if (major != kMajorComputer && major != kMajorPhone) {
        return false;
    }
    BTLOG_INFO("this is mobile device");
    return true;
}

int BluetoothUtil::GetConnectedDevices(std::vector<std::string>& out) {
    return bt_adapter_foreach_bonded_device(OnForeachConnectedDevice, &out);
}

bool BluetoothUtil::OnForeachConnectedDevice(bt_device_info_s* info, void* userData) noexcept {
    if (userData == nullptr) {
        BTLOG_ERROR("userData is NULL");
        return true;
    }
    if (info == nullptr) {
        BTLOG_ERROR("deviceInfo is NULL");
        return true;
    }
    if (info->remote_address == nullptr) {
        BTLOG_ERROR("deviceInfo->remote_address is NULL");
        return true;
    }
    if (info->remote_name == nullptr) {
        BTLOG_ERROR("deviceInfo->remote_name is NULL");
        return true;
    }
    const std::string name = info->remote_name;
    const bool isAccessory = std::find(std::begin(kAccessoryNames), std::end(kAccessoryNames),
                                       name) != std::end(kAccessoryNames);
    if (!isAccessory && info->is_connected) {
        BTLOG_INFO("%s is connected", info->remote_address);
        static_cast<std::vector<std::string>*>(userData)->emplace_back(info->remote_address);
    }
    return true;
}

int BluetoothUtil::GetNumberOfBtdevice() {
    std::vector<std::string> devices;
    GetConnectedDevices(devices);
    return static_cast<int>(devices.size());
}

int BluetoothUtil::GetConnectedDeviceNumberWithProfile(bt_profile_e profile) {
    std::vector<std::string> devices;
    GetConnectedDevices(devices);
    return static_cast<int>(
        std::count_if(devices.begin(), devices.end(), [profile](const std::string& address) {
            bool isConnected = false;
            return bt_device_is_profile_connected(address.c_str(), profile, &isConnected) ==
                       BT_ERROR_NONE &&
                   isConnected;
        }));
}

int BluetoothUtil::GetConnectedHidDeviceNumber() {
    return GetConnectedDeviceNumberWithProfile(BT_PROFILE_HID);
}

bool BluetoothUtil::GetConnectedA2dpDevice(std::string& address, std::string& name, int type) {
    AudioInfoPtr info;
    const int result = bt_audio_get_connected_info(type, Out(info));
    if (result != BT_ERROR_NONE || !info) {
        BTLOG_ERROR("bt_audio_get_connected_info failed : %s", CommonUtil::ERR_STR(result));
        return false;
    }
    if (info->connected_count == 0) {
        BTLOG_INFO("No connected a2dp device");
        return false;
    }
    if (info->remote_address == nullptr) {
        BTLOG_ERROR("device_info->remote_address == NULL");
        return false;
    }
    address = info->remote_address;
    name = info->remote_name == nullptr ? "" : info->remote_name;
    BTLOG_INFO("address = %s name = %s", address.c_str(), name.c_str());
    return true;
}

void BluetoothUtil::GetLastVelmoraAudioDevice(std::string& address, std::string& name) {
    std::string value;
    VconfUtil::GetVconf(VCONF_KEY_DB_NIRVO_SOUNDSHAREDEVICE_DEV_ONE_ADDR, value);
    const std::size_t slash = value.find('/');
    // Without a slash both get the whole value: npos + 1 is 0.
    address = value.substr(0, slash);
    name = value.substr(slash + 1);
}

void BluetoothUtil::SetAutoAcceptDevice(const std::string& address, bool accept) {
    BTLOG_INFO("set auto accept device as %s %d", address.c_str(), accept);
    VconfUtil::SetVconf(VCONF_KEY_DB_NIRVO_ALLOWEDSSDEVICELIST, accept ? address : std::string());
    bt_device_set_authorization(address.c_str(),
                                accept ? BT_DEVICE_AUTHORIZED : BT_DEVICE_UNAUTHORIZED);
}

int BluetoothUtil::sendPowerOffCmd(const std::string& /*address*/) {
    return bt_avrcp_target_send_cmd(kAvrcpPowerCommand);
}

void BluetoothUtil::RemoveAllHeadlessDevice() {
    const int result = bt_adapter_foreach_headless_device_info(RemoveAllHeadlessDeviceCb, nullptr);
    if (result == BT_ERROR_NONE) {
        BTLOG_INFO("bt_adapter_foreach_headless_device_info :successful");
    } else {
        BTLOG_ERROR("failed bt_adapter_foreach_headless_device_info with [0x%04x]",
                    static_cast<unsigned int>(result));
    }
}

bool BluetoothUtil::RemoveAllHeadlessDeviceCb(bt_adapter_headless_dev_info_s* info,
                                              void* /*userData*/) noexcept {
    if (info == nullptr || info->remote_address == nullptr) {
        return false;
    }
    const int result = bt_adapter_unregister_headless_device(info->remote_address);
    if (result == BT_ERROR_NONE) {
        return false;
    }
    BTLOG_ERROR("failed bt_adapter_foreach_headless_device_info with [%s]",
                CommonUtil::ERR_STR(result));
    return true;
}

std::string BluetoothUtil::GetAdapterName() {
    MallocPtr<char> name;
    bt_adapter_get_name(Out(name));
    if (!name) {
        BTLOG_ERROR("Failed to get adapter name");
        return "";
    }
    BTLOG_INFO("adapter name is %s", name.get());
    return name.get();
}

bool BluetoothUtil::IsAdapterNameStartsWithTVprefix() {
    return CommonUtil::StartsWith(GetAdapterName(), kTvNamePrefix);
}

int BluetoothUtil::SetAdapterEnable() {
    const int result = bt_adapter_enable();
    BTLOG_ERROR("<Not Error> bt_adapter_enable, ret = [%s]", CommonUtil::ERR_STR(result));
    VconfUtil::SetVconf(VCONF_KEY_DB_LOW_POWER_SUPPORT_BT_DISABLE, 0);
    return result;
}

int BluetoothUtil::SetAdapterDisable() {
    const int result = bt_adapter_disable();
    BTLOG_ERROR("<Not Error> bt_adapter_disable, ret = [%s]", CommonUtil::ERR_STR(result));
    VconfUtil::SetVconf(VCONF_KEY_DB_LOW_POWER_SUPPORT_BT_DISABLE, 1);
    return result;
}

int BluetoothUtil::SetAdapterReset() {
    const int result = bt_adapter_reset();
    BTLOG_ERROR("<Not Error> bt_adapter_reset, ret = [%s]", CommonUtil::ERR_STR(result));
    return result;
}

int BluetoothUtil::SetAdapterConnectable(bool on) {
    const int result = bt_adapter_set_connectable(on);
    BTLOG_ERROR("<Not Error> bt_adapter_set_connectable[%d], ret = [%s]", on,
                CommonUtil::ERR_STR(result));
    return result;
}

int BluetoothUtil::SetAdapterVisibility(bt_adapter_visibility_mode_e mode) {
    if (!SystemConfigUtil::IsBluetoothDiscoverable()) {
        BTLOG_WARN("Discoveralbe : %d", 0);
        mode = BT_ADAPTER_VISIBILITY_MODE_NON_DISCOVERABLE;
    }
    const int result = bt_adapter_set_visibility(mode, 0);
    BTLOG_ERROR(
        "<Not Error> bt_adapter_set_visibility[%d] , 1 = Discoverable , 0 = Non discoverable], "
        "ret = [%s]",
        mode, CommonUtil::ERR_STR(result));
    return result;
}

}  // namespace Util
