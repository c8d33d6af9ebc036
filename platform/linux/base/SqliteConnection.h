// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/CHandle.h"

namespace Platform {

// SQLite as this platform opens it: for files in folders that a group writes, whose members are
// trusted with the values in them and with nothing else.
//
// - Only regular files are opened, in a shared folder only those of its owner or its group. Links
//   are followed, except one that somebody put into a folder that others may write.
// - A journal may name another file to be deleted with it; such a file is not touched.
// - In a shared folder root acts as the folder's owner (OwnerIdentity).
// - Views and triggers do nothing, and a statement that does not end is interrupted.
// - A connection waits for a file that another process holds for 1 s at most, and when it gave
//   up, those of the next second fail at once, so that waits do not add up.

// While it lives, this thread waits less: in one turn of the main loop 100 ms at most for all files
// together. For reads; a write that gives up is lost. Outside of the main loop it does nothing.
class ShortPatience {
public:
    ShortPatience();
    ~ShortPatience();
    ShortPatience(const ShortPatience&) = delete;
    ShortPatience& operator=(const ShortPatience&) = delete;
};

// Opens the file for reading and writing; one that may only be read is opened for reading. With
// `create` a missing file is made, for its folder's group where the folder is shared; if the open
// then fails, the file does not stay. An SQLite result code; `connection` is set in any case and
// knows the reason. Any thread; the connection is for one thread at a time.
[[nodiscard]] int OpenSqlite(const std::string& path, bool create, SqlitePtr& connection);

// What a result code of the connection means, with the system's reason where there is one.
// `connection` may be NULL.
[[nodiscard]] std::string DescribeSqlite(sqlite3* connection, int code);

}  // namespace Platform
