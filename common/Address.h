// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The number of characters of a Bluetooth address as text.
inline constexpr std::size_t kAddressLength = 17;

// Whether `text` is a Bluetooth address: six two-digit hexadecimal groups, either case, joined by
// ":", and nothing else.
inline bool IsAddress(std::string_view text) {
    bool isAddress = text.size() == kAddressLength;
    for (std::size_t i = 0; isAddress && i < text.size(); ++i) {
        isAddress = i % 3 == 2 ? text[i] == ':' : g_ascii_isxdigit(text[i]) != FALSE;
    }
    return isAddress;
}

// The address in upper case; empty when the text, which may be NULL, is not one.
inline std::string CanonicalAddress(const char* text) {
    std::string address = text != nullptr && IsAddress(text) ? text : "";
    for (char& c : address) {
        c = g_ascii_toupper(c);
    }
    return address;
}

using AddressBytes = std::array<std::uint8_t, 6>;

// The six bytes of an address, the first group first; zeros when the text is not one.
inline AddressBytes ParseAddressBytes(std::string_view text) {
    AddressBytes bytes = {};
    for (std::size_t i = 0; IsAddress(text) && i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(g_ascii_xdigit_value(text[3 * i]) * 16 +
                                             g_ascii_xdigit_value(text[3 * i + 1]));
    }
    return bytes;
}

// The text, in upper case, of the six bytes of an address; the first group comes first.
inline std::string FormatAddress(const std::uint8_t* bytes) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string address(kAddressLength, ':');
    for (std::size_t i = 0; i < 6; ++i) {
        address[3 * i] = kDigits[bytes[i] >> 4];
        address[3 * i + 1] = kDigits[bytes[i] & 0x0F];
    }
    return address;
}
