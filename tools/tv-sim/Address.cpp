// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Address.h"

#include <glib.h>

namespace TvSim {

bool IsAddress(const std::string& text) {
    if (text.size() != 17) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 == 2 ? text[i] != ':' : g_ascii_isxdigit(text[i]) == FALSE) {
            return false;
        }
    }
    return true;
}

std::string UpperCase(std::string text) {
    for (char& letter : text) {
        letter = g_ascii_toupper(letter);
    }
    return text;
}

bool ParseBytes(const std::string& hexadecimal, std::vector<unsigned char>& bytes) {
    std::vector<unsigned char> result;
    for (std::size_t i = 0; i < hexadecimal.size(); i += 2) {
        const int high = g_ascii_xdigit_value(hexadecimal[i]);
        const int low = i + 1 < hexadecimal.size() ? g_ascii_xdigit_value(hexadecimal[i + 1]) : -1;
        if (high < 0 || low < 0) {
            return false;
        }
        result.push_back(static_cast<unsigned char>(high * 16 + low));
    }
    bytes = std::move(result);
    return true;
}

std::vector<unsigned char> AddressBytes(const std::string& address) {
    std::string digits;
    for (const char letter : address) {
        if (letter != ':') {
            digits += letter;
        }
    }
    std::vector<unsigned char> bytes;
    return ParseBytes(digits, bytes) ? bytes : std::vector<unsigned char>(6, 0);
}

std::uint64_t Mix(std::uint64_t seed) {
    // splitmix64
    std::uint64_t value = seed + 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

std::string PrivateAddress(std::uint64_t seed) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::uint64_t bits = Mix(seed);
    std::string address;
    for (int group = 0; group < 6; ++group) {
        auto value = static_cast<unsigned>(bits & 0xFFU);
        bits >>= 8U;
        if (group == 0) {
            value = (value & 0x3FU) | 0x40U;  // the two bits that mark a resolvable address
        } else {
            address += ':';
        }
        address += kDigits[value >> 4U];
        address += kDigits[value & 0xFU];
    }
    return address;
}

}  // namespace TvSim
