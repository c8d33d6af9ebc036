// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/KeyReader.h"

#include <cerrno>
#include <cstdlib>

namespace TvSim {

bool ParseNumber(const std::string& text, long least, long most, long& number) {
    const bool hexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, hexadecimal ? 16 : 10);
    if (text.empty() || *end != '\0' || errno != 0 || value < least || value > most) {
        return false;
    }
    number = value;
    return true;
}

KeyReader::KeyReader(GKeyFile* file, std::string section, std::string& error)
    : m_file(file), m_section(std::move(section)), m_error(error) {}

void KeyReader::Read(const char* key, std::string& target) {
    Read(key, "a text", [&](const std::string& text) {
        target = text;
        return true;
    });
}

void KeyReader::Read(const char* key, bool& target) {
    Read(key, "true or false", [&](const std::string& text) {
        target = text == "true";
        return text == "true" || text == "false";
    });
}

void KeyReader::Read(const char* key, int& target, int least, int most) {
    const std::string wanted =
        "a number from " + std::to_string(least) + " to " + std::to_string(most);
    Read(key, wanted.c_str(), [&](const std::string& text) {
        long number = 0;
        if (!ParseNumber(text, least, most, number)) {
            return false;
        }
        target = static_cast<int>(number);
        return true;
    });
}

void KeyReader::Read(const char* key, std::vector<std::string>& target) {
    m_known.insert(key);
    const GStrvPtr list(
        g_key_file_get_string_list(m_file, m_section.c_str(), key, nullptr, nullptr));
    if (list == nullptr) {
        return;
    }
    target.clear();
    for (char** item = list.get(); *item != nullptr; ++item) {
        target.emplace_back(*item);
    }
}

void KeyReader::Read(const char* key, const char* wanted,
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

void KeyReader::Finish() {
    const GStrvPtr keys(g_key_file_get_keys(m_file, m_section.c_str(), nullptr, nullptr));
    for (char** key = keys.get(); key != nullptr && *key != nullptr; ++key) {
        if (m_known.count(*key) == 0) {
            Fail(*key, "is not a key of this section");
        }
    }
}

void KeyReader::Fail(const std::string& key, const std::string& problem) {
    if (m_error.empty()) {
        m_error = "[" + m_section + "] " + key + ": " + problem;
    }
}

}  // namespace TvSim
