/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_SYSTEM_LOG_H
#define PLATFORM_SYSTEM_LOG_H

/*
 * The platform's system log. Safe to call from any thread and before main: the first lines are
 * written by static initialisers.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* Log buffers; this package writes only to the main one. */
typedef enum { LOG_ID_MAIN = 0 } log_id_t;

/* Priorities, in rising order of urgency. */
typedef enum { DLOG_DEBUG = 3, DLOG_INFO = 4, DLOG_WARN = 5, DLOG_ERROR = 6 } log_priority;

/*
 * Writes one line. `priority` is one of log_priority, `tag` names the writing component, `format`
 * and its arguments are printf's; the text has no newline at its end.
 * Returns the number of bytes written or a negative value; callers ignore it.
 */
int __dlog_print(log_id_t buffer, int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif

#endif
