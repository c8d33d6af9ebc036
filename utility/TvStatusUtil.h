// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/device_power.h"
#include "platform/sound_manager.h"

namespace Util {

// The TV's power state, ambient mode, wake-up reason and mutes. Platform results are logged where
// that helps and otherwise ignored. Main loop's thread only.
class TvStatusUtil {
public:
    static bool isWifiSpeakerConnecting();
    // Whether the route leads to a Bluetooth speaker.
    static bool isBluetoothSpeakerSelection(sound_tv_output_route_e route);
    // The channel frequency as the network service reports it; 0 when unknown.
    static int GetWifiChannel();

    // Why the TV woke, as the platform's number.
    static int GetDeviceWakeUpReason() { return device_power_get_wakeup_reason(); }
    // Each returns the platform's result, 0 on success.
    static int SetMasterMute(bool mute) { return sound_manager_set_tv_master_mute(mute); }
    static int SetTvSpeakerMute(bool mute) {
        return sound_manager_set_device_mute(SOUND_DEVICE_TV_SPEAKER, mute);
    }
    // False when unknown.
    static bool GetTvSpeakerMute();

    // The ambient type's bits, the ambient mode and the power state (power_state_e).
    static int GetAmbientType();
    static int GetAmbientMode();
    static int GetPowerState();
    static void SetPowerState(power_state_e state);
    // Whether the TV is in use, with or without a picture.
    static bool IsValidPowerState();
    // Switches the picture on when it is off in a TV that is in use.
    static void PictureOn();

    // The first keeps the TV from going below standby for `timeout_ms` milliseconds (0: until
    // unlocked); the second ends that.
    static void SetStandbyPowerLock(int timeout_ms);
    static void UnSetStandbyPowerLock();

    // Whether the art application shows on a TV of the `Lumeo` line.
    static bool IsArtAppShowing();
    // Wakes the TV from low-power mode or background standby; sets the wake-up reason in any case.
    static void WakeUpTv(power_state_e from);
    // Sends the TV from low-power mode or background standby to suspend.
    static void SleepTv();

    // Holds the TV in ambient low-power mode, and releases it; refused in any other state.
    // `timeout` is the platform's.
    static void LockLpmPowerState(int timeout);
    static void UnlockLpmPowerState();
};

}  // namespace Util
