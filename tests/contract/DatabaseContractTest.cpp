// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>

#include "common/CHandle.h"
#include "platform/config_store.h"
#include "platform/database.h"
#include "tests/contract/World.h"

static std::atomic<int> syncs = 0;  // what was asked to be on the disk

// In the place of the C library's, for SQLite too.
extern "C" int fsync(int fd) {
    ++syncs;
    return static_cast<int>(syscall(SYS_fsync, fd));
}
extern "C" int fdatasync(int fildes) {
    return fsync(fildes);
}

namespace {

int Sql(const SqlitePtr& connection, const char* sql) {
    return sqlite3_exec(connection.get(), sql, nullptr, nullptr, nullptr);
}

class DatabaseContractTest : public testing::Test {
protected:
    ~DatabaseContractTest() override { std::filesystem::remove_all(m_folder); }

    std::string m_folder = testing::TempDir() + "database-contract-XXXXXX";
    const std::string m_file = std::string(mkdtemp(m_folder.data())) + "/file.db";
};

TEST_F(DatabaseContractTest, WaitsOnceForAFileThatIsHeldAndStoresDurably) {
    SqlitePtr holder;
    ASSERT_EQ(sqlite3_open(m_file.c_str(), Out(holder)), SQLITE_OK);
    ASSERT_EQ(Sql(holder, "CREATE TABLE t(x); BEGIN EXCLUSIVE"), SQLITE_OK);
    SqlitePtr own;
    auto insertion = std::async(std::launch::async, [&] {
        const int code = db_util_open(m_file.c_str(), Out(own), DB_UTIL_REGISTER_HOOK_METHOD);
        return code == SQLITE_OK ? Sql(own, "INSERT INTO t VALUES(1)") : code;
    });
    insertion.wait_for(std::chrono::milliseconds(100));  // it is waiting, on most machines
    ASSERT_EQ(Sql(holder, "COMMIT"), SQLITE_OK);
    EXPECT_EQ(insertion.get(), SQLITE_OK);
    StatementPtr setting;
    ASSERT_EQ(sqlite3_prepare_v2(own.get(), "PRAGMA synchronous", -1, Out(setting), nullptr),
              SQLITE_OK);
    ASSERT_EQ(sqlite3_step(setting.get()), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(setting.get(), 0), 3) << "EXTRA";

    ASSERT_EQ(Sql(holder, "BEGIN EXCLUSIVE"), SQLITE_OK);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(db_util_open(m_file.c_str(), Out(own), 1), SQLITE_BUSY);
    }
    // Twenty waits would take twenty seconds; a machine that is busy gets ten for one.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(DatabaseContractTest, KeysThatPersistAreOnTheDiskWhenTheyAreWritten) {
    const auto world = MakeWorld();
    for (const std::string key : {"db/contract/durable", "memory/contract/volatile"}) {
        EXPECT_EQ(vconf_set_int(key.c_str(), 1), 0);
        syncs = 0;
        EXPECT_EQ(vconf_set_int(key.c_str(), 2), 0);
        EXPECT_EQ(syncs > 0, key[0] == 'd') << key;
        syncs = 0;
        EXPECT_EQ(vconf_set_int(key.c_str(), 2), 0);
        EXPECT_EQ(syncs, 0) << key << " has the value";
    }
}

// Where a group may make links, root or the service would follow them to files of others.
TEST_F(DatabaseContractTest, FollowsNoLinkThatAGroupMayHaveMade) {
    namespace fs = std::filesystem;
    const std::string shared = m_folder + "/shared";
    fs::create_directories(shared);
    fs::permissions(shared, fs::perms::owner_all | fs::perms::group_all | fs::perms::set_gid);
    fs::create_directory(m_folder + "/target");
    fs::create_symlink(m_folder + "/target", shared + "/folder");
    fs::create_symlink(m_file, shared + "/file.db");
    SqlitePtr connection;
    for (const char* name : {"/folder/new/file.db", "/file.db"}) {
        EXPECT_EQ(db_util_open((shared + name).c_str(), Out(connection), 1) & 0xFF, SQLITE_CANTOPEN)
            << name;
        EXPECT_FALSE(connection) << name;
    }
    EXPECT_TRUE(fs::is_empty(m_folder + "/target"));
    EXPECT_FALSE(fs::exists(m_file));
}

TEST_F(DatabaseContractTest, InterruptsAStatementThatDoesNotEnd) {
    SqlitePtr connection;
    ASSERT_EQ(db_util_open(m_file.c_str(), Out(connection), 1), SQLITE_OK);
    EXPECT_EQ(Sql(connection,
                  "WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i + 1 FROM n) "
                  "SELECT max(i) FROM n"),
              SQLITE_INTERRUPT);
}

}  // namespace
