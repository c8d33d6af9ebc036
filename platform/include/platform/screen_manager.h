/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_SCREEN_MANAGER_H
#define PLATFORM_SCREEN_MANAGER_H

/* The platform's screen manager. Each function returns 0 on success and a negative value on
 * failure. Main loop's thread only. */

#ifdef __cplusplus
extern "C" {
#endif

/* Asks for an ambient mode with an ambient type; both numbers are the platform's. */
int screen_manager_set_ambient_mode(int mode, int type);

/* Locks (`lock` 1) or unlocks (0) the ambient low-power mode; `timeout` bounds the lock, 0 for an
 * unlock. */
int screen_manager_set_ambient_lock(int lock, int timeout);

#ifdef __cplusplus
}
#endif

#endif
