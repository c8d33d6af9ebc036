// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

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
// without an open connection is refused, as is an address that is no address, and then no
// statement is made. Addresses are compared as they are written. What an operation acknowledged is
// in the file when the power goes. One thread at a time.
class BTDatabaseManager {
public:
    // The one instance, made on the first call and never destroyed. NULL when there was no memory.
    static BTDatabaseManager* getInstance();

    BTDatabaseManager(const BTDatabaseManager&) = delete;
    BTDatabaseManager& operator=(const BTDatabaseManager&) = delete;

    // ---- the file ----

    // Makes the file with its three tables when it is missing. A file that is there is trusted: its
    // tables are not looked at.
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
    // Removes the file, its journal and SoundMirroingStatus.txt beside it.
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
    // Deletes nothing and is always false: its statement names two tables, which SQLite refuses. It
    // is kept as it is on purpose.
    bool DeleteAllRecord();
    // As many records as could be read.
    int GetRecordCount();
    // Appends every record, a text without a value as "". `records` is not NULL.
    bool GetAllRecordFromDB(std::vector<bt_db_dev_info_s>* records);
    // A JSON array of {"address","name"} of the devices not to be used, "null" when there is none.
    bool GetAllDontuseDeivceRecord(std::string& json);
    // Logs every record.
    void printAllrecord();
    // Opens the database by itself and leaves it open for the caller to close.
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

    // These two open and close the database by themselves.
    bool getAbsVolConnectedHistory(const std::string& address);
    void setAbsVolConnectedHistory(const std::string& address);
    bool DeleteVolInfo(const std::string& address);

protected:
    BTDatabaseManager();
    ~BTDatabaseManager() = default;

private:
    // Why an operation is refused, NULL when it is not.
    [[nodiscard]] const char* Refusal() const;
    [[nodiscard]] const char* Refusal(const std::string& address) const;

    // Each gives SQLite's result and keeps it in m_lastResult.
    int Execute(const char* statement);
    int Step(const StatementPtr& statement);

    // Prepares the query and takes its first step; or takes every step and hands each row to
    // `visit`. NULL when SQLite did it all, otherwise what a log line about it begins with:
    // kPrepareFailed or kStepFailed. They log nothing, for a line names the operation.
    const char* TakeFirstStep(const std::string& query, StatementPtr& statement);
    const char* ForEachRow(const std::string& query,
                           const std::function<void(sqlite3_stmt*)>& visit);
    static const char* const kPrepareFailed;
    static const char* const kStepFailed;

    // SQLite's reason for the last failure.
    [[nodiscard]] const char* ErrorText() const;

    std::unique_ptr<ManufacturerDataCache> m_manufacturerDataCache;
    SqlitePtr m_db;
    int m_lastResult = SQLITE_OK;
    std::string m_fileName;
    std::vector<std::string> m_columnNames;  // by bt_db_fields_e
    bool m_hasBeenOpen = false;
};
