// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/CHandle.h"
#include "tools/tv-sim/Scenario.h"

namespace TvSim {

// The whole text as a decimal or 0x number; empty when it is not one or is out of range.
inline std::optional<long> ParseNumber(const std::string& text, long least, long most) {
    const bool hexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, hexadecimal ? 16 : 10);
    if (text.empty() || *end != '\0' || errno != 0 || value < least || value > most) {
        return std::nullopt;
    }
    return value;
}

// Reads the keys of one section. A key that is absent leaves its target as it is; the first one
// that is malformed, and by Finish() the first one that nobody asked for, sets the error.
class KeyReader {
public:
    // `error` is set once, when it is empty. Both must outlive the reader.
    KeyReader(GKeyFile* file, std::string section, std::string& error)
        : m_file(file), m_section(std::move(section)), m_error(error) {}

    // `parse` answers whether the text was fine; `wanted` says what is.
    void Read(const char* key, const std::string& wanted,
              const std::function<bool(const std::string& text)>& parse) {
        m_known.insert(key);
        if (g_key_file_has_key(m_file, m_section.c_str(), key, nullptr) == FALSE) {
            return;
        }
        const GStringPtr text(g_key_file_get_string(m_file, m_section.c_str(), key, nullptr));
        if (text == nullptr) {
            Fail(key, "holds a malformed text");
        } else if (!parse(text.get())) {
            Fail(key, "'" + std::string(text.get()) + "' is not " + wanted);
        }
    }

    // Any text.
    template <typename Text>
    void Read(const char* key, Text& target) {
        Read(key, "", [&](const std::string& text) {
            target = text;
            return true;
        });
    }

    void Read(const char* key, const char* wanted, const std::set<std::string>& values,
              std::string& target) {
        Read(key, wanted, [&](const std::string& text) {
            target = text;
            return values.count(text) != 0;
        });
    }

    void Read(const char* key, bool& target) {
        Read(key, "true or false", [&](const std::string& text) {
            target = text == "true";
            return text == "true" || text == "false";
        });
    }

    template <typename Number>
    void Read(const char* key, Number& target, long least, long most) {
        Read(key, "a number from " + std::to_string(least) + " to " + std::to_string(most),
             [&](const std::string& text) {
                 const std::optional<long> number = ParseNumber(text, least, most);
                 target = static_cast<Number>(number.value_or(least));
                 return number.has_value();
             });
    }

    // Items separated by ';'.
    void Read(const char* key, std::vector<std::string>& target) {
        m_known.insert(key);
        const GStrvPtr list(
            g_key_file_get_string_list(m_file, m_section.c_str(), key, nullptr, nullptr));
        if (list != nullptr) {
            target.assign(list.get(), list.get() + g_strv_length(list.get()));
        }
    }

    // NAME<separator>VALUE items, separated by ';'.
    void Read(const char* key, char separator, Pairs& pairs) {
        std::vector<std::string> items;
        Read(key, items);
        for (const std::string& item : items) {
            const std::size_t at = item.find(separator);
            if (at == std::string::npos || at == 0) {
                Fail(key, "'" + item + "' is not NAME" + std::string(1, separator) + "VALUE");
                return;
            }
            pairs.emplace_back(item.substr(0, at), item.substr(at + 1));
        }
    }

    // The keys of the section, in their order.
    [[nodiscard]] std::vector<std::string> Keys() const {
        const GStrvPtr keys(g_key_file_get_keys(m_file, m_section.c_str(), nullptr, nullptr));
        return keys == nullptr
                   ? std::vector<std::string>()
                   : std::vector<std::string>(keys.get(), keys.get() + g_strv_length(keys.get()));
    }

    void Finish() {
        for (const std::string& key : Keys()) {
            if (m_known.count(key) == 0) {
                Fail(key, "is not a key of this section");
            }
        }
    }

    void Fail(const std::string& key, const std::string& problem) {
        if (m_error.empty()) {
            m_error = "[" + m_section + "] " + key + ": " + problem;
        }
    }

private:
    GKeyFile* m_file;  // not owned
    std::string m_section;
    std::string& m_error;
    std::set<std::string> m_known;
};

}  // namespace TvSim
