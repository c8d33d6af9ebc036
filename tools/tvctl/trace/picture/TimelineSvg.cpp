// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/TimelineSvg.h"

#include <algorithm>

#include "tools/tvctl/trace/picture/SvgPanel.h"
#include "tools/tvctl/trace/picture/SvgWriter.h"

namespace Tvctl {

namespace {

constexpr double kMargin = 24;
constexpr double kTitleHeight = 52;
constexpr std::size_t kMostPanels = 50;

std::string DateOf(const WakeUp& wakeUp) {
    return wakeUp.when.substr(0, wakeUp.when.rfind(' '));
}

std::string TitleOf(const std::vector<WakeUp>& wakeUps) {
    const std::string first = DateOf(wakeUps.front());
    const std::string last = DateOf(wakeUps.back());
    return "bt-autoconnect: " +
           (wakeUps.size() == 1 ? std::string("a wake-up")
                                : std::to_string(wakeUps.size()) + " wake-ups") +
           ", " + first + (first == last ? "" : " to " + last);
}

}  // namespace

std::string ToSvg(const std::vector<WakeUp>& wakeUps) {
    SvgWriter writer;
    const std::string title = TitleOf(wakeUps);
    const std::size_t shown = std::min(wakeUps.size(), kMostPanels);
    double y = kMargin;
    writer.Text(kMargin, y + 18, "title", title);
    writer.Text(SvgPanel::kWidth - kMargin, y + 18, "faint",
                shown < wakeUps.size() ? "the last " + std::to_string(shown) + " are shown"
                                       : "seconds from the wake-up's signal",
                SvgWriter::Anchor::kEnd);
    y += kTitleHeight;
    for (std::size_t i = wakeUps.size() - shown; i < wakeUps.size(); ++i) {
        y += SvgPanel(wakeUps[i], i + 1).Draw(writer, y) + kMargin;
    }
    return writer.Document(SvgPanel::kWidth, y, title);
}

}  // namespace Tvctl
