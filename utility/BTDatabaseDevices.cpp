// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>
#include <utility>

#include "autoconnect/src/AutoConnectDbg.h"
#include "utility/BTDatabaseManager.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

// The operations on the device table.

namespace {

// An address stands in a statement as it is only after it was found to be one: hexadecimal digits
// and colons.
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

// Throws std::runtime_error for a column without a value.
std::string RequiredText(sqlite3_stmt* row, int column) {
    if (IsNull(row, column)) {
        throw std::runtime_error(std::string(sqlite3_column_name(row, column)) + " is NULL");
    }
    return TextOrEmpty(row, column);
}

bt_db_dev_info_s RecordOf(sqlite3_stmt* row, std::string (*text)(sqlite3_stmt*, int)) {
    bt_db_dev_info_s record;
    record.remote_address = text(row, BT_DB_REMOTE_ADDRESS);
    record.remote_name = text(row, BT_DB_REMOTE_NAME);
    record.use_type = static_cast<usetype>(sqlite3_column_int(row, BT_DB_USE_TYPE));
    record.bt_status = static_cast<bt_connection_status>(sqlite3_column_int(row, BT_DB_BT_STATUS));
    record.profile_type = sqlite3_column_int(row, BT_DB_PROFILE_TYPE);
    record.device_type = static_cast<bt_devices_type>(sqlite3_column_int(row, BT_DB_DEVICE_TYPE));
    record.service_name = text(row, BT_DB_SERVICE_NAME);
    record.provider_name = text(row, BT_DB_PROVIDER_NAME);
    record.vid = sqlite3_column_int(row, BT_DB_VID);
    record.pid = sqlite3_column_int(row, BT_DB_PID);
    return record;
}

bool IsText(bt_db_fields_e field) {
    return field == BT_DB_REMOTE_ADDRESS || field == BT_DB_REMOTE_NAME ||
           field == BT_DB_SERVICE_NAME || field == BT_DB_PROVIDER_NAME;
}

bool IsId(bt_db_fields_e field) {
    return field == BT_DB_VID || field == BT_DB_PID;
}

bool IsNumber(bt_db_fields_e field) {
    return field >= BT_DB_USE_TYPE && field <= BT_DB_DEVICE_TYPE;
}

}  // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): the signatures are fixed

