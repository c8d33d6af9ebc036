// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <regex>
#include <utility>

#include "common/AdvertisingData.h"
#include "common/CHandle.h"
#include "tests/fake_platform/FakeState.h"

namespace Fake {

std::string NormalAddress(const char* address) {
    static const std::regex form("([0-9A-Fa-f]{2}:){5}[0-9A-Fa-f]{2}");
    const bool isAddress = address != nullptr && std::regex_match(address, form);
    return isAddress ? GStringPtr(g_ascii_strup(address, -1)).get() : "";
}

bool Scanning() {
    return Main().scan != nullptr;
}

bool Hear(std::vector<unsigned char> packet) {
    if (!Scanning()) {
        return false;
    }
    packet.shrink_to_fit();
    std::string address = "5E:00:00:00:00:01";
    bt_adapter_le_device_scan_result_info_s info = {address.data(),
                                                    -40,
                                                    static_cast<int>(packet.size()),
                                                    reinterpret_cast<char*>(packet.data()),
                                                    0,
                                                    nullptr};
    // By a copy, for the listener may end the scan.
    const auto listener = Main().scan;
    listener(BT_ERROR_NONE, &info);
    return true;
}

void BreakScan(int error) {
    std::exchange(Main().scan, nullptr)(error, nullptr);
}

bool FinishConnect(const std::string& address, int result) {
    if (Main().connecting.erase(address) == 0) {
        return false;
    }
    const auto device = TheWorld().devices.find(address);
    if (device != TheWorld().devices.end() && result == BT_ERROR_NONE) {
        device->second.connected = true;
    }
    ConnectionEvent(result, true, address.c_str());
    return true;
}

void ConnectionEvent(int result, bool connected, const char* address) {
    Main().audioListener(result, connected, address);
}

}  // namespace Fake

using Fake::Main;
using Fake::TheWorld;

extern "C" {

int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* user_data) {
    FAKE_COMMAND();
    FAKE_REFUSE_IF(!TheWorld().adapterOn, BT_ERROR_NOT_ENABLED);
    FAKE_REFUSE_IF(Fake::Scanning(), BT_ERROR_NOW_IN_PROGRESS);
    Main().scan = [=](int result, auto* info) { callback(result, info, user_data); };
    return BT_ERROR_NONE;
}

int bt_adapter_le_stop_scan(void) {
    FAKE_COMMAND();
    const bool wasScanning = std::exchange(Main().scan, nullptr) != nullptr;
    return wasScanning ? BT_ERROR_NONE : BT_ERROR_NOT_IN_PROGRESS;
}

int bt_adapter_le_get_scan_result_manufacturer_data(
    const bt_adapter_le_device_scan_result_info_s* info, bt_adapter_le_packet_type_e packet_type,
    int* manufacturer_id, char** data, int* data_len) {
    FAKE_QUERY(packet_type);
    FAKE_REFUSE_IF(packet_type != BT_ADAPTER_LE_PACKET_ADVERTISING, BT_ERROR_INVALID_PARAMETER);
    const auto found = FindManufacturerData(reinterpret_cast<const std::uint8_t*>(info->adv_data),
                                            static_cast<std::size_t>(info->adv_data_len));
    FAKE_REFUSE_IF(!found, BT_ERROR_OPERATION_FAILED);
    *data = static_cast<char*>(std::malloc(std::max<std::size_t>(found->size, 1)));
    std::copy_n(found->data, found->size, *data);
    *manufacturer_id = found->company;
    *data_len = static_cast<int>(found->size);
    return BT_ERROR_NONE;
}

int bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                             void* user_data) {
    FAKE_QUERY();
    Main().audioListener = [=](int result, bool connected, const char* address) {
        callback(result, connected, address, user_data);
    };
    return BT_ERROR_NONE;
}

int bt_audio_unset_connection_state_changed_cb(void) {
    FAKE_QUERY();
    Main().audioListener = nullptr;
    return BT_ERROR_NONE;
}

int bt_audio_connect(const char* remote_address, bt_audio_profile_type_e type) {
    FAKE_COMMAND(remote_address, type);
    const std::string address = Fake::NormalAddress(remote_address);
    FAKE_REFUSE_IF(address.empty() || type != BT_AUDIO_PROFILE_TYPE_A2DP_SINK,
                   BT_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(Main().connecting.count(address) != 0, BT_ERROR_NOW_IN_PROGRESS);
    for (const std::string& other : std::exchange(Main().connecting, {address})) {
        Main().pending.emplace_back(
            [other] { Fake::ConnectionEvent(BT_ERROR_CANCELLED, false, other.c_str()); });
    }
    return BT_ERROR_NONE;
}

int bt_avrcp_control_get_play_status(bt_avrcp_player_state_e* state) {
    FAKE_QUERY();
    FAKE_REFUSE_IF(!TheWorld().player, BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED);
    *state = *TheWorld().player;
    return BT_ERROR_NONE;
}

}  // extern "C"
