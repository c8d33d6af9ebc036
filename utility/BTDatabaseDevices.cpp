// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "utility/BTDatabaseManager.h"
#include "utility/JsonUtil.h"

// The operations on the device table.

namespace {

// Safe because only a checked address is put into a statement: hexadecimal digits and colons.
std::string SelectText(const std::string& address) {
    return "select * from bt_device_info where Remote_address = '" + address + "';";
}

constexpr const char* kSelectAll = "select * from bt_device_info;";

bool IsNull(sqlite3_stmt* row, int column) {
    return sqlite3_column_type(row, column) == SQLITE_NULL;
}

// "" for a column without a value.
std::string TextOrEmpty(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
    return text != nullptr ? std::string(text, size) : std::string();
}

// A column without a value gives "" or 0.
bt_db_dev_info_s RecordOf(sqlite3_stmt* row) {
    bt_db_dev_info_s record;
    record.remote_address = TextOrEmpty(row, BT_DB_REMOTE_ADDRESS);
    record.remote_name = TextOrEmpty(row, BT_DB_REMOTE_NAME);
    record.use_type = static_cast<usetype>(sqlite3_column_int(row, BT_DB_USE_TYPE));
    record.bt_status = static_cast<bt_connection_status>(sqlite3_column_int(row, BT_DB_BT_STATUS));
    record.profile_type = sqlite3_column_int(row, BT_DB_PROFILE_TYPE);
    record.device_type = static_cast<bt_devices_type>(sqlite3_column_int(row, BT_DB_DEVICE_TYPE));
    record.service_name = TextOrEmpty(row, BT_DB_SERVICE_NAME);
    record.provider_name = TextOrEmpty(row, BT_DB_PROVIDER_NAME);
    record.vid = sqlite3_column_int(row, BT_DB_VID);
    record.pid = sqlite3_column_int(row, BT_DB_PID);
    return record;
}

constexpr bt_db_fields_e kTextFields[] = {BT_DB_REMOTE_ADDRESS, BT_DB_REMOTE_NAME,
                                          BT_DB_SERVICE_NAME, BT_DB_PROVIDER_NAME};

bool IsText(bt_db_fields_e field) {
    return std::find(std::begin(kTextFields), std::end(kTextFields), field) !=
           std::end(kTextFields);
}

bool IsId(bt_db_fields_e field) {
    return field == BT_DB_VID || field == BT_DB_PID;
}

bool IsNumber(bt_db_fields_e field) {
    return field >= BT_DB_USE_TYPE && field <= BT_DB_DEVICE_TYPE;
}

}  // namespace

bool BTDatabaseManager::MayAccess(const LogPlace& place, const std::string& address,
                                  bool isRightType) const {
    if (!isRightType) {
        BTLOG_FOR(place, DLOG_ERROR, "wrong data type. ");
    }
    return isRightType && IsOpen(place) && IsAddress(place, address);
}

StatementPtr BTDatabaseManager::FindDevice(const LogPlace& place, const std::string& address,
                                           bool isRightType) {
    return MayAccess(place, address, isRightType) ? FirstRow(place, SelectText(address)) : nullptr;
}

// NOLINTBEGIN(performance-unnecessary-value-param): the signatures are fixed

bool BTDatabaseManager::InsertData(std::string address, std::string name, usetype use,
                                   bt_connection_status status, int profile, bt_devices_type type,
                                   std::string service, std::string provider, int vid, int pid) {
    if (!MayAccess(BTLOG_HERE, address)) {
        return false;
    }
    const SqliteTextPtr query(
        sqlite3_mprintf("INSERT INTO bt_device_info VALUES( %Q, %Q, %d, %d, %d, %d, %Q, %Q, %d, "
                        "%d )",
                        address.c_str(), name.c_str(), use, status, profile, type, service.c_str(),
                        provider.c_str(), vid, pid));
    return Insert(BTLOG_HERE, query.get());
}

bool BTDatabaseManager::IsRecordExist(std::string address) {
    if (!MayAccess(BTLOG_HERE, address)) {
        return false;
    }
    const std::string query = SelectText(address);
    BTLOG_DEBUG("Select query = %s", query.c_str());
    return executeRecordExistQuery(query);
}

bool BTDatabaseManager::executeRecordExistQuery(const std::string& query) {
    return IsOpen(BTLOG_HERE) && FirstRow(BTLOG_HERE, query) != nullptr;
}

bool BTDatabaseManager::GetDataFromDB(std::string address, bt_db_fields_e field,
                                      std::string& value) {
    const StatementPtr row = FindDevice(BTLOG_HERE, address, IsText(field) || IsId(field));
    if (!row) {
        return false;
    }
    if (IsNull(row.get(), field)) {
        BTLOG_ERROR("%s is NULL", ColumnName(field));
        return false;
    }
    value = TextOrEmpty(row.get(), field);
    return true;
}

bool BTDatabaseManager::GetDataFromDB(std::string address, bt_db_fields_e field, int& value) {
    const StatementPtr row = FindDevice(BTLOG_HERE, address, IsNumber(field));
    if (!row) {
        return false;
    }
    value = sqlite3_column_int(row.get(), field);
    return true;
}

bool BTDatabaseManager::UpdateDataOnDB(std::string address, bt_db_fields_e field,
                                       std::string value) {
    if (!MayAccess(BTLOG_HERE, address, IsText(field))) {
        return false;
    }
    // SQLite accepts a string literal as the column's name here.
    const SqliteTextPtr query(
        sqlite3_mprintf("UPDATE bt_device_info set %Q = %Q where Remote_address = %Q",
                        ColumnName(field), value.c_str(), address.c_str()));
    return Execute(BTLOG_HERE, query.get());
}

