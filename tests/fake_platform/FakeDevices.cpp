// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "common/CHandle.h"
#include "tests/fake_platform/FakeState.h"

using Fake::TheWorld;

namespace {

char* Copy(const std::optional<std::string>& text) {
    return text ? strdup(text->c_str()) : nullptr;
}

bt_device_info_s* MakeRecord(const std::string& address, const Fake::Device& device) {
    return Fake::Give(bt_device_info_s{strdup(address.c_str()), Copy(device.name),
                                       device.deviceClass, device.bonded, device.connected});
}

template <typename Record>
int FreeRecord(Record* record) {
    if (record != nullptr) {
        std::free(record->remote_address);
        std::free(record->remote_name);
        Fake::Release(record);
    }
    return BT_ERROR_NONE;
}

// Calls `use` with the device that has a bond, and returns why there is none otherwise.
template <typename Use>
int WithBond(const char* address, const Use& use) {
    const std::string normal = Fake::NormalAddress(address);
    FAKE_REFUSE_IF(normal.empty(), BT_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(!TheWorld().adapterOn, BT_ERROR_NOT_ENABLED);
    const auto device = TheWorld().devices.find(normal);
    FAKE_REFUSE_IF(device == TheWorld().devices.end(), BT_ERROR_REMOTE_DEVICE_NOT_BONDED);
    use(device->second);
    return BT_ERROR_NONE;
}

int Switch(bool on) {
    const bool wasOn = std::exchange(TheWorld().adapterOn, on);
    return wasOn == on ? BT_ERROR_ALREADY_DONE : BT_ERROR_NONE;
}

}  // namespace

extern "C" {

int bt_adapter_get_state(bt_adapter_state_e* state) {
    FAKE_QUERY();
    *state = TheWorld().adapterOn ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED;
    return BT_ERROR_NONE;
}

int bt_adapter_get_bonded_device_info(const char* remote_address, bt_device_info_s** info) {
    FAKE_QUERY(remote_address);
    return WithBond(remote_address, [&](const Fake::Device& device) {
        *info = MakeRecord(Fake::NormalAddress(remote_address), device);
    });
}

int bt_adapter_free_device_info(bt_device_info_s* info) {
    return FreeRecord(info);
}

int bt_adapter_foreach_bonded_device(bt_adapter_bonded_device_cb callback, void* user_data) {
    FAKE_QUERY();
    FAKE_REFUSE_IF(callback == nullptr, BT_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(!TheWorld().adapterOn, BT_ERROR_NOT_ENABLED);
    return Fake::ForEach(TheWorld().devices, [&](const auto& device) {
        const CPtr<bt_device_info_s, bt_adapter_free_device_info> record(
            MakeRecord(device.first, device.second));
        return callback(record.get(), user_data);
    });
}

int bt_device_get_remote_vid_pid(const char* remote_address, int* vendor_id, int* product_id) {
    FAKE_QUERY(remote_address);
    return WithBond(remote_address, [&](const Fake::Device& device) {
        *vendor_id = device.vendor;
        *product_id = device.product;
    });
}

int bt_device_is_profile_connected(const char* remote_address, bt_profile_e profile,
                                   bool* connected) {
    FAKE_QUERY(remote_address, profile);
    FAKE_REFUSE_IF(profile != BT_PROFILE_HID, BT_ERROR_NOT_SUPPORTED);
    return WithBond(remote_address, [&](const Fake::Device& device) {
        *connected = device.connected && device.isInput;
    });
}

int bt_device_set_authorization(const char* remote_address,
                                bt_device_authorization_e authorization) {
    FAKE_COMMAND(remote_address, authorization);
    return WithBond(remote_address, [](const Fake::Device& /*device*/) {});
}

int bt_adapter_get_name(char** name) {
    FAKE_QUERY();
    FAKE_REFUSE_IF(!TheWorld().adapterOn, BT_ERROR_NOT_ENABLED);
    FAKE_REFUSE_IF(TheWorld().adapterName.empty(), BT_ERROR_OPERATION_FAILED);
    *name = strdup(TheWorld().adapterName.c_str());
    return BT_ERROR_NONE;
}

int bt_adapter_enable(void) {
    FAKE_COMMAND();
    return Switch(true);
}

int bt_adapter_disable(void) {
    FAKE_COMMAND();
    return Switch(false);
}

int bt_adapter_reset(void) {
    FAKE_COMMAND();
    return TheWorld().adapterOn ? BT_ERROR_NONE : BT_ERROR_NOT_ENABLED;
}

int bt_adapter_set_connectable(bool connectable) {
    FAKE_COMMAND(connectable);
    return BT_ERROR_NOT_SUPPORTED;
}

int bt_adapter_set_visibility(bt_adapter_visibility_mode_e mode, int duration) {
    FAKE_COMMAND(mode, duration);
    FAKE_REFUSE_IF(duration < 0, BT_ERROR_INVALID_PARAMETER);
    return TheWorld().adapterOn ? BT_ERROR_NONE : BT_ERROR_NOT_ENABLED;
}

int bt_adapter_foreach_headless_device_info(bt_adapter_headless_device_info_cb callback,
                                            void* user_data) {
    FAKE_COMMAND();
    // Over a copy, for the callback unregisters them.
    std::vector<std::string> accessories = TheWorld().headless;
    return Fake::ForEach(accessories, [&](std::string& address) {
        bt_adapter_headless_dev_info_s info = {address.data()};
        return callback(&info, user_data);
    });
}

int bt_adapter_unregister_headless_device(const char* remote_address) {
    FAKE_COMMAND(remote_address);
    std::vector<std::string>& accessories = TheWorld().headless;
    const auto found = std::find(accessories.begin(), accessories.end(), remote_address);
    FAKE_REFUSE_IF(found == accessories.end(), BT_ERROR_REMOTE_DEVICE_NOT_FOUND);
    accessories.erase(found);
    return BT_ERROR_NONE;
}

int bt_avrcp_target_send_cmd(int command) {
    FAKE_COMMAND(command);
    return BT_ERROR_NOT_SUPPORTED;
}

int bt_audio_get_connected_info(int type, bt_audio_connected_info_s** info) {
    FAKE_QUERY(type);
    FAKE_REFUSE_IF(type != BT_AUDIO_PROFILE_TYPE_A2DP_SINK, BT_ERROR_NOT_SUPPORTED);
    *info = Fake::Give(bt_audio_connected_info_s{0, nullptr, nullptr});
    for (const auto& [address, device] : TheWorld().devices) {
        if (device.connected && ++(*info)->connected_count == 1) {
            (*info)->remote_address = strdup(address.c_str());
            (*info)->remote_name = Copy(device.name);
        }
    }
    return BT_ERROR_NONE;
}

int bt_audio_free_connected_info(bt_audio_connected_info_s* info) {
    return FreeRecord(info);
}

}  // extern "C"
