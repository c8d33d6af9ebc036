// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/SvgText.h"

#include <glib.h>

#include <cstring>

#include "common/CHandle.h"

namespace Tvctl {

namespace {

constexpr const char* kEllipsis = "\u2026";
constexpr const char* kReplacement = "\uFFFD";

// In units of the font's size.
double CharacterWidth(gunichar character) {
    struct Group {
        const char* characters;
        double width;
    };
    static constexpr Group kGroups[] = {{" .,'|ijlI", 0.37},
                                        {":;-/!()[]frtJ\"", 0.46},
                                        {"0123456789_", 0.64},
                                        {"mwMW@%#&+<=>~", 1.0}};
    if (character < 0x80) {
        const char ascii = static_cast<char>(character);
        for (const Group& group : kGroups) {
            if (std::strchr(group.characters, ascii) != nullptr) {
                return group.width;
            }
        }
        return g_ascii_isupper(ascii) != FALSE ? 0.75 : 0.62;
    }
    if (g_unichar_iszerowidth(character) != FALSE) {
        return 0;
    }
    return g_unichar_iswide(character) != FALSE ? 1.05 : 1.0;
}

bool IsAllowed(gunichar character) {
    const bool turnsDirection = (character >= 0x202A && character <= 0x202E) ||
                                (character >= 0x2066 && character <= 0x2069) ||
                                character == 0x200E || character == 0x200F;
    const bool isNoCharacter = (character & 0xFFFE) == 0xFFFE || character == 0x2028 ||
                               (character >= 0xFDD0 && character <= 0xFDEF);
    return g_unichar_iscntrl(character) == FALSE && !turnsDirection && !isNoCharacter;
}

std::string ValidUtf8(const std::string& text) {
    return GStringPtr(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

// Up to where `text` fits into `width` from `begin` on.
std::size_t FittingEnd(const std::string& text, std::size_t begin, double size, double width) {
    double used = 0;
    const char* at = text.c_str() + begin;
    while (*at != '\0') {
        used += size * CharacterWidth(g_utf8_get_char(at));
        if (used > width) {
            break;
        }
        at = g_utf8_next_char(at);
    }
    return static_cast<std::size_t>(at - text.c_str());
}

}  // namespace

double TextWidth(const std::string& text, double size) {
    const std::string valid = ValidUtf8(text);
    double width = 0;
    for (const char* at = valid.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
        width += size * CharacterWidth(g_utf8_get_char(at));
    }
    return width;
}

std::vector<std::string> WrapText(const std::string& text, double size, double width,
                                  std::size_t lines) {
    const std::string valid = ValidUtf8(text);
    std::vector<std::string> wrapped;
    std::size_t begin = 0;
    while (wrapped.size() + 1 < lines) {
        const std::size_t end = FittingEnd(valid, begin, size, width);
        const std::size_t blank = valid.rfind(' ', end);
        const bool isBreak = blank != std::string::npos && blank > begin;
        if (end == valid.size() || (end == begin && !isBreak)) {
            break;
        }
        wrapped.push_back(valid.substr(begin, (isBreak ? blank : end) - begin));
        begin = isBreak ? blank + 1 : end;
    }
    std::size_t end = FittingEnd(valid, begin, size, width);
    const bool isCut = end < valid.size();
    if (isCut) {
        end = FittingEnd(valid, begin, size, width - TextWidth(kEllipsis, size));
    }
    wrapped.push_back(valid.substr(begin, end - begin) + (isCut ? kEllipsis : ""));
    return wrapped;
}

std::string EscapeXml(const std::string& text) {
    const std::string valid = ValidUtf8(text);
    std::string escaped;
    for (const char* at = valid.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
        const gunichar character = g_utf8_get_char(at);
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                if (IsAllowed(character)) {
                    escaped.append(at, static_cast<std::size_t>(g_utf8_next_char(at) - at));
                } else {
                    escaped += kReplacement;
                }
        }
    }
    return escaped;
}

}  // namespace Tvctl
