// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/CHandle.h"
#include "platform/linux/config/ConfigValue.h"

namespace Platform {

// An open database of typed values and its statements. Operations give SQLite's result codes; what
// to do about a failure is for the owner to decide. One thread at a time.
class ConfigDatabase {
public:
    // Rolls back unless it was committed.
    class Transaction {
    public:
        explicit Transaction(ConfigDatabase& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        [[nodiscard]] int Begun() const { return m_begun; }
        [[nodiscard]] int Commit();

    private:
        ConfigDatabase& m_database;
        int m_begun;
        bool m_isOpen;
    };

    // Opens the file, with `create` making it. `durable`: what was committed survives a power cut.
    [[nodiscard]] int Open(const std::string& path, bool create, bool durable);

    // Whether this is still the file that `now` describes and can be written if `forWriting`.
    [[nodiscard]] bool IsCurrent(const struct stat& now, bool forWriting) const;

    // SQLITE_OK with kOk or kAbsent in the lookup; SQLITE_TOOBIG for an entry of more than 1 MiB.
    [[nodiscard]] int Select(const std::string& key, ConfigLookup& lookup);
    [[nodiscard]] int SelectAll(std::vector<ConfigEntry>& entries);

    // Within a transaction.
    [[nodiscard]] int Write(const std::string& key, const ConfigValue& value);
    [[nodiscard]] int Delete(const std::string& key, bool& existed);

    // What a result code means, with the system's reason where there is one.
    [[nodiscard]] std::string Explain(int code) const;

private:
    int Begin();
    int Execute(const char* sql);
    int AdvanceSequence();

    SqlitePtr m_handle;
    struct stat m_identity = {};  // of the file that is open
    bool m_isDurable = true;
    bool m_isReadyToWrite = false;
    bool m_hasSchema = false;
    std::string m_subject;  // the key that is being read or written
    StatementPtr m_select;
    StatementPtr m_selectKeys;
    StatementPtr m_advance;
    StatementPtr m_write;
    StatementPtr m_delete;
};

}  // namespace Platform
