/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_SYSTEM_INFO_H
#define PLATFORM_SYSTEM_INFO_H

#include <stdbool.h>

/*
 * The platform's store of product features. Each function returns 0 on success; otherwise (no such
 * key, a value of another type, no store) a negative value, and *value is untouched. Any thread.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* `key` is a path such as "com.velmora/featureconf/display_rotator_supported". */
int system_info_get_custom_bool(const char* key, bool* value);
int system_info_get_custom_int(const char* key, int* value);

/* Values that have a number instead of a path; 1200 is the infrared key code. */
typedef enum { SYSTEM_INFO_KEY_IR_KEY_CODE = 1200 } system_info_key_e;
int system_info_get_value_int(system_info_key_e key, int* value);

#ifdef __cplusplus
}
#endif

#endif
