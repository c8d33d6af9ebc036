// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>

#include "autoconnect/src/AutoConnectDbg.h"
#include "utility/BluetoothRecords.h"
#include "utility/BluetoothUtil.h"
#include "utility/BtDeviceTypes.h"

// What kind of device it is, told from its class, its ids and its name.

namespace Util {

namespace {

// Bluetooth Assigned Numbers, 2.8, Class of Device.
constexpr int kMajorAudioVideo = 4;
constexpr int kMajorPeripheral = 5;
constexpr int kMinorGamepad = 0x08;
constexpr int kMinorKeyboard = 0x40;
constexpr int kMinorPointing = 0x80;
constexpr int kMinorKeyboardPointing = 0xC0;
// Headsets, loudspeakers, headphones, car audio and the like; no set-top box (0x24), and 0x0C is
// reserved.
constexpr int kAudioMinors[] = {0x00, 0x04, 0x08, 0x10, 0x14, 0x18, 0x1C, 0x20, 0x28};

constexpr int kVelmoraVendor = 0x04E8;
constexpr int kRemoteProduct = 0x2075;
constexpr int kNewSpeakerProduct = 0x9000;
constexpr int kOldSpeakerProduct = 0x9010;

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

struct AudioKind {
    bt_devices_type type;
    const char* message;
};

AudioKind AudioType(const Ids& ids, const std::string& name) {
    if (ids.Are(kNewSpeakerProduct)) {
        return {BT_DEVICE_TYPE_VELMORA_SPK_NEW, "This is new type Velmora BT spk"};
    }
    if (ids.Are(kOldSpeakerProduct) || Contains(name, "[Velmora] ")) {
        return {BT_DEVICE_TYPE_VELMORA_SPK_OLD, "This is old type Velmora BT spk"};
    }
    if (Contains(name, "Velmora Wireless Audio")) {
        return {BT_DEVICE_TYPE_UNKNOWN, "This is Velmora BT spk but it has wrong device name."};
    }
    return {BT_DEVICE_TYPE_HEADPHONE, "Normal Bluetooth Speaker"};
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
    const std::string name = info->remote_name;
    const int minor = info->bt_class.minor_device_class;
    bt_devices_type type = BT_DEVICE_TYPE_UNKNOWN;
    switch (info->bt_class.major_device_class) {
        case kMajorPeripheral:
            type = HidType(address, name, minor);
            BTLOG_DEBUG("type : %d, EXIT()", type);
            BTLOG_DEBUG("major cod is BT_MAJOR_DEVICE_CLASS_PERIPHERAL. HID type is [%d].", type);
            break;
        case kMajorAudioVideo:
            if (IsAudioMinorCOD(minor)) {
                const Ids ids = ReadIds(address);
                BTLOG_DEBUG("Device Naem = %s, VID = 0x%x and PID = 0x%x", name.c_str(),
                            static_cast<unsigned int>(ids.vendor),
                            static_cast<unsigned int>(ids.product));
                const AudioKind kind = AudioType(ids, name);
                BTLOG_DEBUG("%s", kind.message);
                type = kind.type;
            } else {
                BTLOG_INFO("[%s] does not have supported audio minor cod", name.c_str());
            }
            BTLOG_DEBUG("type : %d, EXIT()", type);
            BTLOG_DEBUG("major cod is BT_MAJOR_DEVICE_CLASS_AUDIO_VIDEO. Audio type is [%d].",
                        type);
            break;
        default:
            BTLOG_INFO("Not supported bt devices");
            break;
    }
    return type;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
std::string BluetoothUtil::GetStringDeviceType(std::string address) {
    switch (GetDeviceType(address)) {
        case BT_DEVICE_TYPE_KEYBOARD:
            return "KeyBoard";
        case BT_DEVICE_TYPE_MOUSE:
            return "Mouse";
        case BT_DEVICE_TYPE_GAMEPAD:
            return "GamePad";
        case BT_DEVICE_TYPE_REMOTE:
            return "Remocon";
        case BT_DEVICE_TYPE_HEADPHONE:
            return "HeadPhone";
        case BT_DEVICE_TYPE_VELMORA_SPK_OLD:
        case BT_DEVICE_TYPE_VELMORA_SPK_NEW:
            return "Soundbar";
        default:
            BTLOG_ERROR("Use Dev Type as Known in case of failure");
            return "UNKNOWN_DEV_TYPE";
    }
}

}  // namespace Util
