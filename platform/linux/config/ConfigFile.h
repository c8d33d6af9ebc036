// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/config/ConfigDatabase.h"
#include "platform/linux/config/ConfigValue.h"
#include "platform/linux/config/WriteNotice.h"

namespace Platform {

// One file of typed values, shared by processes. Reading never creates it. The file may be missing,
// damaged, locked or replaced at any time: each access then fails, one log line says so, and
// accesses work again as soon as the file does. Once a read has failed in a turn of the main loop,
// those that follow in that turn fail, too, and after one that gave up waiting the writes. Any
// thread; a call waits about 1 s at most for another process, the reads of one turn of the main
// loop 100 ms, and for the second after a call gave up waiting, others do not wait.
class ConfigFile {
public:
    enum class Kind {
        kDurable,  // an acknowledged write survives a power cut
        kVolatile  // survives the process; lies in memory anyway
    };

    ConfigFile(std::string folder, Kind kind);

    [[nodiscard]] ConfigLookup Lookup(const std::string& key);

    // Stores the value, if it is another one than the key has, and tells the watchers. With
    // `expectedRevision`, only when the key's revision still is that one, kChanged otherwise.
    [[nodiscard]] ConfigStatus Store(const std::string& key, const ConfigValue& value,
                                     std::optional<int64_t> expectedRevision = std::nullopt);

    // Removes the key and tells the watchers; kAbsent when there is nothing to remove.
    [[nodiscard]] ConfigStatus Remove(const std::string& key);

    // All entries in the order of their keys; none when the file does not exist.
    [[nodiscard]] std::optional<std::vector<ConfigEntry>> List();

    // Why the last access failed.
    [[nodiscard]] std::string LastFailure();

    // The file that is opened and closed after each write, for watchers.
    [[nodiscard]] const std::string& NotificationPath() const { return m_notice.Path(); }
    // A number that each write of the key makes another one, of the value that it has too; `lookup`
    // is what the key holds.
    [[nodiscard]] std::uint64_t WriteMark(const ConfigLookup& lookup) const;

private:
    enum class Access { kRead, kWrite };

    ConfigStatus Read(const std::string& key, ConfigLookup& lookup);
    [[nodiscard]] ConfigStatus Open(Access access);
    [[nodiscard]] ConfigStatus OpenDatabase(Access access);
    void YieldToOtherWriters();
    // Whether the key has the value already, which is then told like a write.
    bool IsRepeated(const std::string& key, const ConfigValue& value,
                    std::optional<int64_t> expectedRevision);
    // What a write gave: commits and tells the watchers, or reports the fault.
    ConfigStatus Finish(ConfigDatabase::Transaction& transaction, int code, bool changed);
    // Report a fault and give the status that stands for it.
    ConfigStatus FailSqlite(Access access, int code);
    ConfigStatus Fail(Access access, const std::string& reason);
    void EndFault(Access access);

    const std::string m_folder;
    const std::string m_path;
    const Kind m_kind;
    WriteNotice m_notice;

    std::mutex m_mutex;
    std::unique_ptr<ConfigDatabase> m_database;
    bool m_isStale = false;  // to be opened again by the next access
    bool m_wasThere = false;
    std::optional<int64_t> m_failedTurn;  // of the main loop, in which a read failed
    ConfigStatus m_failedStatus = ConfigStatus::kFailed;
    std::chrono::steady_clock::time_point m_lastWrite;
    std::chrono::steady_clock::time_point m_burstStart;  // of writes without a pause
    FaultLog m_readFault;
    FaultLog m_writeFault;
    std::string m_lastFailure;
};

}  // namespace Platform
