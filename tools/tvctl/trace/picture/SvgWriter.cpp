// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/SvgWriter.h"

#include <cmath>
#include <cstdlib>

#include "tools/tvctl/trace/picture/SvgText.h"

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
    const long long tenths = std::llround(value * 10);
    const std::string sign = tenths < 0 ? "-" : "";
    return sign + std::to_string(std::llabs(tenths) / 10) + "." +
           std::to_string(std::llabs(tenths) % 10);
}

std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + value + "\"";
}

std::string Attribute(const char* name, double value) {
    return Attribute(name, Number(value));
}

std::string More(const char* style) {
    return *style == '\0' ? "" : std::string(" ") + style;
}

}  // namespace

void SvgWriter::Rectangle(double x, double y, double width, double height, const char* colour,
                          const char* style) {
    m_body += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) +
              Attribute("height", height) + Attribute("fill", colour) + More(style) + "/>\n";
}

void SvgWriter::Line(double x1, double y1, double x2, double y2, const char* colour,
                     const char* style) {
    m_body += "<line" + Attribute("x1", x1) + Attribute("y1", y1) + Attribute("x2", x2) +
              Attribute("y2", y2) + Attribute("stroke", colour) + More(style) + "/>\n";
}

void SvgWriter::Ticks(const std::vector<double>& xs, double y, double height, const char* colour) {
    std::string path;
    for (const double x : xs) {
        path += "M" + Number(x) + " " + Number(y) + "v" + Number(height);
    }
    m_body += "<path" + Attribute("d", path) + Attribute("stroke", colour) + "/>\n";
}

void SvgWriter::Diamond(double x, double y, double radius, const char* colour) {
    const std::string r = Number(radius);
    m_body += "<path" +
              Attribute("d", "M" + Number(x) + " " + Number(y - radius) + "l" + r + " " + r + "l-" +
                                 r + " " + r + "l-" + r + " -" + r + "z") +
              Attribute("fill", colour) + "/>\n";
}

void SvgWriter::Circle(double x, double y, double radius, const char* colour) {
    m_body += "<circle" + Attribute("cx", x) + Attribute("cy", y) + Attribute("r", radius) +
              Attribute("fill", colour) + "/>\n";
}

void SvgWriter::Text(double x, double y, const char* textClass, const std::string& text,
                     Anchor anchor) {
    static constexpr const char* kAnchors[] = {"start", "middle", "end"};
    m_body += "<text" + Attribute("x", x) + Attribute("y", y) + Attribute("class", textClass) +
              Attribute("text-anchor", kAnchors[static_cast<int>(anchor)]) + ">" + EscapeXml(text) +
              "</text>\n";
}

void SvgWriter::BeginGroup(const std::string& title) {
    m_body += "<g><title>" + EscapeXml(title) + "</title>\n";
}

void SvgWriter::EndGroup() {
    m_body += "</g>\n";
}

std::string SvgWriter::Document(double width, double height, const std::string& title) const {
    const std::string size = Number(width) + " " + Number(height);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\"" +
           Attribute("width", width) + Attribute("height", height) +
           Attribute("viewBox", "0 0 " + size) + ">\n<title>" + EscapeXml(title) +
           "</title>\n<style>" + kStyle + "</style>\n" +
           "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" + m_body + "</svg>\n";
}

}  // namespace Tvctl
