// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "platform/linux/config/ConfigStore.h"

namespace Tvctl {

// Configuration keys and their values as an engineer types and reads them.

// "string", "bool" or "int".
[[nodiscard]] const char* NameOf(Platform::ConfigType type);
[[nodiscard]] std::optional<Platform::ConfigType> TypeNamed(const std::string& name);

// The key that a word means, which is its name or the number of a well-known one; nothing when it
// means none.
[[nodiscard]] std::optional<std::string> KeyMeant(const std::string& word);

// Nothing when the text is no value of the type.
[[nodiscard]] std::optional<Platform::ConfigValue> ParseValue(Platform::ConfigType type,
                                                              const std::string& text);
[[nodiscard]] std::string TextOf(const Platform::ConfigValue& value);

// One line without its end: key, type and value with a tab between them.
[[nodiscard]] std::string LineOf(const Platform::ConfigEntry& entry);
// Reads such a line, or one that was typed with blanks between the three; the value is the rest of
// the line and may be empty. What is wrong with the line when `entry` was left as it is, else
// empty.
[[nodiscard]] std::string ParseLine(const std::string& line, Platform::ConfigEntry& entry);

}  // namespace Tvctl
