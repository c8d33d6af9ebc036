// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/database.h"

#include "common/CHandle.h"
#include "platform/linux/Folders.h"

namespace {

// How long a statement waits for another process that holds the file.
constexpr int kBusyTimeoutMs = 1000;

}  // namespace

// There are no collations to register on this host.
int db_util_open(const char* path, sqlite3** db, int option) {
    if (path == nullptr || *path == '\0' || db == nullptr ||
        option != DB_UTIL_REGISTER_HOOK_METHOD) {
        return SQLITE_MISUSE;
    }
    // A package's installation makes its folders on a TV; here nothing else does.
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    if (!Platform::MakeFolders(folder)) {
        return SQLITE_CANTOPEN;
    }
    Platform::MakeSharedFile(path);
    SqlitePtr connection;
    const int code =
        sqlite3_open_v2(path, Out(connection),
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX |
                            (Platform::IsShared(folder) ? SQLITE_OPEN_NOFOLLOW : 0),
                        nullptr);
    if (code != SQLITE_OK) {
        return code;
    }
    sqlite3_busy_timeout(connection.get(), kBusyTimeoutMs);
    // By default the folder is not stored after the journal was removed, so that a power cut may
    // bring the journal back and roll back what was committed.
    sqlite3_exec(connection.get(), "PRAGMA synchronous = EXTRA", nullptr, nullptr, nullptr);
    *db = connection.release();
    return SQLITE_OK;
}
