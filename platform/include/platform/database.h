/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_DATABASE_H
#define PLATFORM_DATABASE_H

#include <sqlite3.h>

/* The platform's way to open an application's database. Any thread; a connection is used by one
 * thread at a time. */

#ifdef __cplusplus
extern "C" {
#endif

/* Registers the platform's collations on the connection, where the platform has any. */
#define DB_UTIL_REGISTER_HOOK_METHOD 1

/* Opens the SQLite file `path` (absolute) for reading and writing and makes it when it is missing;
 * one that may only be read is opened for reading. Whether missing folders above it are made is the
 * platform's choice. `option` is DB_UTIL_REGISTER_HOOK_METHOD.
 *
 * SQLITE_OK, and *db is the caller's, to be released with sqlite3_close; otherwise an SQLite result
 * code (SQLITE_CANTOPEN: the file cannot be opened or made; SQLITE_MISUSE: a NULL or empty
 * argument), and *db is untouched. The content is not looked at: a file that is not a database
 * fails at the first statement. The connection is a durable one: what a statement has committed is
 * in the file when the power goes. */
int db_util_open(const char* path, sqlite3** db, int option);

#ifdef __cplusplus
}
#endif

#endif
