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
#include "utility/JsonUtil.h"

namespace fs = std::filesystem;

namespace {

const std::string kA = "A0:B1:C2:D3:E4:F5";
const std::string kB = "B0:B1:C2:D3:E4:F5";
const std::string kLow = "a0:b1:c2:d3:e4:f5";
const Texts kNoAddresses = {"",
                            kA + " ",
                            "A0-B1-C2-D3-E4-F5",
                            "' or '1'='1' or ''",
                            "' or 1=1;--      ",
                            "A0:B1:C2:D3:E4:F'",
                            std::string("A0:B1:C2:D3:E4:F\0", 17),
                            std::string(100000, 'A')};
const Texts kNoTables = {"volume_info); drop table volume_info;--", "", "a b", "volume_info'",
                         std::string("volume_info\0x", 13)};
const Texts kNames = {"'); drop table bt_device_info;--", "%Q%n%s%d", "\"\\\n", "\xff\xc0\xe4",
                      std::string(100000, '\'')};

struct Database : BTDatabaseManager {};

std::string statements;  // what SQLite was really given, on any connection, each once

int OnOpened(sqlite3* db, char** /*error*/, const sqlite3_api_routines* /*api*/) {
    const auto onStatement = [](unsigned, void*, void*, void* sql) {
        const std::string line = static_cast<const char*>(sql) + std::string("\n");
        statements += statements.find(line) == std::string::npos ? line : "";
        return 0;
    };
    return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, onStatement, nullptr);
}

// Where readers put what they find.
std::string text;
int number = 0;
bt_db_dev_info_s record;
std::vector<bt_db_dev_info_s> records;

struct Operation {
    const char* name;
    bool (*run)(Database& d, const std::string& a);
};
// clang-format off
#define OPERATION(name, ...) \
    {#name, [](Database& d, [[maybe_unused]] const std::string& a) -> bool { return d.name(__VA_ARGS__); }}
// clang-format on
const Operation kOperations[] = {
    // with an address
    OPERATION(InsertData, a, "x", BT_DEVICE_USE, {}, 0, BT_DEVICE_TYPE_MOUSE, "", "", 0, 0),
    OPERATION(IsRecordExist, a), OPERATION(GetDataFromDB, a, BT_DB_VID, text),
    OPERATION(GetDataFromDB, a, BT_DB_USE_TYPE, number),
    OPERATION(UpdateDataOnDB, a, BT_DB_REMOTE_NAME, a), OPERATION(UpdateDataOnDB, a, BT_DB_PID, 1),
    OPERATION(GetRecordFromDB, record, a), OPERATION(DeleteRecord, a),
    OPERATION(insertManufacturerData, a, "x", 1), OPERATION(getManufacturerData, a, text, number),
    OPERATION(isManufacturerRecordExist, a), OPERATION(deleteManufacturerRecord, a),
    OPERATION(DeleteVolInfo, a),
    // without
    OPERATION(CreateTable), OPERATION(CreateManufacturerTable), OPERATION(CreateVolumeInfoTable),
    OPERATION(IsTableExist, "bt_device_info"), OPERATION(executeRecordExistQuery, "select 1"),
    OPERATION(DeleteAllRecord), OPERATION(GetRecordCount), OPERATION(GetAllRecordFromDB, &records),
    OPERATION(GetAllDontuseDeivceRecord, text), OPERATION(DropTable, "bt_device_info")};
constexpr std::size_t kWithAddress = 13;
constexpr std::size_t kAll = std::size(kOperations);

class BTDatabaseTest : public PlatformTest {
protected:
    BTDatabaseTest() {
        fs::create_directories(m_folder);
        statements.clear();
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(OnOpened));
    }
    ~BTDatabaseTest() override {
        m_db.reset();
        m_other.reset();
        sqlite3_reset_auto_extension();
        EXPECT_EQ(sqlite3_memory_used(), 0) << "of connections, statements and texts";
        fs::remove_all(Tv::Root() + "/opt");
    }

    bool Open() { return m_db->PrepareDatabase() && m_db->OpenDatabase(); }
    bool Insert(const std::string& address, const std::string& name = "Kitchen") {
        return m_db->InsertData(address, name, BT_DEVICE_USE, {}, 1, BT_DEVICE_TYPE_MOUSE, "", "",
                                0, 0);
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
    std::string Manufacturer() {
        return m_db->getManufacturerData(kA, text, number) ? text + std::to_string(number) : "none";
    }
    void Run(std::size_t count, const std::string& address) {
        for (std::size_t i = 0; i < count; ++i) {
            kOperations[i].run(*m_db, address);
        }
    }
    // Every operation is refused, and its last line says why.
    void ExpectRefused(std::size_t count, const std::string& address, const std::string& reason) {
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_FALSE(kOperations[i].run(*m_db, address)) << kOperations[i].name;
            ExpectLast(kOperations[i].name + (": " + reason));
        }
    }
    static void ExpectLast(const std::string& line) {
        EXPECT_EQ(Recorder::Lines().back(), "E utility " + line);
    }

    const std::string m_folder = Util::AppDataUtil::getDataPath();
    const std::string m_file = m_folder + "BT_Connection_record.db";
    SqlitePtr m_other;
    std::optional<Database> m_db{std::in_place};
};

