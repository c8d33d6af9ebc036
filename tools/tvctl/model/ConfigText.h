// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <optional>
#include <string>

#include "platform/linux/config/ConfigStore.h"

namespace Tvctl {

// Configuration keys and their values as an engineer types and reads them.

// The key that a word means, by its name or by the number of a well-known key; nothing when there
// is no such key.
[[nodiscard]] std::optional<std::string> KeyMeant(const std::string& word);

// The type that a text without one looks like.
[[nodiscard]] Platform::ConfigType GuessType(const std::string& text);

// Nothing when the text is not a value of the type; NotOfType says so.
[[nodiscard]] std::optional<Platform::ConfigValue> ParseValue(Platform::ConfigType type,
                                                              const std::string& text);
[[nodiscard]] std::string NotOfType(Platform::ConfigType type, const std::string& text);
[[nodiscard]] Json::Value ToJson(const Platform::ConfigValue& value);
[[nodiscard]] std::string TextOf(const Platform::ConfigValue& value);

// One line without its end: key, type and value with a tab between them.
[[nodiscard]] std::string LineOf(const Platform::ConfigEntry& entry);
// Reads such a line, or one that was typed with blanks between the three; the value is the rest of
// the line and may be empty. Returns "", or what is wrong with the line and leaves `entry` as it
// is.
[[nodiscard]] std::string ParseLine(const std::string& line, Platform::ConfigEntry& entry);

}  // namespace Tvctl
