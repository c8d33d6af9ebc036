// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/TvStatusUtil.h"

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/screen_manager.h"
#include "utility/CommonUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/VconfUtil.h"

namespace Util {

namespace {

constexpr int kWifiSpeakerConnecting = -1;
constexpr int kAmbientModePicture = 1;
constexpr int kAmbientModeLowPower = 2;
constexpr int kAmbientTypeArtApp = 1 << 2;
constexpr int kFirstStandbyState = POWER_STATE_BACKGROUND_STANDBY;

// The platform's numbers, passed on as they are.
constexpr int kSetStateOption = 1;
constexpr int kWakeUpReasonRequest = 1;
constexpr int kSuspendMode = 3;
constexpr int kSuspendType = 2;
constexpr int kPowerOffSuspend = 4;

// Whether this process holds the ambient lock.
bool isLpmLocked = false;

int ReadIntKey(int id) {
    int value = 0;
    VconfUtil::GetVconf(id, value);
    return value;
}

// Logs what was read, and returns it.
int LogNumber(const LogPlace& place, const char* name, int number) {
    BTLOG_FOR(place, DLOG_INFO, "%s %d", name, number);
    return number;
}

bool IsLowPowerAmbient(const LogPlace& place) {
    const bool isLowPower = TvStatusUtil::GetPowerState() == POWER_STATE_LOW_POWER &&
                            TvStatusUtil::GetAmbientMode() == kAmbientModeLowPower;
    if (!isLowPower) {
        BTLOG_FOR(place, DLOG_ERROR, "Not LPM mode");
    }
    return isLowPower;
}

}  // namespace

bool TvStatusUtil::isWifiSpeakerConnecting() {
    return ReadIntKey(VCONF_KEY_MEMORY_ACM_NETWORKSPEAKER_STATUS) == kWifiSpeakerConnecting;
}

bool TvStatusUtil::isBluetoothSpeakerSelection(sound_tv_output_route_e route) {
    return route == SOUND_TV_OUTPUT_ROUTE_BLUETOOTH_1 ||
           route == SOUND_TV_OUTPUT_ROUTE_BLUETOOTH_2 || route == SOUND_TV_OUTPUT_ROUTE_BLUETOOTH_3;
}

int TvStatusUtil::GetWifiChannel() {
    return ReadIntKey(VCONF_KEY_MEMORY_WIFI_FREQUENCY);
}

bool TvStatusUtil::GetTvSpeakerMute() {
    bool mute = false;
    sound_manager_get_device_mute(SOUND_DEVICE_TV_SPEAKER, &mute);
    return mute;
}

int TvStatusUtil::GetAmbientType() {
    return LogNumber(BTLOG_HERE, "Current Ambient type :", device_power_get_ambient_type());
}

int TvStatusUtil::GetAmbientMode() {
    return LogNumber(BTLOG_HERE, "Current Ambient Mode :", device_power_get_ambient_mode());
}

int TvStatusUtil::GetPowerState() {
    return LogNumber(BTLOG_HERE, "Power state =", device_power_get_state());
}

void TvStatusUtil::SetPowerState(power_state_e state) {
    const int result = device_power_set_state(state, kSetStateOption);
    BTLOG_INFO("device_power_set_state %d, result :%d", state, result);
}

bool TvStatusUtil::IsValidPowerState() {
    return GetPowerState() < kFirstStandbyState;
}

void TvStatusUtil::PictureOn() {
    if (device_power_get_state() == POWER_STATE_PICTURE_OFF) {
        device_power_set_state(POWER_STATE_NORMAL, kSetStateOption);
    }
}

void TvStatusUtil::SetStandbyPowerLock(int timeout_ms) {
    const int result = device_power_lock_state(POWER_LOCK_STANDBY, timeout_ms);
    if (result != 0) {
        BTLOG_ERROR("power lock state failed -> ret [%s]", CommonUtil::ERR_STR(result));
    }
    BTLOG_INFO("standby lock(timout == %dms) : %d", timeout_ms, result);
}

void TvStatusUtil::UnSetStandbyPowerLock() {
    const int result = device_power_unlock_state(POWER_LOCK_STANDBY);
    if (result != 0) {
        BTLOG_ERROR("power lock state failed -> ret [%s]", CommonUtil::ERR_STR(result));
    }
    BTLOG_INFO("standby unlock : %d", result);
}

bool TvStatusUtil::IsArtAppShowing() {
    if (!SystemConfigUtil::IsLumeoTV()) {
        BTLOG_INFO("Not lumeo TV");
        return false;
    }
    return GetAmbientMode() == kAmbientModePicture && (GetAmbientType() & kAmbientTypeArtApp) != 0;
}

void TvStatusUtil::WakeUpTv(power_state_e from) {
    device_power_set_wakeup_reason(kWakeUpReasonRequest);
    if (from == POWER_STATE_LOW_POWER) {
        BTLOG_ERROR("<Not Error> Go to Normal from Low Power Mode");
        const int wasFullPowerOff =
            ReadIntKey(VCONF_KEY_DB_NIRVO_AMBIENT_MODE_FULL_POWER_OFF_EVENT);
        if (SystemConfigUtil::IsLumeoTV() && !SystemConfigUtil::IsArtModeOnly() &&
            GetAmbientMode() == kAmbientModeLowPower && wasFullPowerOff == 1) {
            BTLOG_INFO("turn on with artmode");
            screen_manager_set_ambient_mode(kAmbientModePicture, kAmbientTypeArtApp);
        } else {
            screen_manager_set_ambient_mode(0, 0);
        }
    } else if (from == POWER_STATE_BACKGROUND_STANDBY) {
        BTLOG_INFO("Go to Normal from BackGround Standby");
        device_power_set_state(POWER_STATE_NORMAL, kSetStateOption);
    }
}

void TvStatusUtil::SleepTv() {
    const int state = device_power_get_state();
    if (state == POWER_STATE_LOW_POWER) {
        BTLOG_ERROR("<Not Error> Go to suspend from Low Power Mode");
        screen_manager_set_ambient_mode(kSuspendMode, kSuspendType);
    } else if (state == POWER_STATE_BACKGROUND_STANDBY) {
        BTLOG_INFO("Go to suspend  from BackGround Standby");
        device_power_request_poweroff(kPowerOffSuspend);
    }
}

void TvStatusUtil::LockLpmPowerState(int timeout) {
    if (!IsLowPowerAmbient(BTLOG_HERE)) {
        return;
    }
    isLpmLocked = screen_manager_set_ambient_lock(1, timeout) == 0;
    BTLOG_ERROR("<Not Error> Lock LPM");
}

void TvStatusUtil::UnlockLpmPowerState() {
    if (!IsLowPowerAmbient(BTLOG_HERE)) {
        return;
    }
    if (!isLpmLocked) {
        BTLOG_ERROR("ambient lock is not called");
        return;
    }
    isLpmLocked = screen_manager_set_ambient_lock(0, 0) != 0;
    BTLOG_ERROR("<Not Error> UnLock LPM");
}

}  // namespace Util
