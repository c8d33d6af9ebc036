// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/unit/PlatformTest.h"
#include "utility/AppDataUtil.h"
#include "utility/BTDatabaseManager.h"

namespace fs = std::filesystem;

namespace {

const std::string kA = "A0:B1:C2:D3:E4:F5";
const std::string kB = "B0:B1:C2:D3:E4:F5";

struct Database : BTDatabaseManager {};

class BTDatabaseTest : public PlatformTest {
protected:
    BTDatabaseTest() { fs::create_directories(m_folder); }
    ~BTDatabaseTest() override { fs::remove_all(Tv::Root() + "/opt"); }

    bool Open() { return m_db.PrepareDatabase() && m_db.OpenDatabase(); }
    bool Insert(const std::string& address, const std::string& name = "Kitchen") {
        return m_db.InsertData(address, name, BT_DEVICE_USE, {}, 1, BT_DEVICE_TYPE_MOUSE, "", "", 0,
                               0);
    }
    static std::string Address(int n) {
        return "00:00:00:00:" + std::to_string(10 + n / 90) + ":" + std::to_string(10 + n % 90);
    }
    // Another program at work on the file.
    void Sql(const std::string& sql) {
        sqlite3_open(m_file.c_str(), Out(m_other));
        EXPECT_EQ(sqlite3_exec(m_other.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sql << ": " << sqlite3_errmsg(m_other.get());
    }
    // Every kind of statement, whatever it answers.
    void AskAndChange() {
        std::string text;
        int number = 0;
        bt_db_dev_info_s record;
        m_db.IsRecordExist(kB);
        m_db.GetDataFromDB(kB, BT_DB_VID, text);
        m_db.GetDataFromDB(kB, BT_DB_USE_TYPE, number);
        m_db.GetRecordFromDB(record, kB);
        m_db.UpdateDataOnDB(kB, BT_DB_REMOTE_NAME, kB);
        m_db.UpdateDataOnDB(kB, BT_DB_PID, 1);
        m_db.DeleteRecord(kB);
        m_db.insertManufacturerData(kB, "x", 1);
        m_db.getManufacturerData(kB, text, number);
        m_db.deleteManufacturerRecord(kB);
        m_db.DeleteVolInfo(kB);
    }

    const std::string m_folder = Util::AppDataUtil::getDataPath();
    const std::string m_file = m_folder + "BT_Connection_record.db";
    SqlitePtr m_other;
    Database m_db;
};

// Each time the reason is logged, nothing crashes, and what was acknowledged before is still there.
TEST_F(BTDatabaseTest, KeepsWhatItAcknowledgedWhateverIsWrongWithTheFile) {
    const auto limit = [](rlim_t size) {
        const rlimit sizes = {size, RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &sizes), 0);
    };
    const auto protect = [this](bool on) {
        // The superuser may write what nobody may.
        ASSERT_TRUE(on || getuid() != 0 || seteuid(0) == 0);
        fs::permissions(m_file, fs::perms(on ? 0444 : 0644));
        fs::permissions(m_folder, fs::perms(on ? 0555 : 0755));
        ASSERT_TRUE(!on || getuid() != 0 || seteuid(65534) == 0);
    };
    const char* const kLocked = "database is locked";
    const std::function<void()> lost;  // no acknowledgement outlives this
    const struct {
        const char* reason;
        std::function<void()> harm;
        std::function<void()> repair;
    } faults[] = {
        {"file is not a database", [&] { std::ofstream(m_file) << std::string(100, 'x'); }, lost},
        {"malformed", [&] { fs::resize_file(m_file, 4096 + 100); }, lost},
        {"11 columns but 10", [&] { Sql("alter table bt_device_info add x"); }, [] {}},
        {kLocked,
         [&] {
             ASSERT_TRUE(Open());
             Sql("begin exclusive");
         },
         [&] { m_other.reset(); }},
        {"readonly database", [&] { protect(true); }, [&] { protect(false); }},
        {"disk I/O error", [&] { limit(81920); }, [&] { limit(RLIM_INFINITY); }}};
    std::signal(SIGXFSZ, SIG_IGN);
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.reason);
        ASSERT_TRUE(Open() && Insert(kA) && m_db.CloseDatabase());
        fault.harm();
        ASSERT_TRUE(fault.reason == kLocked || Open()) << "the content is not looked at";
        int rows = 1;
        while (rows < 300 && Insert(Address(rows), std::string(1000, 'x'))) {
            ++rows;
        }
        EXPECT_THAT(*(Recorder::Lines().end() - 2), HasSubstr(fault.reason));
        AskAndChange();
        if (fault.repair) {
            fault.repair();
            EXPECT_TRUE(m_db.OpenDatabase());
            EXPECT_EQ(m_db.GetRecordCount(), rows);
        }
        m_db.DeleteDBFiles();
    }
}

}  // namespace
