// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "common/CHandle.h"

namespace TvSim {

// Reads the keys of one section. A key that is absent leaves its target as it is; the first one
// that is malformed, and by Finish() the first one that nobody asked for, sets the error.
class KeyReader {
public:
    // `error` is set once, when it is empty. Both must outlive the reader.
    KeyReader(GKeyFile* file, std::string section, std::string& error);

    void Read(const char* key, std::string& target);
    void Read(const char* key, bool& target);
    // A decimal or 0x number from `least` to `most`.
    void Read(const char* key, int& target, int least, int most);
    void Read(const char* key, std::vector<std::string>& target);  // separated by ';'
    // `parse` answers whether the text was fine; `wanted` says what is.
    void Read(const char* key, const char* wanted,
              const std::function<bool(const std::string& text)>& parse);
    void Finish();
    void Fail(const std::string& key, const std::string& problem);

private:
    GKeyFile* m_file;  // not owned
    std::string m_section;
    std::string& m_error;
    std::set<std::string> m_known;
};

// The whole text as a number; false and `number` untouched when it is none or out of range.
[[nodiscard]] bool ParseNumber(const std::string& text, long least, long most, long& number);

}  // namespace TvSim
