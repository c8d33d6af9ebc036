// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <string>

#include "common/Address.h"
#include "platform/bluetooth.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Record.h"
#include "platform/linux/bluez/Service.h"

// Audio connections and the phone's player.

using Bluez::Service;

namespace {

// Seeking counts as playing: the owner is using the phone.
bt_avrcp_player_state_e PlayerState(const std::string& status) {
    if (status == "playing" || status == "forward-seek" || status == "reverse-seek") {
        return BT_AVRCP_PLAYER_STATE_PLAYING;
    }
    return status == "paused" ? BT_AVRCP_PLAYER_STATE_PAUSED : BT_AVRCP_PLAYER_STATE_STOPPED;
}

}  // namespace

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
    const std::string device = service.audio.CurrentPhone();
    if (device.empty()) {
        PLATFORM_WARN("no play status: the phone that was asked for is not connected");
        return BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED;
    }
    const Bluez::Player* player = service.mirror.FindPlayer(service.mirror.PlayerPath(device));
    if (player == nullptr) {
        PLATFORM_WARN("%s shows no player", device.c_str());
        return BT_ERROR_OPERATION_FAILED;
    }
    if (!player->status) {
        PLATFORM_WARN("the player of %s has not told its state", device.c_str());
        return BT_ERROR_OPERATION_FAILED;
    }
    *state = PlayerState(*player->status);
    return BT_ERROR_NONE;
}

int bt_avrcp_target_send_cmd(int /*command*/) {
    return BT_ERROR_NOT_SUPPORTED;
}

int bt_audio_get_connected_info(int type, bt_audio_connected_info_s** info) {
    if (info == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    if (type != BT_AUDIO_PROFILE_TYPE_A2DP_SINK) {
        return BT_ERROR_NOT_SUPPORTED;
    }
    auto* record =
        static_cast<bt_audio_connected_info_s*>(std::calloc(1, sizeof(bt_audio_connected_info_s)));
    if (record == nullptr) {
        return BT_ERROR_OUT_OF_MEMORY;
    }
    const Service& service = Service::Get();
    const std::string path = service.audio.LastOfConnected();
    if (const Bluez::Device* device = service.mirror.FindDevice(path)) {
        record->remote_address = Bluez::CopyOrNull(device->address);
        record->remote_name = Bluez::CopyOrNull(device->name);
        record->connected_count = static_cast<int>(service.audio.ConnectedCount());
    }
    *info = record;
    return BT_ERROR_NONE;
}

int bt_audio_free_connected_info(bt_audio_connected_info_s* info) {
    if (info != nullptr) {
        std::free(info->remote_address);
        std::free(info->remote_name);
        std::free(info);
    }
    return BT_ERROR_NONE;
}
