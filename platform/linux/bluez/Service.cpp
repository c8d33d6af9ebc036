// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Service.h"

#include "platform/linux/base/PlatformLog.h"

namespace Bluez {

namespace {

// Seeking counts as playing: the owner is using the phone.
bt_avrcp_player_state_e PlayerState(const std::string& status) {
    if (status == "playing" || status == "forward-seek" || status == "reverse-seek") {
        return BT_AVRCP_PLAYER_STATE_PLAYING;
    }
    return status == "paused" ? BT_AVRCP_PLAYER_STATE_PAUSED : BT_AVRCP_PLAYER_STATE_STOPPED;
}

}  // namespace

Service& Service::Get() {
    static Service service;
    return service;
}

int Service::PlayStatus(const std::string& device, bt_avrcp_player_state_e& state) const {
    const Player* player = mirror.FindPlayer(mirror.PlayerPath(device));
    if (player == nullptr) {
        PLATFORM_WARN("%s shows no player", device.c_str());
        return BT_ERROR_OPERATION_FAILED;
    }
    if (!player->status) {
        PLATFORM_WARN("the player of %s has not told its state", device.c_str());
        return BT_ERROR_OPERATION_FAILED;
    }
    state = PlayerState(*player->status);
    return BT_ERROR_NONE;
}

}  // namespace Bluez
