/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_EVENT_WAIT_H
#define PLATFORM_EVENT_WAIT_H

/* The platform's lightweight events between processes. */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Waits until the event named by the absolute path `path` is raised, or `timeout_ms` milliseconds
 * (0 or more) have passed. An event that was raised before and not withdrawn counts: the wait
 * returns at once. Blocks the calling thread; any thread but the main loop's.
 * Returns 0 when the event was raised, negative on time-out or failure.
 */
int LwipcWaitEvent(const char* path, int timeout_ms);

#ifdef __cplusplus
}
#endif

#endif
