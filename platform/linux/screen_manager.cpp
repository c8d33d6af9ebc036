// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/screen_manager.h"

#include <cerrno>

#include "platform/linux/config/PlatformState.h"

int screen_manager_set_ambient_mode(int mode, int type) {
    const int result = Platform::SetState("ambient_type", type);
    return result == 0 ? Platform::SetState("ambient_mode", mode) : result;
}

int screen_manager_set_ambient_lock(int lock, int timeout) {
    if (lock != 0 && lock != 1) {
        return -EINVAL;
    }
    const int result = Platform::SetState("ambient_lock_timeout", timeout);
    return result == 0 ? Platform::SetState("ambient_lock", lock) : result;
}
