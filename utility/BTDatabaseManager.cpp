// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/BTDatabaseManager.h"

#include <unistd.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <new>

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/database.h"
#include "utility/AppDataUtil.h"
#include "utility/CommonUtil.h"

// The life of the file and of the connection. The record operations are in BTDatabaseDevices.cpp
// and BTDatabaseManufacturer.cpp.

namespace {

using Util::AppDataUtil;

// Such a name can stand unquoted in a statement.
bool IsPlainName(const std::string& name) {
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               c == '_';
    };
    return !name.empty() && std::all_of(name.begin(), name.end(), isPlain);
}

}  // namespace

// Compared by address, so there is one of each.
const char* const BTDatabaseManager::kPrepareFailed = "Error on sqlite3_prepare_v2: ";
const char* const BTDatabaseManager::kStepFailed = "Error on sqlite3_step: ";

BTDatabaseManager::BTDatabaseManager()
    : m_manufacturerDataCache(std::make_unique<ManufacturerDataCache>()),
      m_fileName("BT_Connection_record.db"),
      m_columnNames({"Remote_address", "Remote_name", "Use_type", "bt_status", "Profile_type",
                     "Device_type", "Sevice_name", "Provider_name", "vid", "pid"}) {}

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
    const char* query =
        "create table IF NOT EXISTS bt_device_info (Remote_address TEXT PRIMARY KEY, "
        "Remote_name TEXT, Use_type INTEGER, bt_status INTEGER, Profile_type INTEGER, "
        "Device_type INTEGER, Sevice_name TEXT, Provider_name TEXT, vid INTEGER, pid INTEGER);";
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    BTLOG_INFO("CREATE TABLE query = %s", query);
    if (Execute(query) != SQLITE_OK) {
        BTLOG_ERROR("Table %s", ErrorText());
        return false;
    }
    return true;
}

bool BTDatabaseManager::CreateManufacturerTable() {
    const char* query =
        "create table IF NOT EXISTS bt_manufacturer_data (Remote_address TEXT PRIMARY KEY, "
        "Manufacturer_data TEXT, link_type INTEGER);";
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    BTLOG_INFO("CREATE TABLE query = %s", query);
    if (Execute(query) != SQLITE_OK) {
        BTLOG_ERROR("Table %s", ErrorText());
        return false;
    }
    return true;
}

bool BTDatabaseManager::CreateVolumeInfoTable() {
    const char* query =
        "create table IF NOT EXISTS volume_info (address TEXT PRIMARY KEY, "
        "absvol_connect_history INTEGER);";
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    BTLOG_INFO("CREATE TABLE query = %s", query);
    if (Execute(query) != SQLITE_OK) {
        BTLOG_ERROR("Table %s", ErrorText());
        return false;
    }
    return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool BTDatabaseManager::IsTableExist(std::string table) {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    if (!IsPlainName(table)) {
        BTLOG_ERROR("%s", "table name is not valid");
        return false;
    }
    StatementPtr statement;
    if (const char* failure = TakeFirstStep("pragma table_info(" + table + ");", statement)) {
        BTLOG_ERROR("%s%s", failure, ErrorText());
        return false;
    }
    return sqlite3_data_count(statement.get()) > 0;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool BTDatabaseManager::DropTable(std::string table) {
    if (const char* refusal = Refusal()) {
        BTLOG_ERROR("%s", refusal);
        return false;
    }
    const SqliteTextPtr query(sqlite3_mprintf("DROP TABLE %Q", table.c_str()));
    BTLOG_DEBUG("query : %s", query.get());
    if (Execute(query.get()) != SQLITE_OK) {
        BTLOG_ERROR("%s", ErrorText());
        return false;
    }
    return true;
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

const char* BTDatabaseManager::Refusal() const {
    return m_db ? nullptr : "m_db is NULL";
}

const char* BTDatabaseManager::Refusal(const std::string& address) const {
    if (const char* refusal = Refusal()) {
        return refusal;
    }
    return Util::CommonUtil::IsValidAddress(address) ? nullptr : "address is not valid";
}

int BTDatabaseManager::Execute(const char* statement) {
    // SQLite takes no text for an empty one, which succeeds.
    m_lastResult = statement == nullptr
                       ? SQLITE_NOMEM
                       : sqlite3_exec(m_db.get(), statement, nullptr, nullptr, nullptr);
    return m_lastResult;
}

int BTDatabaseManager::Step(const StatementPtr& statement) {
    m_lastResult = sqlite3_step(statement.get());
    return m_lastResult;
}

const char* BTDatabaseManager::TakeFirstStep(const std::string& query, StatementPtr& statement) {
    m_lastResult = sqlite3_prepare_v2(m_db.get(), query.c_str(), -1, Out(statement), nullptr);
    if (m_lastResult != SQLITE_OK) {
        return kPrepareFailed;
    }
    const int result = Step(statement);
    return result == SQLITE_ROW || result == SQLITE_DONE ? nullptr : kStepFailed;
}

const char* BTDatabaseManager::ForEachRow(const std::string& query,
                                          const std::function<void(sqlite3_stmt*)>& visit) {
    StatementPtr statement;
    if (const char* failure = TakeFirstStep(query, statement)) {
        return failure;
    }
    while (m_lastResult == SQLITE_ROW) {
        visit(statement.get());
        Step(statement);
    }
    return m_lastResult == SQLITE_DONE ? nullptr : kStepFailed;
}

const char* BTDatabaseManager::ErrorText() const {
    return sqlite3_errmsg(m_db.get());
}
