// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

// Makes text from outside safe to show: a device's name must not start a new line, control a
// terminal, or show its letters in a wrong order.

// Whether the character does something to a terminal instead of being shown: a control character
// (C0, C1, DEL), a line or paragraph separator, or one that changes the direction of text (Unicode
// Standard Annex 9, 2).
inline bool IsControl(gunichar character) {
    const bool isDirection = character == 0x061C || character == 0x200E || character == 0x200F ||
                             (character >= 0x202A && character <= 0x202E) ||
                             (character >= 0x2066 && character <= 0x2069);
    return isDirection || character == 0x2028 || character == 0x2029 ||
           g_unichar_iscntrl(character) != FALSE;
}

// How many bytes at the beginning of `text` are printable ASCII.
inline std::size_t PlainPrefix(std::string_view text) {
    constexpr std::uint64_t kEach = 0x0101010101010101U;
    std::size_t size = 0;
    for (std::uint64_t eight = 0; size + sizeof eight <= text.size(); size += sizeof eight) {
        std::memcpy(&eight, text.data() + size, sizeof eight);
        // The top bit of a byte is set in one of the three when it is below 0x20 or above 0x7E.
        if ((((eight - kEach * 0x20) | (eight + kEach) | eight) & (kEach * 0x80)) != 0) {
            break;
        }
    }
    while (size < text.size() && text[size] >= 0x20 && text[size] < 0x7F) {
        ++size;
    }
    return size;
}

// Appends `text`; each byte of a control that is not in `kept` (ASCII), and each byte that is not
// UTF-8, becomes \xNN.
inline void AppendPrintable(std::string& out, std::string_view text, std::string_view kept = "") {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const char* at = text.data();
    const char* const end = at + text.size();
    for (;;) {
        const std::size_t plain = PlainPrefix({at, static_cast<std::size_t>(end - at)});
        out.append(at, plain);
        at += plain;
        if (at == end) {
            return;
        }
        const gunichar character = g_utf8_get_char_validated(at, end - at);
        const bool isInvalid = character >= 0x80000000U;
        const char* const next = isInvalid || character == 0 ? at + 1 : g_utf8_next_char(at);
        const bool isKept = kept.find(*at) != std::string_view::npos;
        if (!isKept && (isInvalid || IsControl(character))) {
            for (; at < next; ++at) {
                const auto byte = static_cast<unsigned char>(*at);
                out += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
            }
        } else {
            out.append(at, next);
        }
        at = next;
    }
}

// The text without a terminal's colours and other sequences "ESC [ ... letter".
inline std::string WithoutColours(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\x1B' || i + 1 >= text.size() || text[i + 1] != '[') {
            plain += text[i];
            continue;
        }
        for (i += 2; i < text.size() && (text[i] < '@' || text[i] > '~'); ++i) {
        }
    }
    return plain;
}
