// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/BTDatabaseManager.h"

#include <unistd.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <new>

#include "platform/database.h"
#include "utility/AppDataUtil.h"
#include "utility/CommonUtil.h"

// The life of the file and of the connection. The record operations are in BTDatabaseDevices.cpp
// and BTDatabaseManufacturer.cpp.

namespace {

using Util::AppDataUtil;

// Whether the name is safe in a statement without quotes.
bool IsPlainName(const std::string& name) {
    const auto isPlain = [](char c) { return g_ascii_isalnum(c) || c == '_'; };
    return !name.empty() && std::all_of(name.begin(), name.end(), isPlain);
}

}  // namespace

BTDatabaseManager* BTDatabaseManager::getInstance() {
    static BTDatabaseManager* instance = nullptr;
    if (instance != nullptr) {
        return instance;
    }
    instance = new (std::nothrow) BTDatabaseManager;
    if (instance == nullptr) {
        BTLOG_INFO("aObject NOT Created");
    }
    BTLOG_INFO("BTDatabaseManager aObject Created");
    return instance;
}

bool BTDatabaseManager::PrepareDatabase() {
    boost::system::error_code ignored;
    if (exists(boost::filesystem::status(AppDataUtil::GetAppDataFilePath(m_fileName), ignored))) {
        return true;
    }
    BTLOG_DEBUG("Database does not exist. make new db file");
    if (!OpenDatabase() || !CreateTable() || !CreateManufacturerTable() ||
        !CreateVolumeInfoTable()) {
        return false;
    }
    CloseDatabase();
    return true;
}

bool BTDatabaseManager::OpenDatabase() {
    const std::string path = AppDataUtil::GetAppDataFilePath(m_fileName);
    m_db.reset();
    m_lastResult = db_util_open(path.c_str(), Out(m_db), DB_UTIL_REGISTER_HOOK_METHOD);
    if (m_lastResult != SQLITE_OK) {
        BTLOG_ERROR("Can't open database: %s", sqlite3_errstr(m_lastResult));
        return false;
    }
    m_hasBeenOpen = true;
    return true;
}

bool BTDatabaseManager::CloseDatabase() {
    if (!m_hasBeenOpen) {
        BTLOG_ERROR("%s", "m_db is NULL");
        return false;
    }
    m_db.reset();
    return true;
}

bool BTDatabaseManager::CreateTable() {
    return Create(
        BTLOG_HERE,
        "create table IF NOT EXISTS bt_device_info (Remote_address TEXT PRIMARY KEY, "
        "Remote_name TEXT, Use_type INTEGER, bt_status INTEGER, Profile_type INTEGER, "
        "Device_type INTEGER, Sevice_name TEXT, Provider_name TEXT, vid INTEGER, pid INTEGER);");
}

bool BTDatabaseManager::CreateManufacturerTable() {
    return Create(BTLOG_HERE,
                  "create table IF NOT EXISTS bt_manufacturer_data (Remote_address TEXT PRIMARY "
                  "KEY, Manufacturer_data TEXT, link_type INTEGER);");
}

