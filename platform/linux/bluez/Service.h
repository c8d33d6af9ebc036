// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/bluetooth.h"
#include "platform/linux/base/MainLoop.h"
#include "platform/linux/bluez/Audio.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Scan.h"

namespace Bluez {

// What implements the Bluetooth interface, made on first use. Main loop only.
class Service {
public:
    static Service& Get();

    // What the player of the device at that path says; result as bt_avrcp_control_get_play_status.
    int PlayStatus(const std::string& device, bt_avrcp_player_state_e& state) const;

    Mirror mirror;
    Scan scan{mirror};
    Audio audio{mirror, scan};

private:
    Service() { Platform::TellOfMainLoop(); }
};

}  // namespace Bluez
