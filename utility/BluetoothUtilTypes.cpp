// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/DeviceInfo.h"
#include "utility/BluetoothUtil.h"
#include "utility/BtDeviceTypes.h"

// The kind of a device, by its class, its ids and its name.

namespace Util {

namespace {

// Bluetooth Assigned Numbers, 2.8, Class of Device.
constexpr int kMajorAudioVideo = 4;
constexpr int kMajorPeripheral = 5;
constexpr int kMinorGamepad = 0x08;
constexpr int kMinorKeyboard = 0x40;
constexpr int kMinorPointing = 0x80;
constexpr int kMinorKeyboardPointing = 0xC0;
// Headsets, loudspeakers, headphones, car audio and the like, but not a set-top box (0x24); 0x0C is
// reserved.
constexpr int kAudioMinors[] = {0x00, 0x04, 0x08, 0x10, 0x14, 0x18, 0x1C, 0x20, 0x28};

constexpr int kVelmoraVendor = 0x04E8;
constexpr int kRemoteProduct = 0x2075;
constexpr int kNewSpeakerProduct = 0x9000;
constexpr int kOldSpeakerProduct = 0x9010;

// By bt_devices_type.
constexpr const char* kTypeTexts[] = {"UNKNOWN_DEV_TYPE", "KeyBoard",  "Mouse",    "GamePad",
                                      "Remocon",          "HeadPhone", "Soundbar", "Soundbar"};

struct Ids {
    int vendor = 0;
    int product = 0;

    [[nodiscard]] bool Are(int wantedProduct) const {
        return vendor == kVelmoraVendor && product == wantedProduct;
    }
};

Ids ReadIds(const std::string& address) {
    Ids ids;
    bt_device_get_remote_vid_pid(address.c_str(), &ids.vendor, &ids.product);
    return ids;
}

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

bt_devices_type HidType(const std::string& address, const std::string& name, int minor) {
    if (name == "Velmora Wireless Keyboard") {
        return BT_DEVICE_TYPE_KEYBOARD;
    }
    if (ReadIds(address).Are(kRemoteProduct)) {
        return BT_DEVICE_TYPE_REMOTE;
    }
    switch (minor) {
        case kMinorKeyboard:
        case kMinorKeyboardPointing:
            return BT_DEVICE_TYPE_KEYBOARD;
        case kMinorPointing:
            return BT_DEVICE_TYPE_MOUSE;
        case kMinorGamepad:
            return BT_DEVICE_TYPE_GAMEPAD;
        default:
            return BT_DEVICE_TYPE_UNKNOWN;
    }
}

bt_devices_type AudioType(const LogPlace& place, const std::string& address,
                          const std::string& name, int minor) {
    if (!BluetoothUtil::IsAudioMinorCOD(minor)) {
        BTLOG_FOR(place, DLOG_INFO, "[%s] does not have supported audio minor cod", name.c_str());
        return BT_DEVICE_TYPE_UNKNOWN;
    }
    const Ids ids = ReadIds(address);
    BTLOG_FOR(place, DLOG_DEBUG, "Device Naem = %s, VID = 0x%x and PID = 0x%x", name.c_str(),
              static_cast<unsigned int>(ids.vendor), static_cast<unsigned int>(ids.product));
    if (ids.Are(kNewSpeakerProduct)) {
        BTLOG_FOR(place, DLOG_DEBUG, "This is new type Velmora BT spk");
        return BT_DEVICE_TYPE_VELMORA_SPK_NEW;
    }
    if (ids.Are(kOldSpeakerProduct) || Contains(name, "[Velmora] ")) {
        BTLOG_FOR(place, DLOG_DEBUG, "This is old type Velmora BT spk");
        return BT_DEVICE_TYPE_VELMORA_SPK_OLD;
    }
    if (Contains(name, "Velmora Wireless Audio")) {
        BTLOG_FOR(place, DLOG_DEBUG, "This is Velmora BT spk but it has wrong device name.");
        return BT_DEVICE_TYPE_UNKNOWN;
    }
    BTLOG_FOR(place, DLOG_DEBUG, "Normal Bluetooth Speaker");
    return BT_DEVICE_TYPE_HEADPHONE;
}

}  // namespace

bool BluetoothUtil::IsVelmoraAudio(const std::string& name) {
    const bool isVelmora =
        Contains(name, "[AV]") || Contains(name, "[ AV ]") || Contains(name, "[Velmora]");
    BTLOG_INFO("%s is Velmora audio : [%d]", name.c_str(), isVelmora);
    return isVelmora;
}

bool BluetoothUtil::IsAudioMinorCOD(int minor) {
    return std::find(std::begin(kAudioMinors), std::end(kAudioMinors), minor) !=
           std::end(kAudioMinors);
}

int BluetoothUtil::GetDeviceType(const std::string& address) {
    const DeviceInfoPtr info = ReadBondedDevice(address);
    if (!info) {
        BTLOG_ERROR("%s", "device_info is NULL");
        return BT_DEVICE_TYPE_UNKNOWN;
    }
    if (info->remote_name == nullptr) {
        BTLOG_ERROR("device_info->remote_name is NULL");
        return BT_DEVICE_TYPE_UNKNOWN;
    }
    const int major = info->bt_class.major_device_class;
    const bool isHid = major == kMajorPeripheral;
    if (!isHid && major != kMajorAudioVideo) {
        BTLOG_INFO("Not supported bt devices");
        return BT_DEVICE_TYPE_UNKNOWN;
    }
    const std::string name = info->remote_name;
    const int minor = info->bt_class.minor_device_class;
    const bt_devices_type type =
        isHid ? HidType(address, name, minor) : AudioType(BTLOG_HERE, address, name, minor);
    BTLOG_DEBUG("type : %d, EXIT()", type);
    BTLOG_DEBUG("major cod is BT_MAJOR_DEVICE_CLASS_%s type is [%d].",
                isHid ? "PERIPHERAL. HID" : "AUDIO_VIDEO. Audio", type);
    return type;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
std::string BluetoothUtil::GetStringDeviceType(std::string address) {
    const int type = GetDeviceType(address);
    if (type == BT_DEVICE_TYPE_UNKNOWN) {
        BTLOG_ERROR("Use Dev Type as Known in case of failure");
    }
    return kTypeTexts[type];
}

}  // namespace Util