bool BTDatabaseManager::CreateVolumeInfoTable() {
    return Create(BTLOG_HERE,
                  "create table IF NOT EXISTS volume_info (address TEXT PRIMARY KEY, "
                  "absvol_connect_history INTEGER);");
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool BTDatabaseManager::IsTableExist(std::string table) {
    if (!IsOpen(BTLOG_HERE)) {
        return false;
    }
    if (!IsPlainName(table)) {
        BTLOG_ERROR("%s", "table name is not valid");
        return false;
    }
    // A row for each column; a table that does not exist has none.
    return FirstRow(BTLOG_HERE, "pragma table_info(" + table + ");") != nullptr;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool BTDatabaseManager::DropTable(std::string table) {
    if (!IsOpen(BTLOG_HERE)) {
        return false;
    }
    const SqliteTextPtr query(sqlite3_mprintf("DROP TABLE %Q", table.c_str()));
    BTLOG_DEBUG("query : %s", query.get());
    return Execute(BTLOG_HERE, query.get(), "");
}

void BTDatabaseManager::DeleteDBFiles() {
    const std::string path = AppDataUtil::GetAppDataFilePath(m_fileName);
    for (const std::string& file :
         {path, path + "-journal", AppDataUtil::GetAppDataFilePath("SoundMirroingStatus.txt")}) {
        if (access(file.c_str(), F_OK) == 0) {
            static_cast<void>(std::remove(file.c_str()));
        }
    }
}

bool BTDatabaseManager::IsOpen(const LogPlace& place) const {
    if (!m_db) {
        BTLOG_FOR(place, DLOG_ERROR, "%s", "m_db is NULL");
    }
    return m_db != nullptr;
}

bool BTDatabaseManager::IsAddress(const LogPlace& place, const std::string& address) {
    const bool isAddress = Util::CommonUtil::IsValidAddress(address);
    if (!isAddress) {
        BTLOG_FOR(place, DLOG_ERROR, "%s", "address is not valid");
    }
    return isAddress;
}

int BTDatabaseManager::Run(const char* statement) {
    // SQLite would treat NULL as an empty statement, which succeeds.
    m_lastResult = statement == nullptr
                       ? SQLITE_NOMEM
                       : sqlite3_exec(m_db.get(), statement, nullptr, nullptr, nullptr);
    return m_lastResult;
}

bool BTDatabaseManager::Execute(const LogPlace& place, const char* statement, const char* failure) {
    if (Run(statement) != SQLITE_OK) {
        BTLOG_FOR(place, DLOG_ERROR, "%s%s", failure, ErrorText());
    }
    return m_lastResult == SQLITE_OK;
}

bool BTDatabaseManager::Create(const LogPlace& place, const char* statement) {
    if (!IsOpen(place)) {
        return false;
    }
    BTLOG_FOR(place, DLOG_INFO, "CREATE TABLE query = %s", statement);
    return Execute(place, statement, "Table ");
}

bool BTDatabaseManager::Insert(const LogPlace& place, const char* statement) {
    BTLOG_FOR(place, DLOG_DEBUG, "query : %s", statement);
    if (!Execute(place, statement, "Error executing SQLite3 INSERT statement:: ")) {
        BTLOG_FOR(place, DLOG_ERROR, "INSERT Record Fail");
        return false;
    }
    BTLOG_FOR(place, DLOG_INFO, "INSERT Record Successfully");
    return true;
}

bool BTDatabaseManager::Delete(const LogPlace& place, const std::string& statement) {
    BTLOG_FOR(place, DLOG_DEBUG, "DELETE query = %s", statement.c_str());
    return Execute(place, statement.c_str());
}

BTDatabaseManager::Outcome BTDatabaseManager::Step(sqlite3_stmt* statement) {
    m_lastResult = sqlite3_step(statement);
    return m_lastResult == SQLITE_ROW    ? Outcome::kRow
           : m_lastResult == SQLITE_DONE ? Outcome::kDone
                                         : Outcome::kStepFailed;
}

BTDatabaseManager::Outcome BTDatabaseManager::TakeFirstStep(const std::string& query,
                                                            StatementPtr& statement) {
    m_lastResult = sqlite3_prepare_v2(m_db.get(), query.c_str(), -1, Out(statement), nullptr);
    return m_lastResult == SQLITE_OK ? Step(statement.get()) : Outcome::kPrepareFailed;
}

StatementPtr BTDatabaseManager::FirstRow(const LogPlace& place, const std::string& query) {
    StatementPtr statement;
    const Outcome outcome = TakeFirstStep(query, statement);
    if (LogFailure(place, outcome) || outcome == Outcome::kDone) {
        statement.reset();
    }
    return statement;
}

BTDatabaseManager::Outcome BTDatabaseManager::ForEachRow(
    const std::string& query, const std::function<void(sqlite3_stmt*)>& visit) {
    StatementPtr statement;
    Outcome outcome = TakeFirstStep(query, statement);
    while (outcome == Outcome::kRow) {
        visit(statement.get());
        outcome = Step(statement.get());
    }
    return outcome;
}

bool BTDatabaseManager::LogFailure(const LogPlace& place, Outcome outcome) const {
    if (outcome == Outcome::kPrepareFailed) {
        BTLOG_FOR(place, DLOG_ERROR, "Error on sqlite3_prepare_v2: %s", ErrorText());
    } else if (outcome == Outcome::kStepFailed) {
        BTLOG_FOR(place, DLOG_ERROR, "Error on sqlite3_step: %s", ErrorText());
    } else {
        return false;
    }
    return true;
}

const char* BTDatabaseManager::ErrorText() const {
    return sqlite3_errmsg(m_db.get());
}

const char* BTDatabaseManager::ColumnName(bt_db_fields_e field) const {
    return m_columnNames[static_cast<std::size_t>(field)].c_str();
}
