// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/ConfigDatabase.h"

#include <glib.h>

#include <utility>

#include "platform/linux/base/SqliteConnection.h"

namespace Platform {

namespace {

// Clocks differ; a number further ahead than this does not come from a clock.
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

std::string ColumnText(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const auto size = static_cast<size_t>(sqlite3_column_bytes(statement, column));
    return text != nullptr ? std::string(text, size) : std::string();
}

// The value in two neighbouring columns, type and value. A type written by hand that is none of
// ours gives a string, so that it can at least be looked at.
ConfigValue ColumnValue(sqlite3_stmt* statement, int column) {
    ConfigValue value;
    value.type = TypeNamed(ColumnText(statement, column)).value_or(ConfigType::kString);
    if (value.type == ConfigType::kString) {
        value.text = ColumnText(statement, column + 1);
    } else {
        value.number = sqlite3_column_int(statement, column + 1);
    }
    return value;
}

// A cached statement in use: prepared for the first use, and ready for the next one however this
// one ends. One that is not reset would keep its lock on the file. The first failure sticks.
class StatementUse {
public:
    StatementUse(sqlite3* connection, StatementPtr& slot, const char* sql) {
        if (slot == nullptr) {
            m_code = sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, Out(slot),
                                        nullptr);
        }
        m_statement = slot.get();
    }
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    ~StatementUse() {
        if (m_statement == nullptr) {
            return;
        }
        sqlite3_reset(m_statement);
        sqlite3_stmt_status(m_statement, SQLITE_STMTSTATUS_VM_STEP, 1);
        sqlite3_clear_bindings(m_statement);
    }

    // `text` must outlive the use.
    StatementUse& Bind(int index, const std::string& text) {
        return Note(sqlite3_bind_text64(m_statement, index, text.data(), text.size(), SQLITE_STATIC,
                                        SQLITE_UTF8));
    }
    StatementUse& Bind(int index, int64_t number) {
        return Note(sqlite3_bind_int64(m_statement, index, number));
    }
    // Whether there is a row, or another one.
    bool Step() {
        const int code = m_code == SQLITE_OK ? sqlite3_step(m_statement) : m_code;
        Note(code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code);
        return code == SQLITE_ROW;
    }
    // Runs one that has no rows.
    int Run() {
        Step();
        return m_code;
    }
    [[nodiscard]] int Code() const { return m_code; }

private:
    StatementUse& Note(int code) {
        m_code = m_code == SQLITE_OK ? code : m_code;
        return *this;
    }

    sqlite3_stmt* m_statement = nullptr;  // not owned
    int m_code = SQLITE_OK;
};

}  // namespace

ConfigDatabase::Transaction::Transaction(ConfigDatabase& database)
    : m_database(database), m_begun(database.Begin()), m_isOpen(m_begun == SQLITE_OK) {
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

// Who only reads needs no journal.
int ConfigDatabase::Begin() {
    if (!m_isReadyToWrite) {
        const int code =
            Execute(m_isDurable ? "PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = FULL"
                                : "PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = OFF");
        if (code != SQLITE_OK) {
            return code;
        }
        m_isReadyToWrite = true;
    }
    return Execute("BEGIN IMMEDIATE");
}

int ConfigDatabase::Open(const std::string& path, bool create, bool durable) {
    const int code = OpenSqlite(path, create, m_handle);
    if (code != SQLITE_OK) {
        return code;
    }
    sqlite3_limit(m_handle.get(), SQLITE_LIMIT_LENGTH, kMaxEntryBytes);
    m_isDurable = durable;
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

int ConfigDatabase::Select(const std::string& key, ConfigLookup& lookup) {
    m_subject = key;
    StatementUse select(m_handle.get(), m_select,
                        "SELECT type, value, revision, rowid FROM entries WHERE key = ?1");
    lookup.status = ConfigStatus::kAbsent;
    if (select.Bind(1, key).Step()) {
        lookup.status = ConfigStatus::kOk;
        lookup.value = ColumnValue(m_select.get(), 0);
        lookup.revision = sqlite3_column_int64(m_select.get(), 2);
        lookup.row = sqlite3_column_int64(m_select.get(), 3);
    }
    return select.Code();
}

int ConfigDatabase::SelectAll(std::vector<ConfigEntry>& entries) {
    m_subject = "a key";
    StatementUse select(m_handle.get(), m_selectKeys, "SELECT key FROM entries ORDER BY key");
    while (select.Step()) {
        ConfigLookup lookup;
        const std::string key = ColumnText(m_selectKeys.get(), 0);
        // Each by itself, so that one that is too large can be named.
        const int code = Select(key, lookup);
        if (code != SQLITE_OK) {
            return code;
        }
        entries.push_back({key, std::move(lookup.value)});
    }
    return select.Code();
}

int ConfigDatabase::AdvanceSequence() {
    // A number that no clock made, near the largest one above all, would leave no room to rise.
    // The time keeps a file that replaces this one from repeating a revision with another value.
    return StatementUse(m_handle.get(), m_advance,
                        "UPDATE sequence SET revision = CASE WHEN typeof(revision) = 'integer' AND "
                        "revision BETWEEN 0 AND ?1 + ?2 THEN max(revision + 1, ?1) ELSE ?1 END")
        .Bind(1, g_get_real_time())
        .Bind(2, kMaxAheadUs)
        .Run();
}

int ConfigDatabase::Write(const std::string& key, const ConfigValue& value) {
    m_subject = key;
    const int code = AdvanceSequence();
    if (code != SQLITE_OK) {
        return code;
    }
    const std::string typeName = NameOf(value.type);
    StatementUse write(m_handle.get(), m_write,
                       "INSERT INTO entries VALUES(?1, ?2, ?3, (SELECT revision FROM sequence)) "
                       "ON CONFLICT(key) DO UPDATE SET type = excluded.type, "
                       "value = excluded.value, revision = excluded.revision");
    write.Bind(1, key).Bind(2, typeName);
    const bool isText = value.type == ConfigType::kString;
    return (isText ? write.Bind(3, value.text) : write.Bind(3, value.number)).Run();
}

int ConfigDatabase::Delete(const std::string& key, bool& existed) {
    const int code = StatementUse(m_handle.get(), m_delete, "DELETE FROM entries WHERE key = ?1")
                         .Bind(1, key)
                         .Run();
    existed = code == SQLITE_OK && sqlite3_changes(m_handle.get()) > 0;
    return code;
}

std::string ConfigDatabase::Explain(int code) const {
    return code == SQLITE_TOOBIG ? m_subject + " has more than 1 MiB"
                                 : DescribeSqlite(m_handle.get(), code);
}

}  // namespace Platform
