// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "common/AdvertisingData.h"
#include "platform/bluetooth.h"
#include "platform/linux/bluez/Service.h"

// The LE scan.

using Bluez::Service;

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
