// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/ConfigStore.h"

#include <iterator>
#include <string_view>
#include <utility>

#include "platform/linux/base/RootPath.h"

namespace Platform {

namespace {

bool IsBelow(const std::string& key, std::string_view prefix) {
    return key.size() > prefix.size() && key.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

ConfigStore& ConfigStore::Instance() {
    static ConfigStore& store = *new ConfigStore();
    return store;
}

ConfigStore::ConfigStore()
    : m_durable(StateFolder(), ConfigFile::Kind::kDurable),
      m_volatile(RunFolder(), ConfigFile::Kind::kVolatile) {}

ConfigFile* ConfigStore::FileOf(const std::string& key) {
    if (IsBelow(key, "db/")) {
        return &m_durable;
    }
    return IsBelow(key, "memory/") ? &m_volatile : nullptr;
}

ConfigLookup ConfigStore::Lookup(const std::string& key) {
    ConfigFile* file = FileOf(key);
    return file != nullptr ? file->Lookup(key) : ConfigLookup();
}

ConfigStatus ConfigStore::Store(const std::string& key, const ConfigValue& value,
                                std::optional<int64_t> expectedRevision) {
    ConfigFile* file = FileOf(key);
    return file != nullptr ? file->Store(key, value, expectedRevision) : ConfigStatus::kFailed;
}

ConfigStatus ConfigStore::Unset(const std::string& key) {
    ConfigFile* file = FileOf(key);
    return file != nullptr ? file->Remove(key) : ConfigStatus::kFailed;
}

std::optional<std::string> ConfigStore::GetString(const std::string& key) {
    ConfigLookup lookup = Lookup(key);
    return lookup.Holds(ConfigType::kString) ? std::optional(std::move(lookup.value.text))
                                             : std::nullopt;
}

std::optional<int> ConfigStore::GetInt(const std::string& key) {
    const ConfigLookup lookup = Lookup(key);
    return lookup.Holds(ConfigType::kInt) ? std::optional(lookup.value.number) : std::nullopt;
}

bool ConfigStore::SetInt(const std::string& key, int number) {
    return Store(key, {ConfigType::kInt, {}, number}) == ConfigStatus::kOk;
}

std::optional<std::vector<ConfigEntry>> ConfigStore::List() {
    auto entries = m_durable.List();
    auto more = m_volatile.List();
    if (!entries || !more) {
        return std::nullopt;
    }
    entries->insert(entries->end(), std::make_move_iterator(more->begin()),
                    std::make_move_iterator(more->end()));
    return entries;
}

std::string ConfigStore::LastFailure(const std::string& key) {
    ConfigFile* file = FileOf(key);
    return file != nullptr ? file->LastFailure() : "unknown key: " + key;
}

std::string ConfigStore::LastFailure() {
    const std::string durable = m_durable.LastFailure();
    return !durable.empty() ? durable : m_volatile.LastFailure();
}

}  // namespace Platform
