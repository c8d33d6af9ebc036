// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/config/ConfigFile.h"

namespace Platform {

// The configuration store of this host: keys below "db/" in one file, keys below "memory/" in
// another that the next boot does not have. Beyond the C interface it unsets and lists keys and
// reads a value whatever its type. Any thread.
class ConfigStore {
public:
    // The process's store. Never destroyed, because threads may ask while the process's static
    // objects are torn down.
    static ConfigStore& Instance();

    ConfigStore(const ConfigStore&) = delete;
    ConfigStore& operator=(const ConfigStore&) = delete;

    // The file that holds the key; nullptr when no key can have that name.
    [[nodiscard]] ConfigFile* FileOf(const std::string& key);

    [[nodiscard]] ConfigLookup Lookup(const std::string& key);
    [[nodiscard]] ConfigStatus Store(const std::string& key, const ConfigValue& value,
                                     std::optional<int64_t> expectedRevision = std::nullopt);
    [[nodiscard]] ConfigStatus Unset(const std::string& key);

    // The value of a key of that type, also nothing when it has another type or cannot be read.
    [[nodiscard]] std::optional<std::string> GetString(const std::string& key);
    [[nodiscard]] std::optional<int> GetInt(const std::string& key);
    [[nodiscard]] bool SetInt(const std::string& key, int number);

    // Every key, in order.
    [[nodiscard]] std::optional<std::vector<ConfigEntry>> List();

    // Why the last access to the key's file, or to any, failed.
    [[nodiscard]] std::string LastFailure(const std::string& key);
    [[nodiscard]] std::string LastFailure();

private:
    ConfigStore();

    ConfigFile m_durable;
    ConfigFile m_volatile;
};

}  // namespace Platform
