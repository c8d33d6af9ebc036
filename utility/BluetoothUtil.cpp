// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/BluetoothUtil.h"

#include <algorithm>
#include <iterator>

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/DeviceInfo.h"
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

// Accessories that are always connected; they do not count as devices.
constexpr const char* kAccessoryNames[] = {"Trellis Remote A", "Swivel Mount B", "Corvi Toggle C"};

using AudioInfoPtr = CPtr<bt_audio_connected_info_s, bt_audio_free_connected_info>;

// One flag of a bonded device's record, logged under its name; false when there is no record.
bool ReadFlag(const LogPlace& place, const std::string& address, bool bt_device_info_s::*flag,
              const char* name) {
    DeviceInfoPtr info = ReadBondedDevice(address);
    if (!info) {
        return false;
    }
    const bool value = info.get()->*flag;
    info.reset();
    BTLOG_FOR(place, DLOG_WARN, "%s %d", name, value);
    return value;
}

bool IsMissing(const LogPlace& place, const void* pointer, const char* name) {
    if (pointer == nullptr) {
        BTLOG_FOR(place, DLOG_ERROR, "%s is NULL", name);
    }
    return pointer == nullptr;
}

// Logs the result of an adapter switch and returns it.
int LogSwitch(const LogPlace& place, const std::string& call, int result) {
    BTLOG_FOR(place, DLOG_ERROR, "<Not Error> %s, ret = [%s]", call.c_str(),
              CommonUtil::ERR_STR(result));
    return result;
}

}  // namespace

int BluetoothUtil::GetAdapterState() {
    bt_adapter_state_e state = BT_ADAPTER_DISABLED;
    bt_adapter_get_state(&state);
    return state;
}

bool BluetoothUtil::IsPairedDevice(const std::string& address) {
    return ReadFlag(BTLOG_HERE, address, &bt_device_info_s::is_bonded, "is bonded device");
}

bool BluetoothUtil::IsConnectedDevice(const std::string& address) {
    return ReadFlag(BTLOG_HERE, address, &bt_device_info_s::is_connected, "isConnected");
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
    if (IsMissing(BTLOG_HERE, userData, "userData") || IsMissing(BTLOG_HERE, info, "deviceInfo") ||
        IsMissing(BTLOG_HERE, info->remote_address, "deviceInfo->remote_address") ||
        IsMissing(BTLOG_HERE, info->remote_name, "deviceInfo->remote_name")) {
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
    // Without a slash both get the whole value, as npos + 1 is 0.
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
    const int result = LogSwitch(BTLOG_HERE, "bt_adapter_enable", bt_adapter_enable());
    VconfUtil::SetVconf(VCONF_KEY_DB_LOW_POWER_SUPPORT_BT_DISABLE, 0);
    return result;
}

int BluetoothUtil::SetAdapterDisable() {
    const int result = LogSwitch(BTLOG_HERE, "bt_adapter_disable", bt_adapter_disable());
    VconfUtil::SetVconf(VCONF_KEY_DB_LOW_POWER_SUPPORT_BT_DISABLE, 1);
    return result;
}

int BluetoothUtil::SetAdapterReset() {
    return LogSwitch(BTLOG_HERE, "bt_adapter_reset", bt_adapter_reset());
}

int BluetoothUtil::SetAdapterConnectable(bool on) {
    return LogSwitch(BTLOG_HERE, "bt_adapter_set_connectable[" + std::to_string(int{on}) + "]",
                     bt_adapter_set_connectable(on));
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
