// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <tuple>

// LE manufacturer data of devices, by address as it is written, with the link type. Data and link
// type are kept as the writer gave them. One thread at a time.
class ManufacturerDataCache {
public:
    bool isExist(const std::string& address);

    // Whether the entry was added: one that is there already keeps its first value.
    bool insert(const std::string& address, const std::string& data, int linkType);

    // False, and the outputs untouched, when there is no entry.
    bool get(const std::string& address, std::string& data, int& linkType);

    // Whether there was an entry to erase.
    bool del(const std::string& address);

private:
    std::map<std::string, std::tuple<std::string, int>> m_entries;
};
