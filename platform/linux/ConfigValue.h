// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace Platform {

enum class ConfigType { kString, kBool, kInt };

// A typed value: `text` of a string, `number` of a bool or an int. A bool may hold any int.
struct ConfigValue {
    ConfigType type = ConfigType::kString;
    std::string text;
    int number = 0;
};

struct ConfigEntry {
    std::string key;
    ConfigValue value;
};

enum class ConfigStatus {
    kOk,
    kAbsent,   // the key was never written, or was unset
    kNoFile,   // nothing was ever written here, or the file went away, which is then logged
    kChanged,  // the key was written since the caller read it
    kBusy,     // another process holds the file; logged when that began, worth another attempt
    kFailed    // the file cannot be used; logged when that began
};

struct ConfigLookup {
    ConfigStatus status = ConfigStatus::kFailed;
    ConfigValue value;     // when status is kOk
    int64_t revision = 0;  // of the last write to the key, never used twice; 0 when absent
};

}  // namespace Platform
