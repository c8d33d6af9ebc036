// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/database.h"

#include <filesystem>

#include "platform/linux/base/Folders.h"
#include "platform/linux/base/SqliteConnection.h"

// There are no collations to register on this host.
int db_util_open(const char* path, sqlite3** db, int option) {
    if (path == nullptr || *path == '\0' || db == nullptr ||
        option != DB_UTIL_REGISTER_HOOK_METHOD) {
        return SQLITE_MISUSE;
    }
    // A package's installation makes its folders on a TV; here nothing else does.
    if (!Platform::MakeFolders(std::filesystem::path(path).parent_path())) {
        return SQLITE_CANTOPEN;
    }
    SqlitePtr connection;
    int code = Platform::OpenSqlite(path, true, connection);
    if (code != SQLITE_OK) {
        return code;
    }
    // By default the folder is not stored after the journal was removed, so that a power cut may
    // bring the journal back and roll back what was committed. The setting needs a look at the
    // file; the first statement reports one that is not a database.
    code = sqlite3_exec(connection.get(), "PRAGMA synchronous = EXTRA", nullptr, nullptr, nullptr);
    if (code != SQLITE_OK && code != SQLITE_NOTADB && (code & 0xFF) != SQLITE_CORRUPT) {
        return code;
    }
    *db = connection.release();
    return SQLITE_OK;
}
