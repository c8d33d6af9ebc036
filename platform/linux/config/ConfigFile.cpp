// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/ConfigFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

#include "platform/linux/base/Folders.h"
#include "platform/linux/base/MainLoop.h"
#include "platform/linux/base/SqliteConnection.h"

namespace Platform {

namespace {

using std::chrono::steady_clock;

// Longer than the step in which others ask for a file that is held.
constexpr std::chrono::milliseconds kTurn(3);
// How long the others may find it held by one that writes without a pause.
constexpr std::chrono::milliseconds kLongestBurst(50);

}  // namespace

ConfigFile::ConfigFile(std::string folder, Kind kind)
    : m_folder(std::move(folder)),
      m_path(m_folder + "/config.db"),
      m_kind(kind),
      m_notice(m_folder) {}

ConfigLookup ConfigFile::Lookup(const std::string& key) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ConfigLookup lookup;
    // What is decided in one turn is decided from the same state: a value that could not be read
    // must not count as absent while others were read.
    const auto turn = LoopTurn();
    if (turn && turn == m_failedTurn) {
        lookup.status = m_failedStatus;
        return lookup;
    }
    const ShortPatience patience;
    lookup.status = Read(key, lookup);
    if (IsFailure(lookup.status)) {
        m_failedTurn = turn;
        m_failedStatus = lookup.status;
    }
    return lookup;
}

ConfigStatus ConfigFile::Read(const std::string& key, ConfigLookup& lookup) {
    const ConfigStatus opened = Open(Access::kRead);
    if (opened != ConfigStatus::kOk) {
        return opened;
    }
    const int code = m_database->Select(key, lookup);
    if (code != SQLITE_OK) {
        return FailSqlite(Access::kRead, code);
    }
    EndFault(Access::kRead);
    return lookup.status;
}

ConfigStatus ConfigFile::Store(const std::string& key, const ConfigValue& value,
                               std::optional<int64_t> expectedRevision) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    // What was decided without the value that is there would take its place.
    const auto turn = LoopTurn();
    if (turn && turn == m_failedTurn && m_failedStatus == ConfigStatus::kBusy) {
        return ConfigStatus::kBusy;
    }
    const ConfigStatus opened = Open(Access::kWrite);
    if (opened != ConfigStatus::kOk) {
        return opened;
    }
    if (IsRepeated(key, value, expectedRevision)) {
        EndFault(Access::kRead);
        return ConfigStatus::kOk;
    }
    YieldToOtherWriters();
    ConfigDatabase::Transaction transaction(*m_database);
    int code = transaction.Begun();
    if (code == SQLITE_OK && expectedRevision) {
        ConfigLookup present;
        code = m_database->Select(key, present);
        if (code == SQLITE_OK && present.revision != *expectedRevision) {
            return ConfigStatus::kChanged;
        }
    }
    if (code == SQLITE_OK) {
        code = m_database->Write(key, value);
    }
    return Finish(transaction, code, true);
}

bool ConfigFile::IsRepeated(const std::string& key, const ConfigValue& value,
                            std::optional<int64_t> expectedRevision) {
    ConfigLookup present;
    // What goes wrong here goes wrong in the write, too, if it matters there.
    return m_database->Select(key, present) == SQLITE_OK && present.status == ConfigStatus::kOk &&
           present.value == value &&
           present.revision == expectedRevision.value_or(present.revision) &&
           m_notice.TellRepeated(present.row);
}

std::uint64_t ConfigFile::WriteMark(const ConfigLookup& lookup) const {
    // Neither ever becomes smaller.
    return static_cast<std::uint64_t>(lookup.revision) + m_notice.LastRepeated(lookup.row);
}

ConfigStatus ConfigFile::Remove(const std::string& key) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    struct stat status = {};
    if (stat(m_path.c_str(), &status) != 0 && errno == ENOENT) {
        return ConfigStatus::kNoFile;
    }
    const ConfigStatus opened = Open(Access::kWrite);
    if (opened != ConfigStatus::kOk) {
        return opened;
    }
    ConfigDatabase::Transaction transaction(*m_database);
    bool existed = false;
    int code = transaction.Begun();
    if (code == SQLITE_OK) {
        code = m_database->Delete(key, existed);
    }
    return Finish(transaction, code, existed);
}

