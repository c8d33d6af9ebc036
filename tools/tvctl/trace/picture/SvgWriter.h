// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Tvctl {

// Writes an SVG picture, element by element. Lengths are pixels, y grows downwards. Texts are valid
// UTF-8 and may hold anything; colours, classes and styles are the program's own.
class SvgWriter {
public:
    enum class Anchor { kStart, kMiddle, kEnd };

    // `style` holds further attributes, "" for none.
    void Rectangle(double x, double y, double width, double height, const char* colour,
                   const char* style = "");
    void Line(double x1, double y1, double x2, double y2, const char* colour,
              const char* style = "");
    // Upright strokes from `y` down, all in one.
    void Ticks(const std::vector<double>& xs, double y, double height, const char* colour);
    // A square on its corner around the point.
    void Diamond(double x, double y, double radius, const char* colour);
    void Circle(double x, double y, double radius, const char* colour);
    // `y` is the base line.
    void Text(double x, double y, const char* textClass, const std::string& text,
              Anchor anchor = Anchor::kStart);
    // What comes until the end of the group shows `title` under the mouse.
    void BeginGroup(const std::string& title);
    void EndGroup() { m_body += "</g>\n"; }
    // All that another one has written.
    void Append(const SvgWriter& other) { m_body += other.m_body; }

    // The whole document, on a white ground; `title` names it.
    [[nodiscard]] std::string Document(double width, double height, const std::string& title) const;

private:
    std::string m_body;
};

// How text fills room in a picture whose fonts are the viewer's. The widths are those of a wide
// sans-serif face, so that with any other the text needs less. Every text is valid UTF-8.

// In pixels; `size` is the font's.
[[nodiscard]] double TextWidth(const std::string& text, double size);

// The text in lines of at most `width` pixels and at most `lines` lines, broken between words where
// that is possible; what does not fit is cut with an ellipsis. At least one line.
[[nodiscard]] std::vector<std::string> WrapText(const std::string& text, double size, double width,
                                                std::size_t lines);

}  // namespace Tvctl
