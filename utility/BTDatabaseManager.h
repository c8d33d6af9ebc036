// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"
#include "utility/BtDeviceTypes.h"
#include "utility/ManufacturerDataCache.h"

// What the TV remembers about Bluetooth devices, in one SQLite file of the package's data folder:
// the device table, the LE manufacturer data, and whether a device has ever connected with absolute
// volume. The file is opened for one use and closed again:
//
//     BTDatabaseManager* database = BTDatabaseManager::getInstance();
//     if (database->PrepareDatabase() && database->OpenDatabase()) {
//         ... record operations ...
//         database->CloseDatabase();
//     }
//
// Nothing throws; what fails is logged with SQLite's reason and answers false. A record operation
// needs an open connection and a valid address; otherwise it is refused and no statement is made.
// Addresses are compared as they are written. After an operation has answered true, its change is
// kept even when the power fails. One thread at a time.
class BTDatabaseManager {
public:
    // The one instance, made on the first call and never destroyed. NULL when there was no memory.
    static BTDatabaseManager* getInstance();

    BTDatabaseManager(const BTDatabaseManager&) = delete;
    BTDatabaseManager& operator=(const BTDatabaseManager&) = delete;

    // ---- the file ----

    // Makes the file with its three tables when it is missing. The tables of an existing file are
    // not checked.
    [[nodiscard]] bool PrepareDatabase();
    // A connection that is still open is closed first.
    [[nodiscard]] bool OpenDatabase();
    // False when the database has never been open; true when it is closed already.
    bool CloseDatabase();
    bool CreateTable();
    bool CreateManufacturerTable();
    bool CreateVolumeInfoTable();
    // A name that is not made of letters, digits and "_" is refused.
    bool IsTableExist(std::string table);
    bool DropTable(std::string table);
    // Removes the file, its journal and SoundMirroingStatus.txt in the same folder.
    void DeleteDBFiles();

    // ---- the device table ----

    // False also when the address has a record.
    bool InsertData(std::string address, std::string name, usetype use, bt_connection_status status,
                    int profile, bt_devices_type type, std::string service, std::string provider,
                    int vid, int pid);
    bool IsRecordExist(std::string address);
    // Whether the query has a row.
    bool executeRecordExistQuery(const std::string& query);

    // One column of a record; false, and `value` untouched, when there is no record. Read as text:
    // address, name, service, provider, vid and pid, and false also when the column is NULL. As
    // integers: the four others, 0 when the column is NULL.
    bool GetDataFromDB(std::string address, bt_db_fields_e field, std::string& value);
    bool GetDataFromDB(std::string address, bt_db_fields_e field, int& value);
    // Written as text: address, name, service and provider. As integers: the six others. True also
    // when there is no record.
    bool UpdateDataOnDB(std::string address, bt_db_fields_e field, std::string value);
    bool UpdateDataOnDB(std::string address, bt_db_fields_e field, int value);

    // False, and `record` untouched, when there is no record or one of its texts has no value.
    bool GetRecordFromDB(bt_db_dev_info_s& record, std::string address);
    // True also when there is no record.
    bool DeleteRecord(std::string address);
    // Deletes nothing and is always false: its statement names two tables, which SQLite refuses.
    // This is so on purpose.
    bool DeleteAllRecord();
    // As many records as could be read.
    int GetRecordCount();
    // Appends every record, a text without a value as "". `records` is not NULL.
    bool GetAllRecordFromDB(std::vector<bt_db_dev_info_s>* records);
    // A JSON array of {"address","name"} of the devices not to be used, "null" when there is none.
    bool GetAllDontuseDeivceRecord(std::string& json);
    // Logs every record.
    void printAllrecord();
    // Opens the database and leaves it open; the caller closes it.
    bool getModelNameFromDB(const std::string& address, std::string& name);

    // ---- manufacturer data ----

    // The cache answers before the table; it keeps the first value that it was given.
    bool addToManufacturerDataCache(const std::string& address, const std::string& data,
                                    int linkType);
    bool deleteToManufacturerDataCache(const std::string& address);
    bool insertManufacturerData(const std::string& address, const std::string& data, int linkType);
    bool getManufacturerData(const std::string& address, std::string& data, int& linkType);
    bool isManufacturerRecordExist(const std::string& address);
    bool deleteManufacturerRecord(const std::string& address);

    // ---- absolute volume ----

    // These two open and close the database.
    bool getAbsVolConnectedHistory(const std::string& address);
    void setAbsVolConnectedHistory(const std::string& address);
    bool DeleteVolInfo(const std::string& address);

protected:
    BTDatabaseManager() = default;
    ~BTDatabaseManager() = default;

private:
    // These log for the operation at `place`.

    // What every statement needs. What is missing is logged.
    [[nodiscard]] bool IsOpen(const LogPlace& place) const;
    static bool IsAddress(const LogPlace& place, const std::string& address);

    // Executes a statement; NULL, one for which there was no memory, fails. A failure is logged as
    // `failure` and SQLite's reason.
    bool Execute(const LogPlace& place, const char* statement,
                 const char* failure = "Error executing SQLite3 statement: ");
    // The same for statements of a kind, which are logged.
    bool Create(const LogPlace& place, const char* statement);
    bool Insert(const LogPlace& place, const char* statement);
    bool Delete(const LogPlace& place, const std::string& statement);

    // A query's statement on its first row; null when there is no row, or after a failure.
    StatementPtr FirstRow(const LogPlace& place, const std::string& query);

    // Whether a device's record may be read or changed, and a statement on the record.
    // `isRightType`: whether its column is of the operation's type.
    [[nodiscard]] bool MayAccess(const LogPlace& place, const std::string& address,
                                 bool isRightType = true) const;
    StatementPtr FindDevice(const LogPlace& place, const std::string& address,
                            bool isRightType = true);

    // What a query's last step gave.
    enum class Outcome { kRow, kDone, kPrepareFailed, kStepFailed };
    // Whether it failed; then that is logged, with SQLite's reason.
    bool LogFailure(const LogPlace& place, Outcome outcome) const;

    // These log nothing, and keep SQLite's result in m_lastResult.
    int Run(const char* statement);
    Outcome Step(sqlite3_stmt* statement);
    Outcome TakeFirstStep(const std::string& query, StatementPtr& statement);
    // Hands each row to `visit`; never kRow.
    Outcome ForEachRow(const std::string& query, const std::function<void(sqlite3_stmt*)>& visit);

    // SQLite's reason for the last failure.
    [[nodiscard]] const char* ErrorText() const;
    [[nodiscard]] const char* ColumnName(bt_db_fields_e field) const;

    std::unique_ptr<ManufacturerDataCache> m_manufacturerDataCache =
        std::make_unique<ManufacturerDataCache>();
    SqlitePtr m_db;
    int m_lastResult = SQLITE_OK;
    std::string m_fileName = "BT_Connection_record.db";
    // By bt_db_fields_e.
    std::vector<std::string> m_columnNames = {
        "Remote_address", "Remote_name", "Use_type",      "bt_status", "Profile_type",
        "Device_type",    "Sevice_name", "Provider_name", "vid",       "pid"};
    bool m_hasBeenOpen = false;
};