TEST_F(BTDatabaseTest, LivesThroughEveryOrderOfCalls) {
    EXPECT_EQ(m_folder, Tv::Root() + "/opt/usr/home/owner/apps_rw/org.orlix.nirvo/data/");
    EXPECT_FALSE(m_db->CloseDatabase());
    ExpectLast("CloseDatabase: m_db is NULL");
    ExpectRefused(kAll, kA, "m_db is NULL");
    Recorder::ClearRecord();
    EXPECT_TRUE(m_db->PrepareDatabase() && m_db->PrepareDatabase());
    EXPECT_THAT(Recorder::Calls(), ElementsAre("db_util_open(" + m_file + ",1)"));
    EXPECT_TRUE(m_db->OpenDatabase() && m_db->OpenDatabase() && Insert(kA));
    EXPECT_TRUE(m_db->CloseDatabase() && m_db->CloseDatabase());
    ExpectRefused(kAll, kA, "m_db is NULL");
    EXPECT_TRUE(m_db->OpenDatabase());
    Recorder::Fail("db_util_open", SQLITE_CANTOPEN);
    EXPECT_FALSE(m_db->OpenDatabase());
    ExpectLast("OpenDatabase: Can't open database: unable to open database file");
    EXPECT_FALSE(m_db->IsRecordExist(kA)) << "nor on the connection before";
    for (const char* name : {"BT_Connection_record.db-journal", "SoundMirroingStatus.txt", "x"}) {
        std::ofstream(m_folder + name) << "x";
    }
    m_db->DeleteDBFiles();
    m_db->DeleteDBFiles();
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder), {}), 1);
    fs::remove_all(m_folder);
    std::ofstream(m_folder.substr(0, m_folder.size() - 1)) << "not a folder";
    EXPECT_FALSE(m_db->PrepareDatabase());
    ExpectLast("OpenDatabase: Can't open database: unable to open database file");
}

TEST_F(BTDatabaseTest, NothingHostileReachesAStatement) {
    ASSERT_TRUE(Open() && Insert(kA));
    statements.clear();
    for (const std::string& address : kNoAddresses) {
        ExpectRefused(kWithAddress, address, "address is not valid");
        m_db->setAbsVolConnectedHistory(address);
        EXPECT_FALSE(m_db->getAbsVolConnectedHistory(address) ||
                     m_db->addToManufacturerDataCache(address, "", 0) ||
                     m_db->deleteToManufacturerDataCache(address));
    }
    for (const std::string& table : kNoTables) {
        EXPECT_FALSE(m_db->IsTableExist(table));
    }
    EXPECT_EQ(statements, "");
    EXPECT_FALSE(m_db->DropTable("x'; drop table volume_info;--") || m_db->IsTableExist("1x"));
    EXPECT_TRUE(m_db->IsTableExist("volume_info") && m_db->DropTable("volume_info"));
    EXPECT_FALSE(m_db->IsTableExist("volume_info"));
    for (const std::string& name : kNames) {
        EXPECT_TRUE(m_db->UpdateDataOnDB(kA, BT_DB_REMOTE_NAME, name));
        EXPECT_TRUE(m_db->UpdateDataOnDB(kA, BT_DB_USE_TYPE, 0));
        EXPECT_TRUE(m_db->GetDataFromDB(kA, BT_DB_REMOTE_NAME, text));
        EXPECT_EQ(text, name);
        m_db->printAllrecord();
        ASSERT_TRUE(m_db->GetAllDontuseDeivceRecord(text));
        const Json::Value devices = Util::JsonUtil::StringToJson(text);
        EXPECT_TRUE(name[0] == '\xff' || devices[0]["name"].asString() == name);
    }
    EXPECT_EQ(m_db->GetRecordCount(), 1);
}