ConfigStatus ConfigFile::Finish(ConfigDatabase::Transaction& transaction, int code, bool changed) {
    if (code == SQLITE_OK && !changed) {
        return ConfigStatus::kAbsent;
    }
    if (code == SQLITE_OK) {
        code = transaction.Commit();
    }
    if (code != SQLITE_OK) {
        return FailSqlite(Access::kWrite, code);
    }
    m_lastWrite = steady_clock::now();
    EndFault(Access::kWrite);
    m_notice.TellChanged();
    return ConfigStatus::kOk;
}

std::optional<std::vector<ConfigEntry>> ConfigFile::List() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<ConfigEntry> entries;
    const ConfigStatus opened = Open(Access::kRead);
    if (opened == ConfigStatus::kNoFile) {
        return entries;
    }
    if (opened != ConfigStatus::kOk) {
        return std::nullopt;
    }
    const int code = m_database->SelectAll(entries);
    if (code != SQLITE_OK) {
        FailSqlite(Access::kRead, code);
        return std::nullopt;
    }
    EndFault(Access::kRead);
    return entries;
}

std::string ConfigFile::LastFailure() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastFailure;
}

ConfigStatus ConfigFile::Open(Access access) {
    struct stat now = {};
    const bool forWriting = access == Access::kWrite;
    const bool isFound = stat(m_path.c_str(), &now) == 0;
    const int error = isFound ? ENOENT : errno;
    // An empty one was just made, or its maker did not get to the first key.
    const bool isThere = isFound && (forWriting || now.st_size > 0);
    if (m_database != nullptr &&
        (m_isStale || !isThere || !m_database->IsCurrent(now, forWriting))) {
        m_database.reset();
    }
    if (m_database != nullptr) {
        return ConfigStatus::kOk;
    }
    if (!isThere && (!forWriting || error != ENOENT)) {
        // At boot nobody has written a volatile key yet; that is not a fault.
        if (error != ENOENT || m_kind == Kind::kDurable || m_wasThere) {
            Fail(access, m_path + ": " + std::strerror(error));
        }
        return error == ENOENT && !m_wasThere ? ConfigStatus::kNoFile : ConfigStatus::kFailed;
    }
    if (!isThere && !MakeFolders(m_folder)) {
        return Fail(access, m_folder + ": " + std::strerror(errno));
    }
    return OpenDatabase(access);
}

ConfigStatus ConfigFile::OpenDatabase(Access access) {
    m_database = std::make_unique<ConfigDatabase>();
    m_isStale = false;
    const int code = m_database->Open(m_path, access == Access::kWrite, m_kind == Kind::kDurable);
    if (code != SQLITE_OK) {
        const ConfigStatus failed = FailSqlite(access, code);
        m_database.reset();
        return failed;
    }
    m_wasThere = true;
    return ConfigStatus::kOk;
}

// Nobody hands the file's lock over. One that writes a durable file without a pause holds it nearly
// all the time, and the others would find it held until they give up. On a main loop a pause would
// hold up everything else, and what a command writes is done long before it is the others' turn.
void ConfigFile::YieldToOtherWriters() {
    const auto now = steady_clock::now();
    if (m_kind != Kind::kDurable || now - m_lastWrite >= kTurn) {
        m_burstStart = now;
    } else if (!LoopTurn() || now - m_burstStart >= kLongestBurst) {
        std::this_thread::sleep_for(kTurn);
        m_burstStart = steady_clock::now();
    }
}

ConfigStatus ConfigFile::FailSqlite(Access access, int code) {
    Fail(access, m_path + ": " + m_database->Explain(code));
    if ((code & 0xFF) == SQLITE_BUSY) {
        return ConfigStatus::kBusy;
    }
    if (code == SQLITE_TOOBIG) {
        return ConfigStatus::kTooLarge;
    }
    // Not closed here, for a transaction may still be on it. The next access opens what is there
    // by then: the repaired file, or the one that replaced it.
    m_isStale = true;
    return ConfigStatus::kFailed;
}

ConfigStatus ConfigFile::Fail(Access access, const std::string& reason) {
    m_lastFailure = reason;
    FaultLog& own = access == Access::kRead ? m_readFault : m_writeFault;
    const FaultLog& other = access == Access::kRead ? m_writeFault : m_readFault;
    // A fault that stops reading and writing alike is one fault.
    if (other.Reason() != reason) {
        own.Begin(PLATFORM_HERE, reason);
    }
    return ConfigStatus::kFailed;
}

void ConfigFile::EndFault(Access access) {
    m_lastFailure.clear();
    m_readFault.End();
    if (access == Access::kWrite) {
        m_writeFault.End();
    }
}

}  // namespace Platform
