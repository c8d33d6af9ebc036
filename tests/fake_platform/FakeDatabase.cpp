// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "common/CHandle.h"
#include "platform/database.h"
#include "tests/fake_platform/FakeState.h"

extern "C" {

// The file is a real one: what is kept is the file's, and so are the faults. Folders are not made.
int db_util_open(const char* path, sqlite3** db, int option) {
    FAKE_QUERY_ANYWHERE(path, option);
    FAKE_REFUSE_IF(
        path == nullptr || *path == '\0' || db == nullptr || option != DB_UTIL_REGISTER_HOOK_METHOD,
        SQLITE_MISUSE);
    SqlitePtr connection;
    const int code = sqlite3_open(path, Out(connection));
    if (code == SQLITE_OK) {
        *db = connection.release();
    }
    return code;
}

}  // extern "C"