bool BTDatabaseManager::InsertData(std::string address, std::string name, usetype use,
                                   bt_connection_status status, int profile, bt_devices_type type,
                                   std::string service, std::string provider, int vid, int pid) {
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const SqliteTextPtr query(
        sqlite3_mprintf("INSERT INTO bt_device_info VALUES( %Q, %Q, %d, %d, %d, %d, %Q, %Q, %d, "
                        "%d )",
                        address.c_str(), name.c_str(), use, status, profile, type, service.c_str(),
                        provider.c_str(), vid, pid));
    BTLOG_DEBUG("query : %s", query.get());
    if (Execute(query.get()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 INSERT statement:: %s", ErrorText());
        BTLOG_ERROR("INSERT Record Fail");
        return false;
    }
    BTLOG_INFO("INSERT Record Successfully");
    return true;
}

bool BTDatabaseManager::IsRecordExist(std::string address) {
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const std::string query = SelectText(address);
    BTLOG_DEBUG("Select query = %s", query.c_str());
    return executeRecordExistQuery(query);
}

bool BTDatabaseManager::executeRecordExistQuery(const std::string& query) {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    StatementPtr statement;
    if (const char* failure = TakeFirstStep(query, statement)) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    return m_lastResult == SQLITE_ROW;
}

bool BTDatabaseManager::GetDataFromDB(std::string address, bt_db_fields_e field,
                                      std::string& value) {
    if (!IsText(field) && !IsId(field)) {
        BTLOG_ERROR("wrong data type. ");
        return false;
    }
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    StatementPtr statement;
    if (const char* failure = TakeFirstStep(SelectText(address), statement)) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    if (m_lastResult != SQLITE_ROW) {
        return false;
    }
    if (IsNull(statement.get(), field)) {
        BTLOG_ERROR("%s is NULL", m_columnNames[static_cast<std::size_t>(field)].c_str());
        return false;
    }
    value = TextOrEmpty(statement.get(), field);
    return true;
}

bool BTDatabaseManager::GetDataFromDB(std::string address, bt_db_fields_e field, int& value) {
    if (!IsNumber(field)) {
        BTLOG_ERROR("wrong data type. ");
        return false;
    }
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    StatementPtr statement;
    if (const char* failure = TakeFirstStep(SelectText(address), statement)) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    if (m_lastResult != SQLITE_ROW) {
        return false;
    }
    value = sqlite3_column_int(statement.get(), field);
    return true;
}

bool BTDatabaseManager::UpdateDataOnDB(std::string address, bt_db_fields_e field,
                                       std::string value) {
    if (!IsText(field)) {
        BTLOG_ERROR("wrong data type. ");
        return false;
    }
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    // SQLite takes a string literal for a column's name here.
    const SqliteTextPtr query(sqlite3_mprintf(
        "UPDATE bt_device_info set %Q = %Q where Remote_address = %Q",
        m_columnNames[static_cast<std::size_t>(field)].c_str(), value.c_str(), address.c_str()));
    if (Execute(query.get()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 statement: %s", ErrorText());
        return false;
    }
    return true;
}

bool BTDatabaseManager::UpdateDataOnDB(std::string address, bt_db_fields_e field, int value) {
    if (!IsNumber(field) && !IsId(field)) {
        BTLOG_ERROR("wrong data type. ");
        return false;
    }
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const std::string query = "UPDATE bt_device_info set " +
                              m_columnNames[static_cast<std::size_t>(field)] + " = '" +
                              std::to_string(value) + "' where Remote_address = '" + address + "';";
    BTLOG_DEBUG("integer data sql update query = %s ", query.c_str());
    if (Execute(query.c_str()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 statement: %s", ErrorText());
        return false;
    }
    return true;
}

bool BTDatabaseManager::GetRecordFromDB(bt_db_dev_info_s& record, std::string address) {
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    StatementPtr statement;
    if (const char* failure = TakeFirstStep(SelectText(address), statement)) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    if (m_lastResult != SQLITE_ROW) {
        return false;
    }
    try {
        record = RecordOf(statement.get(), RequiredText);
        return true;
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
        return false;
    }
}

bool BTDatabaseManager::DeleteRecord(std::string address) {
    if (const char* refusal = Refusal(address)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const std::string query =
        "DELETE from bt_device_info where Remote_address = '" + address + "';";
    BTLOG_DEBUG("DELETE query = %s", query.c_str());
    if (Execute(query.c_str()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 statement: %s", ErrorText());
        return false;
    }
    return true;
}

// NOLINTEND(performance-unnecessary-value-param)

bool BTDatabaseManager::DeleteAllRecord() {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const char* query = "DELETE from bt_device_info,volume_info ;";
    BTLOG_DEBUG("DELETE All query = %s", query);
    if (Execute(query) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 statement: %s", ErrorText());
        return false;
    }
    return true;
}

int BTDatabaseManager::GetRecordCount() {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return 0;
    }
    int count = 0;
    const char* failure = ForEachRow(kSelectAll, [&](sqlite3_stmt*) { ++count; });
    if (failure == kPrepareFailed) {
        BTLOG_ERROR("Count Error! [%s]", ErrorText());
        return 0;
    }
    if (failure != nullptr) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
    }
    BTLOG_INFO("No of records = %d", count);
    return count;
}

bool BTDatabaseManager::GetAllRecordFromDB(std::vector<bt_db_dev_info_s>* records) {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    BTLOG_DEBUG("sql update query = %s ", kSelectAll);
    std::vector<bt_db_dev_info_s> found;
    const char* failure = ForEachRow(
        kSelectAll, [&](sqlite3_stmt* row) { found.push_back(RecordOf(row, TextOrEmpty)); });
    if (failure == kPrepareFailed) {
        BTLOG_ERROR("get all record => Error on sqlite3_prepare_v2: [%s]", ErrorText());
        return false;
    }
    if (failure != nullptr) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    for (bt_db_dev_info_s& record : found) {
        records->push_back(std::move(record));
    }
    return true;
}

bool BTDatabaseManager::GetAllDontuseDeivceRecord(std::string& json) {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    Json::Value devices;
    const char* failure = ForEachRow(kSelectAll, [&](sqlite3_stmt* row) {
        if (sqlite3_column_int(row, BT_DB_USE_TYPE) != BT_DEVICE_DONT_USE ||
            IsNull(row, BT_DB_REMOTE_ADDRESS) || IsNull(row, BT_DB_REMOTE_NAME)) {
            return;
        }
        Json::Value device;
        device["address"] = TextOrEmpty(row, BT_DB_REMOTE_ADDRESS);
        device["name"] = TextOrEmpty(row, BT_DB_REMOTE_NAME);
        devices.append(device);
    });
    if (failure != nullptr) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    json = Util::JsonUtil::JsonToString(devices);
    return true;
}

void BTDatabaseManager::printAllrecord() {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return;
    }
    BTLOG_INFO("Print Record ");
    std::vector<bt_db_dev_info_s> records;
    const char* failure = ForEachRow(
        kSelectAll, [&](sqlite3_stmt* row) { records.push_back(RecordOf(row, TextOrEmpty)); });
    if (failure != nullptr) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
    }
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
