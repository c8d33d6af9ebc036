// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/bluetooth.h"

// Listens to A2DP connections for as long as it exists. Main loop's thread only.
class AudioConnectionListener {
public:
    // The arguments of bt_audio_set_connection_state_changed_cb. A failure is logged; the service
    // then connects phones, but is never told whether that succeeded.
    AudioConnectionListener(bt_audio_connection_state_changed_cb callback, void* userData) {
        const int result = bt_audio_set_connection_state_changed_cb(callback, userData);
        if (result != BT_ERROR_NONE) {
            BTLOG_ERROR("fail to listen to audio connections : %d", result);
        }
    }
    ~AudioConnectionListener() { bt_audio_unset_connection_state_changed_cb(); }
    AudioConnectionListener(const AudioConnectionListener&) = delete;
    AudioConnectionListener& operator=(const AudioConnectionListener&) = delete;
};
