// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/bluetooth.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "common/AdvertisingData.h"
#include "platform/linux/BluezService.h"

namespace {

using Bluez::Service;

constexpr std::size_t kAddressLength = 17;

// The address in upper case; empty when it is malformed.
std::string CanonicalAddress(const char* address) {
    std::string canonical;
    if (address == nullptr || std::strlen(address) != kAddressLength) {
        return canonical;
    }
    for (std::size_t i = 0; i < kAddressLength; ++i) {
        const bool isSeparator = i % 3 == 2;
        if (isSeparator ? address[i] != ':' : !g_ascii_isxdigit(address[i])) {
            return "";
        }
        canonical += g_ascii_toupper(address[i]);
    }
    return canonical;
}

char* CopyOrNull(const std::string& text) {
    return text.empty() ? nullptr : strdup(text.c_str());
}

}  // namespace

int bt_adapter_get_state(bt_adapter_state_e* state) {
    if (state == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    *state =
        Service::Get().mirror.PoweredAdapter().empty() ? BT_ADAPTER_DISABLED : BT_ADAPTER_ENABLED;
    return BT_ERROR_NONE;
}

int bt_adapter_get_bonded_device_info(const char* remote_address, bt_device_info_s** info) {
    const std::string address = CanonicalAddress(remote_address);
    if (address.empty() || info == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const Bluez::Mirror& mirror = Service::Get().mirror;
    const std::string adapter = mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    const Bluez::Device* device = mirror.FindDevice(mirror.DevicePath(adapter, address));
    if (device == nullptr || !device->HoldsBond()) {
        return BT_ERROR_REMOTE_DEVICE_NOT_BONDED;
    }
    auto* record = static_cast<bt_device_info_s*>(std::calloc(1, sizeof(bt_device_info_s)));
    if (record == nullptr) {
        return BT_ERROR_OUT_OF_MEMORY;
    }
    record->remote_address = strdup(address.c_str());
    record->remote_name = CopyOrNull(device->name);
    record->is_bonded = true;
    record->is_connected = device->isConnected;
    *info = record;
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

int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* user_data) {
    return Service::Get().scan.Start(callback, user_data);
}

int bt_adapter_le_stop_scan(void) {
    return Service::Get().scan.Stop();
}

int bt_adapter_le_get_scan_result_manufacturer_data(
    const bt_adapter_le_device_scan_result_info_s* info, bt_adapter_le_packet_type_e packet_type,
    int* manufacturer_id, char** data, int* data_len) {
    if (info == nullptr || manufacturer_id == nullptr || data == nullptr || data_len == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const bool isAdvertisement = packet_type == BT_ADAPTER_LE_PACKET_ADVERTISING;
    if (!isAdvertisement && packet_type != BT_ADAPTER_LE_PACKET_SCAN_RESPONSE) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const char* packet = isAdvertisement ? info->adv_data : info->scan_data;
    const int size = isAdvertisement ? info->adv_data_len : info->scan_data_len;
    if (packet == nullptr || size <= 0) {
        return BT_ERROR_OPERATION_FAILED;
    }
    const auto found = FindManufacturerData(reinterpret_cast<const std::uint8_t*>(packet),
                                            static_cast<std::size_t>(size));
    if (!found) {
        return BT_ERROR_OPERATION_FAILED;
    }
    // One byte more: malloc(0) may answer NULL.
    auto* copy = static_cast<char*>(std::malloc(found->size + 1));
    if (copy == nullptr) {
        return BT_ERROR_OUT_OF_MEMORY;
    }
    std::memcpy(copy, found->data, found->size);
    *manufacturer_id = found->company;
    *data = copy;
    *data_len = static_cast<int>(found->size);
    return BT_ERROR_NONE;
}

int bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                             void* user_data) {
    if (callback == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    Service::Get().audio.SetCallback(callback, user_data);
    return BT_ERROR_NONE;
}

int bt_audio_unset_connection_state_changed_cb(void) {
    Service::Get().audio.SetCallback(nullptr, nullptr);
    return BT_ERROR_NONE;
}

int bt_audio_connect(const char* remote_address, bt_audio_profile_type_e type) {
    const std::string address = CanonicalAddress(remote_address);
    if (address.empty() || type != BT_AUDIO_PROFILE_TYPE_A2DP_SINK) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    return Service::Get().audio.Connect(address);
}

int bt_avrcp_control_get_play_status(bt_avrcp_player_state_e* state) {
    if (state == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const Service& service = Service::Get();
    const std::string device = service.audio.LastConnected();
    if (device.empty()) {
        return BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED;
    }
    return service.PlayStatus(device, *state);
}
