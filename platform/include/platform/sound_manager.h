/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_SOUND_MANAGER_H
#define PLATFORM_SOUND_MANAGER_H

#include <stdbool.h>

/* The platform's sound manager. Each function returns 0 on success and a negative value on failure.
 * Main loop's thread only. */

#ifdef __cplusplus
extern "C" {
#endif

/* Where the TV's sound goes; the numbers are the platform's. */
typedef enum {
    SOUND_TV_OUTPUT_ROUTE_BLUETOOTH_1 = 3,
    SOUND_TV_OUTPUT_ROUTE_BLUETOOTH_2 = 5,
    SOUND_TV_OUTPUT_ROUTE_BLUETOOTH_3 = 6
} sound_tv_output_route_e;

/* Output devices that can be muted by themselves. */
typedef enum { SOUND_DEVICE_TV_SPEAKER = 0 } sound_tv_device_e;

/* Mutes or unmutes everything. */
int sound_manager_set_tv_master_mute(bool mute);

/* Mutes or unmutes one device; reads its state into *mute, untouched on failure. A device whose
 * state was never set is not muted. */
int sound_manager_set_device_mute(sound_tv_device_e device, bool mute);
int sound_manager_get_device_mute(sound_tv_device_e device, bool* mute);

#ifdef __cplusplus
}
#endif

#endif
