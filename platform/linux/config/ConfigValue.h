// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Platform {

enum class ConfigType { kString, kBool, kInt };

// "string", "bool" or "int".
inline const char* NameOf(ConfigType type) {
    static constexpr const char* kNames[] = {"string", "bool", "int"};
    return kNames[static_cast<int>(type)];
}
inline std::optional<ConfigType> TypeNamed(const std::string& name) {
    for (const ConfigType type : {ConfigType::kString, ConfigType::kBool, ConfigType::kInt}) {
        if (name == NameOf(type)) {
            return type;
        }
    }
    return std::nullopt;
}

// A typed value: `text` of a string, `number` of a bool or an int. A bool may hold any int.
struct ConfigValue {
    ConfigType type = ConfigType::kString;
    std::string text;
    int number = 0;

    bool operator==(const ConfigValue& other) const {
        return type == other.type && text == other.text && number == other.number;
    }
};

struct ConfigEntry {
    std::string key;
    ConfigValue value;
};

enum class ConfigStatus {
    kOk,
    kAbsent,    // the key was never written, or was unset
    kNoFile,    // nothing was ever written here; logged for a durable file
    kChanged,   // the key was written since the caller read it
    kBusy,      // another process holds the file; logged when that began, worth another attempt
    kTooLarge,  // the key with its value has more than 1 MiB; logged
    kFailed     // the file cannot be used, or went away; logged when that began
};

// Whether nothing is known of the key, not even that it is absent.
inline bool IsFailure(ConfigStatus status) {
    return status == ConfigStatus::kBusy || status == ConfigStatus::kTooLarge ||
           status == ConfigStatus::kFailed;
}

struct ConfigLookup {
    ConfigStatus status = ConfigStatus::kFailed;
    ConfigValue value;     // when status is kOk
    int64_t revision = 0;  // of the last change of the key, never used twice; 0 when absent
    int64_t row = 0;       // where the key is; 0 when absent

    [[nodiscard]] bool Holds(ConfigType type) const {
        return status == ConfigStatus::kOk && value.type == type;
    }
};

}  // namespace Platform
