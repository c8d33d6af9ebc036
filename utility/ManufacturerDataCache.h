// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <tuple>

// The LE manufacturer data and the link type of devices, by address as it is written. One thread at
// a time.
class ManufacturerDataCache {
public:
    bool isExist(const std::string& address);

    // Whether the entry was added: an existing one keeps its value.
    bool insert(const std::string& address, const std::string& data, int linkType);

    // False when there is no entry; the outputs then stay as they are.
    bool get(const std::string& address, std::string& data, int& linkType);

    // Whether there was an entry to erase.
    bool del(const std::string& address);

private:
    std::map<std::string, std::tuple<std::string, int>> m_entries;
};
