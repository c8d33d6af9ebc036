// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Tvctl {

// How text fills room in a picture whose fonts are the viewer's. The widths are those of a wide
// sans-serif face, so that with any other the text needs less. Every text is valid UTF-8.

// In pixels; `size` is the font's.
[[nodiscard]] double TextWidth(const std::string& text, double size);

// The text in lines of at most `width` pixels and at most `lines` lines, broken between words where
// that is possible; what does not fit is cut with an ellipsis. At least one line.
[[nodiscard]] std::vector<std::string> WrapText(const std::string& text, double size, double width,
                                                std::size_t lines);

}  // namespace Tvctl
