// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "autoconnect/src/AutoConnectDbg.h"
#include "utility/BTDatabaseManager.h"
#include "utility/CommonUtil.h"

// Manufacturer data with its cache, and the absolute-volume history.

namespace {

constexpr const char* kBadAddress = "address is not valid";

std::string SelectText(const std::string& address) {
    return "select * from bt_manufacturer_data where Remote_address = '" + address + "';";
}

// Why an operation is refused, NULL when it is not. Here the address goes first.
const char* RefusalOf(const std::string& address, const SqlitePtr& connection) {
    if (!Util::CommonUtil::IsValidAddress(address)) {
        return kBadAddress;
    }
    return connection ? nullptr : "m_db is NULL";
}

}  // namespace

bool BTDatabaseManager::addToManufacturerDataCache(const std::string& address,
                                                   const std::string& data, int linkType) {
    if (!Util::CommonUtil::IsValidAddress(address)) {
        BTLOG_ERROR("%s", kBadAddress);
        return false;
    }
    return m_manufacturerDataCache->insert(address, data, linkType);
}

bool BTDatabaseManager::deleteToManufacturerDataCache(const std::string& address) {
    if (!Util::CommonUtil::IsValidAddress(address)) {
        BTLOG_ERROR("%s", kBadAddress);
        return false;
    }
    return m_manufacturerDataCache->del(address);
}

bool BTDatabaseManager::insertManufacturerData(const std::string& address, const std::string& data,
                                               int linkType) {
    if (const char* refusal = RefusalOf(address, m_db)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    // A file of an older program lacks the table. Where it cannot be made, the insertion says so.
    CreateManufacturerTable();
    const SqliteTextPtr query(
        sqlite3_mprintf("INSERT INTO bt_manufacturer_data VALUES( %Q, %Q, %d )", address.c_str(),
                        data.c_str(), linkType));
    BTLOG_DEBUG("query : %s", query.get());
    if (Execute(query.get()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 INSERT statement:: %s", ErrorText());
        BTLOG_ERROR("INSERT Record Fail");
        return false;
    }
    BTLOG_INFO("INSERT Record Successfully");
    addToManufacturerDataCache(address, data, linkType);
    return true;
}

bool BTDatabaseManager::getManufacturerData(const std::string& address, std::string& data,
                                            int& linkType) {
    if (const char* refusal = RefusalOf(address, m_db)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    if (m_manufacturerDataCache->get(address, data, linkType)) {
        return true;
    }
    StatementPtr statement;
    if (const char* failure = TakeFirstStep(SelectText(address), statement)) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    if (m_lastResult != SQLITE_ROW) {
        return false;
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 1));
    if (text == nullptr) {
        BTLOG_ERROR("Manufacturer_data is NULL");
        return false;
    }
    data.assign(text, static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 1)));
    linkType = sqlite3_column_int(statement.get(), 2);
    return true;
}

bool BTDatabaseManager::isManufacturerRecordExist(const std::string& address) {
    if (const char* refusal = RefusalOf(address, m_db)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    if (m_manufacturerDataCache->isExist(address)) {
        return true;
    }
    const std::string query = SelectText(address);
    BTLOG_DEBUG("Select query = %s", query.c_str());
    if (!executeRecordExistQuery(query)) {
        return false;
    }
    std::string data;
    int linkType = 0;
    if (getManufacturerData(address, data, linkType)) {
        addToManufacturerDataCache(address, data, linkType);
    }
    return true;
}

bool BTDatabaseManager::deleteManufacturerRecord(const std::string& address) {
    if (const char* refusal = RefusalOf(address, m_db)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const std::string query =
        "DELETE from bt_manufacturer_data where Remote_address = '" + address + "';";
    BTLOG_DEBUG("DELETE query = %s", query.c_str());
    deleteToManufacturerDataCache(address);
    if (Execute(query.c_str()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 statement: %s", ErrorText());
        return false;
    }
    return true;
}

bool BTDatabaseManager::getAbsVolConnectedHistory(const std::string& address) {
    if (!Util::CommonUtil::IsValidAddress(address)) {
        BTLOG_ERROR("%s", kBadAddress);
        return false;
    }
    if (!OpenDatabase()) {
        BTLOG_ERROR("fail to open DB");
        return false;
    }
    if (!IsTableExist("volume_info")) {
        BTLOG_ERROR("table deos not exist");
        CloseDatabase();
        return false;
    }
    BTLOG_INFO("getAbsVolConnectedHistory = %s ", address.c_str());
    bool hasConnected = false;
    try {
        StatementPtr statement;
        const char* failure = TakeFirstStep(
            "select * from volume_info where address = '" + address + "';", statement);
        if (failure == kPrepareFailed) {
            throw std::runtime_error("sqlite3_prepare_v2 failed");
        }
        if (failure != nullptr) {
            throw std::runtime_error("sqlite3_step failed");
        }
        hasConnected = m_lastResult == SQLITE_ROW && sqlite3_column_int(statement.get(), 1) != 0;
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
    CloseDatabase();
    return hasConnected;
}

void BTDatabaseManager::setAbsVolConnectedHistory(const std::string& address) {
    if (!Util::CommonUtil::IsValidAddress(address)) {
        BTLOG_ERROR("%s", kBadAddress);
        return;
    }
    if (!OpenDatabase()) {
        BTLOG_ERROR("fail to open DB");
        return;
    }
    if (!IsTableExist("volume_info")) {
        BTLOG_ERROR("table deos not exist");
        CreateVolumeInfoTable();
    }
    BTLOG_INFO("setAbsVolConnectedHistory = %s", address.c_str());
    try {
        const SqliteTextPtr query(
            sqlite3_mprintf("INSERT INTO volume_info VALUES( %Q, 1 )", address.c_str()));
        if (Execute(query.get()) != SQLITE_OK) {
            throw std::runtime_error("sqlite3_exec failed");
        }
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
    CloseDatabase();
}

bool BTDatabaseManager::DeleteVolInfo(const std::string& address) {
    if (const char* refusal = RefusalOf(address, m_db)) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const std::string query = "DELETE from volume_info  where address = '" + address + "';";
    BTLOG_DEBUG("DELETE query = %s", query.c_str());
    if (Execute(query.c_str()) != SQLITE_OK) {
        BTLOG_ERROR("Error executing SQLite3 statement: %s", ErrorText());
        return false;
    }
    return true;
}
