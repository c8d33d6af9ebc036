// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/BTDatabaseManager.h"

// Manufacturer data with its cache, and the absolute-volume history.

namespace {

std::string SelectText(const std::string& address) {
    return "select * from bt_manufacturer_data where Remote_address = '" + address + "';";
}

}  // namespace

// Here the address is checked before the connection.

bool BTDatabaseManager::addToManufacturerDataCache(const std::string& address,
                                                   const std::string& data, int linkType) {
    return IsAddress(BTLOG_HERE, address) &&
           m_manufacturerDataCache->insert(address, data, linkType);
}

bool BTDatabaseManager::deleteToManufacturerDataCache(const std::string& address) {
    return IsAddress(BTLOG_HERE, address) && m_manufacturerDataCache->del(address);
}

bool BTDatabaseManager::insertManufacturerData(const std::string& address, const std::string& data,
                                               int linkType) {
    if (!IsAddress(BTLOG_HERE, address) || !IsOpen(BTLOG_HERE)) {
        return false;
    }
    // A file of an older program has no such table. If it cannot be made, the insertion fails and
    // says so.
    CreateManufacturerTable();
    const SqliteTextPtr query(
        sqlite3_mprintf("INSERT INTO bt_manufacturer_data VALUES( %Q, %Q, %d )", address.c_str(),
                        data.c_str(), linkType));
    if (!Insert(BTLOG_HERE, query.get())) {
        return false;
    }
    addToManufacturerDataCache(address, data, linkType);
    return true;
}

bool BTDatabaseManager::getManufacturerData(const std::string& address, std::string& data,
                                            int& linkType) {
    if (!IsAddress(BTLOG_HERE, address) || !IsOpen(BTLOG_HERE)) {
        return false;
    }
    if (m_manufacturerDataCache->get(address, data, linkType)) {
        return true;
    }
    const StatementPtr row = FirstRow(BTLOG_HERE, SelectText(address));
    if (!row) {
        return false;
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row.get(), 1));
    if (text == nullptr) {
        BTLOG_ERROR("Manufacturer_data is NULL");
        return false;
    }
    data.assign(text, static_cast<std::size_t>(sqlite3_column_bytes(row.get(), 1)));
    linkType = sqlite3_column_int(row.get(), 2);
    return true;
}

bool BTDatabaseManager::isManufacturerRecordExist(const std::string& address) {
    if (!IsAddress(BTLOG_HERE, address) || !IsOpen(BTLOG_HERE)) {
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
    if (!IsAddress(BTLOG_HERE, address) || !IsOpen(BTLOG_HERE)) {
        return false;
    }
    const std::string query =
        "DELETE from bt_manufacturer_data where Remote_address = '" + address + "';";
    BTLOG_DEBUG("DELETE query = %s", query.c_str());
    deleteToManufacturerDataCache(address);
    return Execute(BTLOG_HERE, query.c_str());
}

bool BTDatabaseManager::getAbsVolConnectedHistory(const std::string& address) {
    if (!IsAddress(BTLOG_HERE, address)) {
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
    StatementPtr row;
    const Outcome outcome =
        TakeFirstStep("select * from volume_info where address = '" + address + "';", row);
    if (outcome == Outcome::kPrepareFailed) {
        BTLOG_ERROR("exception : %s", "sqlite3_prepare_v2 failed");
    } else if (outcome == Outcome::kStepFailed) {
        BTLOG_ERROR("exception : %s", "sqlite3_step failed");
    }
    const bool hasConnected = outcome == Outcome::kRow && sqlite3_column_int(row.get(), 1) != 0;
    row.reset();
    CloseDatabase();
    return hasConnected;
}

void BTDatabaseManager::setAbsVolConnectedHistory(const std::string& address) {
    if (!IsAddress(BTLOG_HERE, address)) {
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
    const SqliteTextPtr query(
        sqlite3_mprintf("INSERT INTO volume_info VALUES( %Q, 1 )", address.c_str()));
    if (Run(query.get()) != SQLITE_OK) {
        BTLOG_ERROR("exception : %s", "sqlite3_exec failed");
    }
    CloseDatabase();
}

bool BTDatabaseManager::DeleteVolInfo(const std::string& address) {
    return IsAddress(BTLOG_HERE, address) && IsOpen(BTLOG_HERE) &&
           Delete(BTLOG_HERE, "DELETE from volume_info  where address = '" + address + "';");
}
