// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/bluetooth.h"

// Listens to A2DP connections as long as it lives. Main loop's thread only.
class AudioConnectionListener {
public:
    // Arguments as bt_audio_set_connection_state_changed_cb has them. A refusal is logged; the
    // service then connects phones, but never hears whether that succeeded.
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
