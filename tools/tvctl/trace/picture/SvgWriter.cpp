// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/SvgWriter.h"

#include <cstring>
#include <initializer_list>
#include <utility>

#include "common/CHandle.h"
#include "common/PrintableText.h"

namespace Tvctl {

namespace {

constexpr const char* kStyle =
    "text{font-family:sans-serif;font-size:12px;fill:#24292f}"
    ".title{font-size:19px;font-weight:bold}"
    ".heading{font-size:14px;font-weight:bold}"
    ".summary{font-size:13px}"
    ".faint{font-size:11px;fill:#57606a}"
    ".lane{fill:#57606a}"
    ".address{fill:#24292f}"
    ".label{stroke:#fff;stroke-width:3px;stroke-opacity:0.8;stroke-linejoin:round;paint-order:"
    "stroke}";

// With one decimal, whatever the locale's decimal point is.
std::string Number(double value) {
    char text[G_ASCII_DTOSTR_BUF_SIZE];
    return g_ascii_formatd(text, sizeof(text), "%.1f", value);
}

// False for what XML does not allow or a viewer does not simply show.
bool IsAllowed(gunichar character) {
    const bool isNoCharacter =
        (character & 0xFFFE) == 0xFFFE || (character >= 0xFDD0 && character <= 0xFDEF);
    return !IsControl(character) && !isNoCharacter;
}

// Markup is escaped, except apostrophes, which no attribute here is quoted by, and a replacement
// stands for what is not allowed.
std::string EscapeXml(const std::string& text) {
    std::string escaped;
    for (const char* at = text.c_str(); *at != '\0';) {
        const char* const next = g_utf8_next_char(at);
        if (!IsAllowed(g_utf8_get_char(at))) {
            escaped += "\uFFFD";
        } else if (*at == '\'') {
            escaped += *at;
        } else {
            escaped += GStringPtr(g_markup_escape_text(at, next - at)).get();
        }
        at = next;
    }
    return escaped;
}

struct Attribute {
    Attribute(const char* key, std::string text) : name(key), value(std::move(text)) {}
    Attribute(const char* key, double number) : name(key), value(Number(number)) {}

    const char* name;
    std::string value;
};

// Its tag without the ">". `style` holds further attributes, "" for none.
std::string Element(const char* name, std::initializer_list<Attribute> attributes,
                    const std::string& style = "") {
    std::string element = std::string("<") + name;
    for (const Attribute& attribute : attributes) {
        element += std::string(" ") + attribute.name + "=\"" + attribute.value + "\"";
    }
    return element + (style.empty() ? "" : " ") + style;
}

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

void SvgWriter::Rectangle(double x, double y, double width, double height, const char* colour,
                          const char* style) {
    m_body += Element("rect",
                      {{"x", x}, {"y", y}, {"width", width}, {"height", height}, {"fill", colour}},
                      style) +
              "/>\n";
}

void SvgWriter::Line(double x1, double y1, double x2, double y2, const char* colour,
                     const char* style) {
    m_body += Element("line", {{"x1", x1}, {"y1", y1}, {"x2", x2}, {"y2", y2}, {"stroke", colour}},
                      style) +
              "/>\n";
}

void SvgWriter::Ticks(const std::vector<double>& xs, double y, double height, const char* colour) {
    std::string path;
    for (const double x : xs) {
        path += "M" + Number(x) + " " + Number(y) + "v" + Number(height);
    }
    m_body += Element("path", {{"d", path}, {"stroke", colour}}) + "/>\n";
}

void SvgWriter::Diamond(double x, double y, double radius, const char* colour) {
    const std::string r = Number(radius);
    const std::string path = "M" + Number(x) + " " + Number(y - radius) + "l" + r + " " + r + "l-" +
                             r + " " + r + "l-" + r + " -" + r + "z";
    m_body += Element("path", {{"d", path}, {"fill", colour}}) + "/>\n";
}

void SvgWriter::Circle(double x, double y, double radius, const char* colour) {
    m_body += Element("circle", {{"cx", x}, {"cy", y}, {"r", radius}, {"fill", colour}}) + "/>\n";
}

void SvgWriter::Text(double x, double y, const char* textClass, const std::string& text,
                     Anchor anchor) {
    static constexpr const char* kAnchors[] = {"start", "middle", "end"};
    const char* const place = kAnchors[static_cast<int>(anchor)];
    m_body += Element("text", {{"x", x}, {"y", y}, {"class", textClass}, {"text-anchor", place}}) +
              ">" + EscapeXml(text) + "</text>\n";
}

void SvgWriter::BeginGroup(const std::string& title) {
    m_body += "<g><title>" + EscapeXml(title) + "</title>\n";
}

std::string SvgWriter::Document(double width, double height, const std::string& title) const {
    const std::string box = "0 0 " + Number(width) + " " + Number(height);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
           Element("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                           {"width", width},
                           {"height", height},
                           {"viewBox", box}}) +
           ">\n<title>" + EscapeXml(title) + "</title>\n<style>" + kStyle + "</style>\n" +
           "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" + m_body + "</svg>\n";
}

}  // namespace Tvctl