TEST_F(BTDatabaseTest, KeepsRecords) {
    ASSERT_TRUE(Open());
    EXPECT_TRUE(m_db->InsertData(kA, "Bob's", BT_DEVICE_DONT_USE, bt_connection_status{2}, 3,
                                 BT_DEVICE_TYPE_HEADPHONE, "s", "model", 1256, -1));
    EXPECT_FALSE(Insert(kA)) << "its name is taken";
    ExpectLast("InsertData: INSERT Record Fail");
    EXPECT_TRUE(Insert(kB) && m_db->UpdateDataOnDB(kLow, BT_DB_REMOTE_NAME, "nobody"));
    EXPECT_FALSE(m_db->IsRecordExist(kLow) || m_db->DeleteAllRecord());
    ExpectLast("DeleteAllRecord: Error executing SQLite3 statement: near \",\": syntax error");
    EXPECT_TRUE(m_db->GetRecordCount() == 2 && m_db->GetAllDontuseDeivceRecord(text));
    EXPECT_EQ(text, R"([{"address":")" + kA + R"(","name":"Bob's"}])");
    ASSERT_TRUE(m_db->GetRecordFromDB(record, kA));
    EXPECT_EQ(record.remote_name + record.service_name + record.provider_name, "Bob'ssmodel");
    EXPECT_THAT(std::vector<int>({record.use_type, record.bt_status, record.profile_type,
                                  record.device_type, record.vid, record.pid}),
                ElementsAre(0, 2, 3, 5, 1256, -1));
    std::string fields[4];  // read as text, as integer; written as text, as integer
    for (int i = 10; i >= -1; --i) {
        const auto field = static_cast<bt_db_fields_e>(i);
        const bool answers[] = {
            m_db->GetDataFromDB(kA, field, text), m_db->GetDataFromDB(kA, field, number),
            m_db->UpdateDataOnDB(kB, field, "written"), m_db->UpdateDataOnDB(kB, field, i * 10)};
        for (int k = 0; k < 4; ++k) {
            fields[k] += answers[k] ? std::to_string(i) : "";
        }
    }
    EXPECT_THAT(fields, ElementsAre("987610", "5432", "7610", "985432"));
    ExpectLast("UpdateDataOnDB: wrong data type. ");
    EXPECT_TRUE(m_db->DeleteRecord(kA) && m_db->DeleteRecord(kA));
    EXPECT_TRUE(m_db->GetAllRecordFromDB(&records) && m_db->GetAllDontuseDeivceRecord(text));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].provider_name + std::to_string(records[0].pid) + text, "written90null");
    EXPECT_FALSE(m_db->getModelNameFromDB(kA, text));
    EXPECT_TRUE(Insert(kA) && m_db->UpdateDataOnDB(kA, BT_DB_PROVIDER_NAME, "HW-1"));
    EXPECT_TRUE(m_db->CloseDatabase() && m_db->getModelNameFromDB(kA, text) && text == "HW-1");
    EXPECT_TRUE(m_db->IsRecordExist(kA)) << "left open";
}

TEST_F(BTDatabaseTest, ReadsWhatAnotherProgramLeftOut) {
    ASSERT_TRUE(Open());
    Sql(R"(insert into bt_device_info(Remote_address) values('A0:B1:C2:D3:E4:F5');
           insert into bt_device_info(Remote_name, Use_type) values('x', 7);
           insert into bt_manufacturer_data(Remote_address) values('A0:B1:C2:D3:E4:F5');
           insert into volume_info(address) values('A0:B1:C2:D3:E4:F5'))");
    text = "before";
    for (const int field : {1, 6, 7, 8, 9}) {
        EXPECT_FALSE(m_db->GetDataFromDB(kA, static_cast<bt_db_fields_e>(field), text));
    }
    EXPECT_TRUE(m_db->GetDataFromDB(kA, BT_DB_DEVICE_TYPE, number));
    EXPECT_FALSE(m_db->GetRecordFromDB(record, kA));
    ExpectLast("GetRecordFromDB: exception : Remote_name is NULL");
    EXPECT_EQ(Manufacturer() + text, "nonebefore");
    EXPECT_TRUE(m_db->isManufacturerRecordExist(kA));
    m_db->printAllrecord();
    records.clear();
    EXPECT_TRUE(m_db->GetAllRecordFromDB(&records) && m_db->GetAllDontuseDeivceRecord(text));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(std::to_string(records[1].use_type) + text, "7null");
    Sql(R"(with recursive n(i) as (values(1) union all select i + 1 from n where i < 200)
           insert into bt_device_info(Remote_address, Remote_name)
           select i, hex(randomblob(500)) from n)");
    std::fstream(m_file).seekp(-4096, std::ios::end).write(std::string(4096, '\0').data(), 4096);
    EXPECT_FALSE(m_db->GetAllRecordFromDB(&records) || m_db->GetAllDontuseDeivceRecord(text));
    EXPECT_LT(m_db->GetRecordCount(), 202) << "as far as it could be read";
    EXPECT_EQ(*(Recorder::Lines().end() - 2),
              "E utility GetRecordCount: Error on sqlite3_step: database disk image is malformed");
    EXPECT_EQ(std::to_string(records.size()) + text, "2null") << "half a list is none";
    EXPECT_FALSE(m_db->getAbsVolConnectedHistory(kA));
}

