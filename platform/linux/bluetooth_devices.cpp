// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "platform/bluetooth.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Record.h"
#include "platform/linux/bluez/Service.h"

// Questions about known devices, and what may be changed of them.

using Bluez::Service;

namespace {

// 'usb:v04E8p9000d0100' or 'bluetooth:v...': who assigned the vendor's id does not matter here
// (bluez src/uuid-helper.c).
bool ParseModalias(const std::string& modalias, int& vendor, int& product) {
    const std::size_t colon = modalias.find(':');
    unsigned int v = 0;
    unsigned int p = 0;
    // NOLINTNEXTLINE(cert-err34-c): four digits each, nothing can overflow
    if (colon == std::string::npos ||
        std::sscanf(modalias.c_str() + colon, ":v%4xp%4x", &v, &p) != 2) {
        return false;
    }
    vendor = static_cast<int>(v);
    product = static_cast<int>(p);
    return true;
}

}  // namespace

int bt_adapter_get_bonded_device_info(const char* remote_address, bt_device_info_s** info) {
    if (info == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const Bluez::Device* device = nullptr;
    const Bluez::Mirror& mirror = Service::Get().mirror;
    const int result = Bluez::FindBonded(mirror, remote_address, &device);
    // The engine asks this before it connects a phone, and says of neither which phone it was.
    if (result == BT_ERROR_REMOTE_DEVICE_NOT_BONDED) {
        PLATFORM_WARN("%s is not bonded", remote_address);
    } else if (result == BT_ERROR_NOT_ENABLED) {
        PLATFORM_WARN("%s cannot be connected: %s", remote_address, mirror.WhyOff());
    }
    if (result != BT_ERROR_NONE) {
        return result;
    }
    DeviceInfoPtr record = Bluez::MakeRecord(*device);
    if (!record) {
        return BT_ERROR_OUT_OF_MEMORY;
    }
    *info = record.release();
    return BT_ERROR_NONE;
}

int bt_adapter_free_device_info(bt_device_info_s* info) {
    if (info != nullptr) {
        std::free(info->remote_address);
        std::free(info->remote_name);
        std::free(info);
    }
    return BT_ERROR_NONE;
}

int bt_adapter_foreach_bonded_device(bt_adapter_bonded_device_cb callback, void* user_data) {
    if (callback == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const Bluez::Mirror& mirror = Service::Get().mirror;
    const std::string adapter = mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    for (const std::string& path : mirror.BondedDevices(adapter)) {
        const Bluez::Device* device = mirror.FindDevice(path);
        const DeviceInfoPtr record = Bluez::MakeRecord(*device);
        if (!record) {
            return BT_ERROR_OUT_OF_MEMORY;
        }
        if (!callback(record.get(), user_data)) {
            break;
        }
    }
    return BT_ERROR_NONE;
}

int bt_device_get_remote_vid_pid(const char* remote_address, int* vendor_id, int* product_id) {
    if (vendor_id == nullptr || product_id == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const Bluez::Device* device = nullptr;
    const int result = Bluez::FindBonded(Service::Get().mirror, remote_address, &device);
    if (result == BT_ERROR_NONE && !ParseModalias(device->modalias, *vendor_id, *product_id)) {
        *vendor_id = 0;
        *product_id = 0;
    }
    return result;
}

// bluetoothd does not tell profile by profile: an input device that is connected is connected as
// one.
int bt_device_is_profile_connected(const char* remote_address, bt_profile_e profile,
                                   bool* connected) {
    if (connected == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    if (profile != BT_PROFILE_HID) {
        return BT_ERROR_NOT_SUPPORTED;
    }
    const Bluez::Device* device = nullptr;
    const int result = Bluez::FindBonded(Service::Get().mirror, remote_address, &device);
    if (result == BT_ERROR_NONE) {
        *connected = device->isConnected && device->hasHid;
    }
    return result;
}

int bt_device_set_authorization(const char* remote_address,
                                bt_device_authorization_e authorization) {
    const Bluez::Mirror& mirror = Service::Get().mirror;
    const Bluez::Device* device = nullptr;
    const int result = Bluez::FindBonded(mirror, remote_address, &device);
    if (result == BT_ERROR_NONE) {
        Bluez::SetProperty(
            mirror.Connection(), mirror.DevicePath(mirror.PoweredAdapter(), device->address),
            Bluez::kDeviceInterface, "Trusted",
            g_variant_new_boolean(authorization == BT_DEVICE_AUTHORIZED ? TRUE : FALSE));
    }
    return result;
}

int bt_adapter_foreach_headless_device_info(bt_adapter_headless_device_info_cb /*callback*/,
                                            void* /*user_data*/) {
    return BT_ERROR_NOT_SUPPORTED;
}

int bt_adapter_unregister_headless_device(const char* /*remote_address*/) {
    return BT_ERROR_NOT_SUPPORTED;
}
