// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <cstddef>
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
