/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_PACKAGE_H
#define PLATFORM_PACKAGE_H

#include <stdbool.h>

/* The platform's package information. 0 on success, negative on failure. Any thread; the questions
 * ask the platform and wait for its answer, at most some 2 s. */

#ifdef __cplusplus
extern "C" {
#endif

typedef struct package_info_s* package_info_h;

/* What is known of an installed package, owned by the caller, to be released with
 * package_info_destroy; fails, *info untouched, when it is not installed. */
int package_info_create(const char* package_id, package_info_h* info);
int package_info_destroy(package_info_h info);

/* *updating: whether the package of the application is being updated now; untouched on failure. An
 * application that is not installed fails. */
int aul_extension_app_pkg_is_updating(const char* app_id, bool* updating);

#ifdef __cplusplus
}
#endif

#endif