bool BTDatabaseManager::UpdateDataOnDB(std::string address, bt_db_fields_e field, int value) {
    if (!MayAccess(BTLOG_HERE, address, IsNumber(field) || IsId(field))) {
        return false;
    }
    const std::string query = std::string("UPDATE bt_device_info set ") + ColumnName(field) +
                              " = '" + std::to_string(value) + "' where Remote_address = '" +
                              address + "';";
    BTLOG_DEBUG("integer data sql update query = %s ", query.c_str());
    return Execute(BTLOG_HERE, query.c_str());
}

bool BTDatabaseManager::GetRecordFromDB(bt_db_dev_info_s& record, std::string address) {
    const StatementPtr row = FindDevice(BTLOG_HERE, address);
    if (!row) {
        return false;
    }
    try {
        for (const bt_db_fields_e field : kTextFields) {
            if (IsNull(row.get(), field)) {
                throw std::runtime_error(std::string(ColumnName(field)) + " is NULL");
            }
        }
        record = RecordOf(row.get());
        return true;
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
        return false;
    }
}

bool BTDatabaseManager::DeleteRecord(std::string address) {
    return MayAccess(BTLOG_HERE, address) &&
           Delete(BTLOG_HERE,
                  "DELETE from bt_device_info where Remote_address = '" + address + "';");
}

// NOLINTEND(performance-unnecessary-value-param)

bool BTDatabaseManager::DeleteAllRecord() {
    if (!IsOpen(BTLOG_HERE)) {
        return false;
    }
    const char* query = "DELETE from bt_device_info,volume_info ;";
    BTLOG_DEBUG("DELETE All query = %s", query);
    return Execute(BTLOG_HERE, query);
}

int BTDatabaseManager::GetRecordCount() {
    if (!IsOpen(BTLOG_HERE)) {
        return 0;
    }
    int count = 0;
    const Outcome outcome = ForEachRow(kSelectAll, [&](sqlite3_stmt*) { ++count; });
    if (outcome == Outcome::kPrepareFailed) {
        BTLOG_ERROR("Count Error! [%s]", ErrorText());
        return 0;
    }
    LogFailure(BTLOG_HERE, outcome);
    BTLOG_INFO("No of records = %d", count);
    return count;
}

bool BTDatabaseManager::GetAllRecordFromDB(std::vector<bt_db_dev_info_s>* records) {
    if (!IsOpen(BTLOG_HERE)) {
        return false;
    }
    BTLOG_DEBUG("sql update query = %s ", kSelectAll);
    std::vector<bt_db_dev_info_s> found;
    const Outcome outcome =
        ForEachRow(kSelectAll, [&](sqlite3_stmt* row) { found.push_back(RecordOf(row)); });
    if (outcome == Outcome::kPrepareFailed) {
        BTLOG_ERROR("get all record => Error on sqlite3_prepare_v2: [%s]", ErrorText());
        return false;
    }
    if (LogFailure(BTLOG_HERE, outcome)) {
        return false;
    }
    std::move(found.begin(), found.end(), std::back_inserter(*records));
    return true;
}

bool BTDatabaseManager::GetAllDontuseDeivceRecord(std::string& json) {
    if (!IsOpen(BTLOG_HERE)) {
        return false;
    }
    Json::Value devices;
    const Outcome outcome = ForEachRow(kSelectAll, [&](sqlite3_stmt* row) {
        if (sqlite3_column_int(row, BT_DB_USE_TYPE) != BT_DEVICE_DONT_USE ||
            IsNull(row, BT_DB_REMOTE_ADDRESS) || IsNull(row, BT_DB_REMOTE_NAME)) {
            return;
        }
        devices.append(Util::Object({{"address", TextOrEmpty(row, BT_DB_REMOTE_ADDRESS)},
                                     {"name", TextOrEmpty(row, BT_DB_REMOTE_NAME)}}));
    });
    if (LogFailure(BTLOG_HERE, outcome)) {
        return false;
    }
    json = Util::JsonUtil::JsonToString(devices);
    return true;
}

void BTDatabaseManager::printAllrecord() {
    if (!IsOpen(BTLOG_HERE)) {
        return;
    }
    BTLOG_INFO("Print Record ");
    std::vector<bt_db_dev_info_s> records;
    const Outcome outcome =
        ForEachRow(kSelectAll, [&](sqlite3_stmt* row) { records.push_back(RecordOf(row)); });
    LogFailure(BTLOG_HERE, outcome);
    for (const bt_db_dev_info_s& record : records) {
        BTLOG_INFO(" ************** Record ************** ");
        BTLOG_INFO("Remote_address= %s", record.remote_address.c_str());
        BTLOG_INFO("Remote_name= %s", record.remote_name.c_str());
        BTLOG_INFO("Use type= %d", record.use_type);
        BTLOG_INFO("bt_status= %d", record.bt_status);
        BTLOG_INFO("Profile_type= %d", record.profile_type);
        BTLOG_INFO("Device_type= %d", record.device_type);
        BTLOG_INFO("Sevice_name= %s", record.service_name.c_str());
        BTLOG_INFO("Provider_name= %s", record.provider_name.c_str());
        BTLOG_INFO("vid=  %d", record.vid);
        BTLOG_INFO("pid= %d", record.pid);
    }
}

bool BTDatabaseManager::getModelNameFromDB(const std::string& address, std::string& name) {
    if (!PrepareDatabase() || !OpenDatabase()) {
        BTLOG_WARN("fail to open DB.");
        return false;
    }
    return IsRecordExist(address) && GetDataFromDB(address, BT_DB_PROVIDER_NAME, name);
}
