/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_DEVICE_POWER_H
#define PLATFORM_DEVICE_POWER_H

/*
 * The platform's power control. Functions that change something return 0 on success and a negative
 * value on failure. Main loop's thread only.
 */

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    POWER_STATE_NORMAL = 0,             /* picture on */
    POWER_STATE_PICTURE_OFF = 1,        /* in use, picture off */
    POWER_STATE_BACKGROUND_STANDBY = 2, /* looks off, software runs */
    POWER_STATE_LOW_POWER = 4           /* low-power mode, ambient picture possible */
} power_state_e;

/* Kinds of power lock. */
typedef enum { POWER_LOCK_STANDBY = 2 } power_lock_e;

/* Why the TV woke: a number of the platform's, 0 when nothing is known. */
int device_power_get_wakeup_reason(void);
int device_power_set_wakeup_reason(int reason);

/* The power state (power_state_e), 0 when nothing is known. */
int device_power_get_state(void);
/* Asks for a power state; `option` is the platform's and is passed on as it is. */
int device_power_set_state(power_state_e state, int option);

/* Asks for a power-off of the given kind; the number is the platform's. */
int device_power_request_poweroff(int kind);

/* The ambient type, a bit set (bit 0 general, bit 2 the art application shows), and the ambient
 * mode (1 ambient picture, 2 ambient low-power mode); 0 when nothing is known. */
int device_power_get_ambient_type(void);
int device_power_get_ambient_mode(void);

/* Keeps the TV from going below the lock's state for `timeout_ms` milliseconds (0: until unlocked).
 * A second lock of the kind replaces the first. */
int device_power_lock_state(power_lock_e lock, int timeout_ms);
int device_power_unlock_state(power_lock_e lock);

#ifdef __cplusplus
}
#endif

#endif
