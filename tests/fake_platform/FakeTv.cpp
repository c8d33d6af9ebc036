// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/device_power.h"
#include "platform/screen_manager.h"
#include "platform/sound_manager.h"
#include "platform/system_info.h"
#include "tests/fake_platform/FakeState.h"

using Fake::Command;
using Fake::TheWorld;

extern "C" {

int device_power_get_wakeup_reason(void) {
    return TheWorld().wakeUpReason;
}

int device_power_set_wakeup_reason(int reason) {
    TheWorld().wakeUpReason = reason;
    return Command(__func__, reason);
}

int device_power_get_state(void) {
    return TheWorld().powerState;
}

int device_power_set_state(power_state_e state, int option) {
    FAKE_COMMAND(state, option);
    TheWorld().powerState = state;
    return 0;
}

int device_power_request_poweroff(int kind) {
    return Command(__func__, kind);
}

int device_power_get_ambient_type(void) {
    return TheWorld().ambientType;
}

int device_power_get_ambient_mode(void) {
    return TheWorld().ambientMode;
}

int device_power_lock_state(power_lock_e lock, int timeout_ms) {
    return Command(__func__, lock, timeout_ms);
}

int device_power_unlock_state(power_lock_e lock) {
    return Command(__func__, lock);
}

int screen_manager_set_ambient_mode(int mode, int type) {
    TheWorld().ambientMode = mode;
    TheWorld().ambientType = type;
    return Command(__func__, mode, type);
}

int screen_manager_set_ambient_lock(int lock, int timeout) {
    return Command(__func__, lock, timeout);
}

int sound_manager_set_tv_master_mute(bool mute) {
    return Command(__func__, mute);
}

int sound_manager_set_device_mute(sound_tv_device_e device, bool mute) {
    TheWorld().speakerMuted = mute;
    return Command(__func__, device, mute);
}

int sound_manager_get_device_mute(sound_tv_device_e device, bool* mute) {
    FAKE_QUERY(device);
    *mute = TheWorld().speakerMuted;
    return 0;
}

int system_info_get_custom_bool(const char* key, bool* value) {
    FAKE_QUERY_ANYWHERE(key);
    return Fake::Read<bool>(TheWorld().features, key, value);
}

int system_info_get_custom_int(const char* key, int* value) {
    FAKE_QUERY_ANYWHERE(key);
    return Fake::Read<int>(TheWorld().features, key, value);
}

int system_info_get_value_int(system_info_key_e key, int* value) {
    FAKE_QUERY_ANYWHERE(key);
    FAKE_REFUSE_IF(key != SYSTEM_INFO_KEY_IR_KEY_CODE || !TheWorld().irKeyCode, -1);
    *value = *TheWorld().irKeyCode;
    return 0;
}

}  // extern "C"
