// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "common/AdvertisingData.h"
#include "tests/fake_platform/FakeState.h"

namespace Fake {

namespace {

struct Bluetooth {
    bt_adapter_le_scan_result_cb scan = nullptr;
    void* scanData = nullptr;
    bt_audio_connection_state_changed_cb listener = nullptr;
    void* listenerData = nullptr;
    std::set<std::string> connecting;
};

Bluetooth& Radio() {
    static Bluetooth& radio = *new Bluetooth;
    return radio;
}

int CopyManufacturerData(const char* packet, int size, int* id, char** data, int* length) {
    const auto found = FindManufacturerData(reinterpret_cast<const std::uint8_t*>(packet),
                                            static_cast<std::size_t>(size));
    FAKE_REFUSE_IF(!found, BT_ERROR_OPERATION_FAILED);
    *data = static_cast<char*>(std::malloc(found->size + (found->size == 0 ? 1 : 0)));
    if (found->size != 0) {
        std::memcpy(*data, found->data, found->size);
    }
    *id = found->company;
    *length = static_cast<int>(found->size);
    return BT_ERROR_NONE;
}

}  // namespace

std::string NormalAddress(const char* address) {
    std::string text = address == nullptr ? "" : address;
    if (text.size() != 17) {
        return "";
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (i % 3 == 2 ? c != ':' : std::isxdigit(c) == 0) {
            return "";
        }
        text[i] = static_cast<char>(std::toupper(c));
    }
    return text;
}

void ResetBluetooth() {
    Radio() = Bluetooth();
}

void BluetoothLeftovers(std::vector<std::string>* found) {
    if (Radio().listener != nullptr) {
        found->push_back("listener for audio connections");
    }
}

Advertisement::Advertisement(const std::vector<unsigned char>& packet,
                             const std::vector<unsigned char>& scanResponse)
    : m_packet(packet.begin(), packet.end()),
      m_response(scanResponse.begin(), scanResponse.end()),
      m_info{m_address.data(),
             -40,
             static_cast<int>(m_packet.size()),
             m_packet.empty() ? nullptr : m_packet.data(),
             static_cast<int>(m_response.size()),
             m_response.empty() ? nullptr : m_response.data()} {}

bool Scanning() {
    return Radio().scan != nullptr;
}

bool Hear(const std::vector<unsigned char>& packet) {
    if (!Scanning()) {
        return false;
    }
    Advertisement advertisement(packet);
    Radio().scan(BT_ERROR_NONE, advertisement.Info(), Radio().scanData);
    return true;
}

void BreakScan(int error) {
    const Bluetooth radio = Radio();
    Radio().scan = nullptr;
    radio.scan(error, nullptr, radio.scanData);
}

bool FinishConnect(const std::string& address, int result) {
    if (Radio().connecting.erase(address) == 0) {
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
    if (Radio().listener == nullptr) {
        Fault("a connection event and no listener");
        return;
    }
    Radio().listener(result, connected, address, Radio().listenerData);
}

}  // namespace Fake

using Fake::Radio;
using Fake::TheWorld;

extern "C" {

int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* user_data) {
    FAKE_COMMAND();
    FAKE_REFUSE_IF(callback == nullptr, BT_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(!TheWorld().adapterOn, BT_ERROR_NOT_ENABLED);
    FAKE_REFUSE_IF(Fake::Scanning(), BT_ERROR_NOW_IN_PROGRESS);
    Radio().scan = callback;
    Radio().scanData = user_data;
    return BT_ERROR_NONE;
}

int bt_adapter_le_stop_scan(void) {
    FAKE_COMMAND();
    const bool scanning = Fake::Scanning();
    Radio().scan = nullptr;
    return scanning ? BT_ERROR_NONE : BT_ERROR_NOT_IN_PROGRESS;
}

int bt_adapter_le_get_scan_result_manufacturer_data(
    const bt_adapter_le_device_scan_result_info_s* info, bt_adapter_le_packet_type_e packet_type,
    int* manufacturer_id, char** data, int* data_len) {
    FAKE_QUERY(packet_type);
    FAKE_REFUSE_IF(
        info == nullptr || manufacturer_id == nullptr || data == nullptr || data_len == nullptr,
        BT_ERROR_INVALID_PARAMETER);
    switch (packet_type) {
        case BT_ADAPTER_LE_PACKET_ADVERTISING:
            return Fake::CopyManufacturerData(info->adv_data, info->adv_data_len, manufacturer_id,
                                              data, data_len);
        case BT_ADAPTER_LE_PACKET_SCAN_RESPONSE:
            return Fake::CopyManufacturerData(info->scan_data, info->scan_data_len, manufacturer_id,
                                              data, data_len);
        default:
            return BT_ERROR_INVALID_PARAMETER;
    }
}

int bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                             void* user_data) {
    FAKE_QUERY();
    FAKE_REFUSE_IF(callback == nullptr, BT_ERROR_INVALID_PARAMETER);
    Radio().listener = callback;
    Radio().listenerData = user_data;
    return BT_ERROR_NONE;
}

int bt_audio_unset_connection_state_changed_cb(void) {
    FAKE_QUERY();
    Radio().listener = nullptr;
    return BT_ERROR_NONE;
}

int bt_audio_connect(const char* remote_address, bt_audio_profile_type_e type) {
    FAKE_COMMAND(remote_address, type);
    const std::string address = Fake::NormalAddress(remote_address);
    FAKE_REFUSE_IF(address.empty() || type != BT_AUDIO_PROFILE_TYPE_A2DP_SINK,
                   BT_ERROR_INVALID_PARAMETER);
    return Radio().connecting.insert(address).second ? BT_ERROR_NONE : BT_ERROR_NOW_IN_PROGRESS;
}

int bt_avrcp_control_get_play_status(bt_avrcp_player_state_e* state) {
    FAKE_QUERY();
    FAKE_REFUSE_IF(state == nullptr, BT_ERROR_INVALID_PARAMETER);
    FAKE_REFUSE_IF(!TheWorld().player, BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED);
    *state = *TheWorld().player;
    return BT_ERROR_NONE;
}

}  // extern "C"
