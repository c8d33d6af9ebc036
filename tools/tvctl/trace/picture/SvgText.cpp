// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/SvgText.h"

#include <glib.h>

#include <cstring>

namespace Tvctl {

namespace {

constexpr const char* kEllipsis = "\u2026";

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
    double width = 0;
    for (const char* at = text.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
        width += size * CharacterWidth(g_utf8_get_char(at));
    }
    return width;
}

std::vector<std::string> WrapText(const std::string& text, double size, double width,
                                  std::size_t lines) {
    std::vector<std::string> wrapped;
    std::size_t begin = 0;
    while (wrapped.size() + 1 < lines) {
        const std::size_t end = FittingEnd(text, begin, size, width);
        const std::size_t blank = text.rfind(' ', end);
        const bool isBreak = blank != std::string::npos && blank > begin;
        if (end == text.size() || (end == begin && !isBreak)) {
            break;
        }
        wrapped.push_back(text.substr(begin, (isBreak ? blank : end) - begin));
        begin = isBreak ? blank + 1 : end;
    }
    std::size_t end = FittingEnd(text, begin, size, width);
    const bool isCut = end < text.size();
    if (isCut) {
        end = FittingEnd(text, begin, size, width - TextWidth(kEllipsis, size));
    }
    wrapped.push_back(text.substr(begin, end - begin) + (isCut ? kEllipsis : ""));
    return wrapped;
}

}  // namespace Tvctl
