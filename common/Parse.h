// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <optional>
#include <string>

// Values as files and commands have them in text.

// Of "true" and "false".
[[nodiscard]] inline std::optional<bool> ParseBool(const std::string& text) {
    return text == "true" || text == "false" ? std::optional(text == "true") : std::nullopt;
}

// Of a decimal integer, nothing before or after it, that an int can hold.
[[nodiscard]] inline std::optional<int> ParseInt(const std::string& text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    const bool isWhole = !text.empty() && parsed.ec == std::errc() && parsed.ptr == end;
    return isWhole ? std::optional(number) : std::nullopt;
}
