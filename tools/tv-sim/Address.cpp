// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Address.h"

#include "common/Address.h"

namespace TvSim {

bool ParseAddress(const std::string& text, std::string& address) {
    if (!IsAddress(text)) {
        return false;
    }
    address = CanonicalAddress(text.c_str());
    return true;
}

bool ParseBytes(const std::string& hexadecimal, std::vector<unsigned char>& bytes) {
    bytes.clear();
    for (std::size_t i = 0; i < hexadecimal.size(); i += 2) {
        const int high = g_ascii_xdigit_value(hexadecimal[i]);
        const int low = i + 1 < hexadecimal.size() ? g_ascii_xdigit_value(hexadecimal[i + 1]) : -1;
        if (high < 0 || low < 0) {
            return false;
        }
        bytes.push_back(static_cast<unsigned char>(high * 16 + low));
    }
    return true;
}

std::uint64_t Mix(std::uint64_t seed) {
    // splitmix64
    std::uint64_t value = seed + 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

std::string PrivateAddress(std::uint64_t seed) {
    // The two bits that mark a resolvable address are those of its first group.
    const std::uint64_t bits = (Mix(seed) & ~std::uint64_t{0xC0}) | 0x40U;
    std::uint8_t bytes[6];
    for (unsigned group = 0; group < 6; ++group) {
        bytes[group] = static_cast<std::uint8_t>(bits >> 8 * group);
    }
    return FormatAddress(bytes);
}

}  // namespace TvSim
