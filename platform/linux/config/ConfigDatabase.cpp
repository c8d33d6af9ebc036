// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/ConfigDatabase.h"

#include <chrono>
#include <utility>

#include "platform/linux/base/SqliteConnection.h"

namespace Platform {

namespace {

// One clock may be behind another's; what lies further ahead was not made by a clock.
constexpr int64_t kMaxAheadUs = 366LL * 24 * 3600 * 1000000;
// Of a key with its value. The list of ten thousand phones takes half of it; what is larger would
// keep the main loop from its work.
constexpr int kMaxEntryBytes = 1 << 20;

// Version 1, the first. A revision comes from `sequence` and not from the row, so that a key that
// is unset and written again does not get one that a watcher has seen.
constexpr char kSchema[] =
    "CREATE TABLE IF NOT EXISTS entries("
    "  key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value, revision INTEGER NOT NULL);"
    "CREATE TABLE IF NOT EXISTS sequence("
    "  id INTEGER PRIMARY KEY CHECK(id = 1), revision INTEGER NOT NULL);"
    "INSERT OR IGNORE INTO sequence VALUES(1, 0);"
    "PRAGMA user_version = 1";

// What the type column holds, in the order of ConfigType.
constexpr const char* kTypeNames[] = {"string", "bool", "int"};

std::string ColumnText(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const auto size = static_cast<size_t>(sqlite3_column_bytes(statement, column));
    return text != nullptr ? std::string(text, size) : std::string();
}

// The value in two neighbouring columns, type and value. A type written by hand that is none of
// ours gives a string, so that it can at least be looked at.
ConfigValue ColumnValue(sqlite3_stmt* statement, int column) {
    ConfigValue value;
    const std::string typeName = ColumnText(statement, column);
    for (const ConfigType type : {ConfigType::kBool, ConfigType::kInt}) {
        if (typeName == kTypeNames[static_cast<int>(type)]) {
            value.type = type;
        }
    }
    if (value.type == ConfigType::kString) {
        value.text = ColumnText(statement, column + 1);
    } else {
        value.number = sqlite3_column_int(statement, column + 1);
    }
    return value;
}

// `text` must outlive the use of the statement.
int BindText(sqlite3_stmt* statement, int index, const std::string& text) {
    return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC,
                               SQLITE_UTF8);
}

// A cached statement in use: ready for the next use however this one ends. One that is not reset
// would keep its lock on the file.
class StatementUse {
public:
    explicit StatementUse(sqlite3_stmt* statement) : m_statement(statement) {}
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    ~StatementUse() {
        sqlite3_reset(m_statement);
        sqlite3_stmt_status(m_statement, SQLITE_STMTSTATUS_VM_STEP, 1);
        sqlite3_clear_bindings(m_statement);
    }

private:
    sqlite3_stmt* m_statement;  // not owned
};

int64_t NowUs() {
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace

ConfigDatabase::Transaction::Transaction(ConfigDatabase& database)
    : m_database(database),
      m_begun(database.Execute("BEGIN IMMEDIATE")),
      m_isOpen(m_begun == SQLITE_OK) {
    if (m_isOpen && !database.m_hasSchema) {
        m_begun = database.Execute(kSchema);
    }
}

ConfigDatabase::Transaction::~Transaction() {
    if (m_isOpen) {
        m_database.Execute("ROLLBACK");
    }
}

int ConfigDatabase::Transaction::Commit() {
    const int code = m_database.Execute("COMMIT");
    if (code == SQLITE_OK) {
        m_isOpen = false;
        m_database.m_hasSchema = true;
    }
    return code;
}

int ConfigDatabase::Open(const std::string& path, bool create, bool durable) {
    int code = OpenSqlite(path, create, m_handle);
    if (code != SQLITE_OK) {
        return code;
    }
    sqlite3_limit(m_handle.get(), SQLITE_LIMIT_LENGTH, kMaxEntryBytes);
    code = Execute(durable ? "PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = FULL"
                           : "PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = OFF");
    if (code != SQLITE_OK) {
        return code;
    }
    int moved = 0;
    const bool isKnown =
        stat(path.c_str(), &m_identity) == 0 &&
        sqlite3_file_control(m_handle.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK;
    if (!isKnown || moved != 0) {
        // Replaced since it was opened: good for the access that is under way, not for another.
        m_identity = {};
    }
    return SQLITE_OK;
}

bool ConfigDatabase::IsCurrent(const struct stat& now, bool forWriting) const {
    // A file that could not be written when it was opened may be writable by now.
    return now.st_dev == m_identity.st_dev && now.st_ino == m_identity.st_ino &&
           !(forWriting && sqlite3_db_readonly(m_handle.get(), "main") == 1);
}

int ConfigDatabase::Execute(const char* sql) {
    return sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, nullptr);
}

int ConfigDatabase::Prepare(StatementPtr& slot, const char* sql) {
    if (slot != nullptr) {
        return SQLITE_OK;
    }
    return sqlite3_prepare_v3(m_handle.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, Out(slot),
                              nullptr);
}

int ConfigDatabase::Select(const std::string& key, ConfigLookup& lookup) {
    m_subject = key;
    int code = Prepare(m_select, "SELECT type, value, revision FROM entries WHERE key = ?1");
    if (code != SQLITE_OK) {
        return code;
    }
    sqlite3_stmt* select = m_select.get();
    const StatementUse use(select);
    code = BindText(select, 1, key);
    if (code == SQLITE_OK) {
        code = sqlite3_step(select);
    }
    lookup.status = ConfigStatus::kAbsent;
    if (code == SQLITE_ROW) {
        lookup.status = ConfigStatus::kOk;
        lookup.value = ColumnValue(select, 0);
        lookup.revision = sqlite3_column_int64(select, 2);
    }
    return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

int ConfigDatabase::SelectAll(std::vector<ConfigEntry>& entries) {
    m_subject = "a key";
    int code = Prepare(m_selectKeys, "SELECT key FROM entries ORDER BY key");
    if (code != SQLITE_OK) {
        return code;
    }
    const StatementUse use(m_selectKeys.get());
    while ((code = sqlite3_step(m_selectKeys.get())) == SQLITE_ROW) {
        ConfigLookup lookup;
        const std::string key = ColumnText(m_selectKeys.get(), 0);
        // Each by itself, so that one that is too large can be named.
        code = Select(key, lookup);
        if (code != SQLITE_OK) {
            return code;
        }
        entries.push_back({key, std::move(lookup.value)});
    }
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

int ConfigDatabase::AdvanceSequence() {
    // A number that no clock made, near the largest one above all, would leave no room to rise.
    int code = Prepare(m_advance,
                       "UPDATE sequence SET revision = CASE WHEN typeof(revision) = 'integer' AND "
                       "revision BETWEEN 0 AND ?1 + ?2 THEN max(revision + 1, ?1) ELSE ?1 END");
    if (code != SQLITE_OK) {
        return code;
    }
    sqlite3_stmt* advance = m_advance.get();
    const StatementUse use(advance);
    // The time keeps a file that replaces this one from repeating a revision with another value.
    code = sqlite3_bind_int64(advance, 1, NowUs());
    if (code == SQLITE_OK) {
        code = sqlite3_bind_int64(advance, 2, kMaxAheadUs);
    }
    if (code == SQLITE_OK) {
        code = sqlite3_step(advance);
    }
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

int ConfigDatabase::Write(const std::string& key, const ConfigValue& value) {
    m_subject = key;
    int code = AdvanceSequence();
    if (code == SQLITE_OK) {
        code = Prepare(m_write,
                       "INSERT INTO entries VALUES(?1, ?2, ?3, (SELECT revision FROM sequence)) "
                       "ON CONFLICT(key) DO UPDATE SET type = excluded.type, "
                       "value = excluded.value, revision = excluded.revision");
    }
    if (code != SQLITE_OK) {
        return code;
    }
    sqlite3_stmt* write = m_write.get();
    const StatementUse use(write);
    const char* typeName = kTypeNames[static_cast<int>(value.type)];
    const bool isText = value.type == ConfigType::kString;
    for (const int bound :
         {BindText(write, 1, key), sqlite3_bind_text(write, 2, typeName, -1, SQLITE_STATIC),
          isText ? BindText(write, 3, value.text) : sqlite3_bind_int(write, 3, value.number)}) {
        if (bound != SQLITE_OK) {
            return bound;
        }
    }
    code = sqlite3_step(write);
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

int ConfigDatabase::Delete(const std::string& key, bool& existed) {
    int code = Prepare(m_delete, "DELETE FROM entries WHERE key = ?1");
    if (code != SQLITE_OK) {
        return code;
    }
    const StatementUse use(m_delete.get());
    code = BindText(m_delete.get(), 1, key);
    if (code == SQLITE_OK) {
        code = sqlite3_step(m_delete.get());
    }
    existed = code == SQLITE_DONE && sqlite3_changes(m_handle.get()) > 0;
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

std::string ConfigDatabase::Explain(int code) const {
    return code == SQLITE_TOOBIG ? m_subject + " has more than 1 MiB"
                                 : DescribeSqlite(m_handle.get(), code);
}

}  // namespace Platform
