// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/ManufacturerDataCache.h"

#include "autoconnect/src/AutoConnectDbg.h"

bool ManufacturerDataCache::isExist(const std::string& address) {
    BTLOG_TRACE();
    const bool exists = m_entries.find(address) != m_entries.end();
    BTLOG_INFO("%s %s", address.c_str(), exists ? "exist" : "does not exist");
    return exists;
}

bool ManufacturerDataCache::insert(const std::string& address, const std::string& data,
                                   int linkType) {
    BTLOG_TRACE();
    BTLOG_INFO("address : %s, manufacturerData : %s, linkType : %d", address.c_str(), data.c_str(),
               linkType);
    return m_entries.emplace(address, std::make_tuple(data, linkType)).second;
}

bool ManufacturerDataCache::get(const std::string& address, std::string& data, int& linkType) {
    BTLOG_TRACE();
    const auto entry = m_entries.find(address);
    if (entry == m_entries.end()) {
        BTLOG_INFO("fail to get %s", address.c_str());
        return false;
    }
    std::tie(data, linkType) = entry->second;
    BTLOG_INFO("address : %s, manufacturerData : %s, linkType : %d", address.c_str(), data.c_str(),
               linkType);
    return true;
}

bool ManufacturerDataCache::del(const std::string& address) {
    BTLOG_TRACE();
    BTLOG_INFO("address : %s", address.c_str());
    if (m_entries.erase(address) == 0) {
        BTLOG_INFO("fail to delete : %s", address.c_str());
        return false;
    }
    return true;
}
