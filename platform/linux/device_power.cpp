// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/device_power.h"

#include <glib.h>

#include <cerrno>

#include "platform/linux/base/Handles.h"
#include "platform/linux/config/PlatformState.h"

namespace {

using Platform::ConfigStore;
using Platform::GetState;
using Platform::MainLoopSource;
using Platform::SetState;

// There while the lock is held, with the time that it was asked for.
constexpr char kStandbyLock[] = "standby_lock_ms";

// The end of a lock that has one.
MainLoopSource& LockEnd() {
    static MainLoopSource source;
    return source;
}

int ForgetLock() {
    return IsFailure(ConfigStore::Instance().Unset(Platform::StateKey(kStandbyLock))) ? -1 : 0;
}

gboolean OnLockEnd(gpointer /*userData*/) noexcept {
    LockEnd().Release();
    ForgetLock();
    return G_SOURCE_REMOVE;
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
    LockEnd() = MainLoopSource();
    if (timeout_ms > 0) {
        LockEnd() =
            MainLoopSource(g_timeout_add(static_cast<guint>(timeout_ms), OnLockEnd, nullptr));
    }
    return 0;
}

int device_power_unlock_state(power_lock_e lock) {
    if (lock != POWER_LOCK_STANDBY) {
        return -EINVAL;
    }
    LockEnd() = MainLoopSource();
    return ForgetLock() == 0 ? 0 : -EIO;
}
