// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/device_power.h"

#include <cerrno>

#include "common/Source.h"
#include "platform/linux/config/PlatformState.h"

namespace {

using Platform::ConfigStore;
using Platform::GetState;
using Platform::SetState;

// There while the lock is held, with the time that it was asked for.
constexpr char kStandbyLock[] = "standby_lock_ms";

// The end of a lock that has one.
Timer& LockEnd() {
    static Timer timer;
    return timer;
}

int ForgetLock() {
    return IsFailure(ConfigStore::Instance().Unset(Platform::StateKey(kStandbyLock))) ? -1 : 0;
}

}  // namespace

int device_power_get_wakeup_reason() {
    return GetState("wakeup_reason");
}

int device_power_set_wakeup_reason(int reason) {
    return SetState("wakeup_reason", reason);
}

int device_power_get_state() {
    return GetState("power_state");
}

int device_power_set_state(power_state_e state, int option) {
    const int result = SetState("power_state_option", option);
    return result == 0 ? SetState("power_state", state) : result;
}

int device_power_request_poweroff(int kind) {
    return SetState("poweroff_request", kind);
}

int device_power_get_ambient_type() {
    return GetState("ambient_type");
}

int device_power_get_ambient_mode() {
    return GetState("ambient_mode");
}

int device_power_lock_state(power_lock_e lock, int timeout_ms) {
    if (lock != POWER_LOCK_STANDBY || timeout_ms < 0) {
        return -EINVAL;
    }
    if (SetState(kStandbyLock, timeout_ms) != 0) {
        return -EIO;
    }
    LockEnd().Cancel();
    if (timeout_ms > 0) {
        LockEnd() = Timer::Once(timeout_ms, [] { ForgetLock(); });
    }
    return 0;
}

int device_power_unlock_state(power_lock_e lock) {
    if (lock != POWER_LOCK_STANDBY) {
        return -EINVAL;
    }
    LockEnd().Cancel();
    return ForgetLock() == 0 ? 0 : -EIO;
}