TEST_F(BTDatabaseTest, CacheAnswersBeforeTheFile) {
    ASSERT_TRUE(Open() && !m_db->isManufacturerRecordExist(kA));
    Sql("insert into bt_manufacturer_data values('" + kA + "', 'old', 5)");
    EXPECT_EQ(Manufacturer(), "old5");
    Sql("update bt_manufacturer_data set Manufacturer_data = 'new'");
    EXPECT_EQ(Manufacturer(), "new5") << "a hit in the file is not kept";
    EXPECT_TRUE(m_db->isManufacturerRecordExist(kA));
    Sql("drop table bt_manufacturer_data");
    EXPECT_EQ(Manufacturer(), "new5") << "but by the question whether it exists";
    EXPECT_TRUE(m_db->isManufacturerRecordExist(kA));
    EXPECT_FALSE(m_db->addToManufacturerDataCache(kA, "other", 1));
    EXPECT_TRUE(m_db->insertManufacturerData(kLow, "x", 1)) << "makes the table";
    EXPECT_FALSE(m_db->insertManufacturerData(kLow, "y", 2));
    Sql("delete from bt_manufacturer_data");
    EXPECT_TRUE(m_db->getManufacturerData(kLow, text, number) && text == "x" && number == 1);
    EXPECT_EQ(Manufacturer(), "new5");
    EXPECT_TRUE(m_db->deleteManufacturerRecord(kA) && m_db->deleteManufacturerRecord(kLow));
    EXPECT_FALSE(m_db->isManufacturerRecordExist(kLow) || m_db->deleteToManufacturerDataCache(kA));
}

TEST_F(BTDatabaseTest, KeepsTheVolumeHistory) {
    EXPECT_FALSE(m_db->getAbsVolConnectedHistory(kA));
    ExpectLast("getAbsVolConnectedHistory: table deos not exist");
    EXPECT_TRUE(Open()) << "an empty file, and trusted";
    EXPECT_FALSE(Insert(kA) || m_db->IsTableExist("bt_device_info"));
    m_db->setAbsVolConnectedHistory(kA);
    EXPECT_TRUE(m_db->getAbsVolConnectedHistory(kA));
    m_db->setAbsVolConnectedHistory(kA);
    ExpectLast("setAbsVolConnectedHistory: exception : sqlite3_exec failed");
    EXPECT_FALSE(m_db->getAbsVolConnectedHistory(kLow) || m_db->DeleteVolInfo(kA)) << "is closed";
    EXPECT_TRUE(m_db->OpenDatabase() && m_db->DeleteVolInfo(kA) && m_db->DeleteVolInfo(kA));
    EXPECT_FALSE(m_db->getAbsVolConnectedHistory(kA));
    Sql("drop table volume_info; create table volume_info(x)");
    EXPECT_FALSE(m_db->getAbsVolConnectedHistory(kA));
    ExpectLast("getAbsVolConnectedHistory: exception : sqlite3_prepare_v2 failed");
}

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
        ASSERT_TRUE(Open() && Insert(kA) && m_db->CloseDatabase());
        fault.harm();
        ASSERT_TRUE(fault.reason == kLocked || Open()) << "the content is not looked at";
        int rows = 1;
        while (rows < 300 && Insert(Address(rows), std::string(1000, 'x'))) {
            ++rows;
        }
        EXPECT_THAT(*(Recorder::Lines().end() - 2), HasSubstr(fault.reason));
        Run(kWithAddress, kB);
        if (fault.repair) {
            fault.repair();
            EXPECT_TRUE(m_db->OpenDatabase());
            EXPECT_EQ(m_db->GetRecordCount(), rows);
        }
        m_db->DeleteDBFiles();
    }
}

}  // namespace
