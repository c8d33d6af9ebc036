// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The bytes of an input as the targets take them apart.

inline std::string TextOf(const std::uint8_t* data, std::size_t size) {
    return size == 0 ? "" : std::string(reinterpret_cast<const char*>(data), size);
}

// As std::getline gives them.
inline std::vector<std::string> LinesOf(const std::uint8_t* data, std::size_t size) {
    const std::string text = TextOf(data, size);
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}
