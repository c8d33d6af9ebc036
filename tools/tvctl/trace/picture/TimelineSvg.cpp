// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/TimelineSvg.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <set>

#include "tools/tvctl/trace/TimelineText.h"
#include "tools/tvctl/trace/picture/Layout.h"
#include "tools/tvctl/trace/picture/SvgWriter.h"

namespace Tvctl {

namespace {

using Anchor = SvgWriter::Anchor;

constexpr double kPlotLeft = 172;
constexpr double kPlotRight = kWidth - 40;
constexpr double kLineHeight = 15;
constexpr double kLaneHeight = 28;
constexpr double kBarHeight = 12;
constexpr double kLeastBar = 3;
constexpr double kRadius = kBarHeight / 2;  // of a mark
constexpr double kWindowHeight = 18;
constexpr double kGap = 7;  // between what a lane shows and its label
// With less room at its side a long label goes below.
constexpr double kLeastRoom = 240;
constexpr std::size_t kMostLines = 3;
constexpr double kAxisHeight = 24;
constexpr int kMostTicks = 12;
// A panel of a broken log must not grow without end; the text has everything.
constexpr std::size_t kMostOfAKind = 40;

// By Connection::Result and Playback::Outcome.
constexpr const char* kConnectionColours[] = {kGrey, kGreen, kRed, kRed, kGreen};
constexpr const char* kPlaybackColours[] = {kGrey, kGreen, kGreen, kAmber, kRed, kGreen, kRed};

// The smallest of 1, 2 and 5 times a power of ten that makes no more ticks than there is room for.
double TickStep(double seconds) {
    double step = 0.1;
    for (int i = 0; seconds / step > kMostTicks; ++i) {
        step *= i % 3 == 1 ? 2.5 : 2;
    }
    return step;
}

std::string TickText(double time) {
    const long long tenths = std::llround(time * 10);
    const std::string decimals = tenths % 10 == 0 ? "" : "." + std::to_string(tenths % 10);
    return std::to_string(tenths / 10) + decimals + " s";
}

// One wake-up in the picture: its outcome, lanes over a common time axis, and the axis. A lane's
// label stands next to what the lane shows, on the side that has room for it, else below.
class Panel {
public:
    // Draws it with its upper edge at `top`. The wake-up stays the caller's.
    Panel(const WakeUp& wakeUp, std::size_t number, double top, SvgWriter& writer);

    [[nodiscard]] double Bottom() const { return m_y + kAxisHeight; }

private:
    struct Lane {
        std::string name;
        std::string label;
        // The part of the width that what it shows takes.
        double left = 0;
        double right = 0;
        const char* nameClass = "lane";
        bool isLabelInside = false;  // on what the lane shows, if there is room
    };
    struct Label {
        std::vector<std::string> lines;
        double x = 0;
        Anchor anchor = Anchor::kStart;
        bool isBelow = false;
    };

    [[nodiscard]] double X(double time) const;
    void DrawHeading(std::size_t number, SvgWriter& writer);
    void DrawGrid(double top, SvgWriter& writer) const;
    void DrawWindow(const Window& window);
    void DrawScan(const Scan& scan);
    void DrawHeard();
    void DrawConnection(const Connection& connection);
    void DrawPlayback(const Playback& playback);
    void DrawMark(const std::string& name, const Remark& remark, const char* colour);
    void DrawBar(double left, double right, double y, const char* colour, bool hasEnd);
    // `draw` draws what the lane shows around the middle line that it gets.
    void DrawLane(const Lane& lane, const std::function<void(double y)>& draw);
    [[nodiscard]] static Label Place(const Lane& lane);

    const WakeUp& m_wakeUp;
    double m_seconds;   // that the axis shows
    double m_y;         // where the next thing begins
    SvgWriter m_lanes;  // drawn over the grid, whose height they decide
};

// The first items, as many as a panel shows.
template <typename Item, typename Draw>
void ForEach(const std::vector<Item>& items, Draw draw) {
    std::for_each(items.begin(),
                  items.begin() + static_cast<std::ptrdiff_t>(std::min(items.size(), kMostOfAKind)),
                  draw);
}

Panel::Panel(const WakeUp& wakeUp, std::size_t number, double top, SvgWriter& writer)
    : m_wakeUp(wakeUp),
      m_seconds(std::max(
          {1.0, wakeUp.end * 1.01, wakeUp.window ? wakeUp.window->begin + kWindowSeconds : 0.0})),
      m_y(top) {
    writer.Line(kMargin, top - 12, kWidth - kMargin, top - 12, kGrid);
    DrawHeading(number, writer);
    const double lanesTop = m_y;
    if (wakeUp.window) {
        DrawWindow(*wakeUp.window);
    }
    ForEach(wakeUp.refusals,
            [this](const Remark& refusal) { DrawMark("Refused", refusal, kAmber); });
    ForEach(wakeUp.scans, [this](const Scan& scan) { DrawScan(scan); });
    if (!wakeUp.scans.empty()) {
        DrawHeard();
    }
    ForEach(wakeUp.connections,
            [this](const Connection& connection) { DrawConnection(connection); });
    if (wakeUp.connections.size() > kMostOfAKind) {
        const std::string more = std::to_string(wakeUp.connections.size() - kMostOfAKind);
        DrawMark("Connections",
                 {wakeUp.connections[kMostOfAKind].begin, more + " more are not shown"}, kGrey);
    }
    ForEach(wakeUp.playbacks, [this](const Playback& playback) { DrawPlayback(playback); });
    ForEach(wakeUp.remarks, [this](const Remark& remark) { DrawMark("Remark", remark, kGrey); });
    DrawGrid(lanesTop, writer);
    writer.Append(m_lanes);
}

double Panel::X(double time) const {
    const double part = std::clamp(time / m_seconds, 0.0, 1.0);
    return kPlotLeft + part * (kPlotRight - kPlotLeft);
}

void Panel::DrawHeading(std::size_t number, SvgWriter& writer) {
    const std::string summary = m_wakeUp.Summary();
    const double left = kMargin + 20;
    const double width = kWidth - 2 * kMargin - 18;
    writer.BeginGroup(summary);
    writer.Circle(kMargin + 6, m_y + 9, 6, TextOf(kVerdictColours, m_wakeUp.Outcome()));
    writer.Text(left, m_y + 14, "heading", HeadingOf(m_wakeUp, number));
    m_y += 33;
    for (const std::string& line : WrapText(summary, 13, width, 2)) {
        writer.Text(left, m_y, "summary", line);
        m_y += 17;
    }
    writer.EndGroup();
    if (!m_wakeUp.phones.empty()) {
        const std::string phones = "registered: " + Join(m_wakeUp.phones);
        writer.BeginGroup(phones);
        writer.Text(left, m_y, "faint", WrapText(phones, 11, width, 1).front());
        writer.EndGroup();
        m_y += 15;
    }
}

// From `top` to below the last lane.
void Panel::DrawGrid(double top, SvgWriter& writer) const {
    const double step = TickStep(m_seconds);
    for (int i = 0; i * step <= m_seconds; ++i) {
        const double x = X(i * step);
        writer.Line(x, top, x, m_y + 4, kGrid);
        writer.Text(x, m_y + 17, "faint", TickText(i * step), Anchor::kMiddle);
    }
    writer.Line(kPlotLeft, m_y, kPlotRight, m_y, kGrey);
}

// A bar that is seen even when it took no time; one whose end is not known fades.
void Panel::DrawBar(double left, double right, double y, const char* colour, bool hasEnd) {
    m_lanes.Rectangle(left, y - kBarHeight / 2, std::max(kLeastBar, right - left), kBarHeight,
                      colour, hasEnd ? R"(rx="2")" : R"(rx="2" fill-opacity="0.45")");
}

void Panel::DrawMark(const std::string& name, const Remark& remark, const char* colour) {
    const double x = X(remark.time);
    DrawLane({name, remark.text, x - kRadius, x + kRadius},
             [&](double y) { m_lanes.Diamond(x, y, kRadius, colour); });
}

// The part of the window that is not in the log is drawn as it was planned.
void Panel::DrawWindow(const Window& window) {
    const double left = X(window.begin);
    const double right = X(window.end.value_or(window.begin + kWindowSeconds));
    const double known = std::clamp(X(window.end.value_or(m_wakeUp.end)), left, right);
    DrawLane({"Wake-up window", Describe(window), left, right, "lane", true}, [&](double y) {
        const double top = y - kWindowHeight / 2;
        m_lanes.Rectangle(left, top, right - left, kWindowHeight, kPaler);
        m_lanes.Rectangle(left, top, known - left, kWindowHeight, kPale);
    });
}

void Panel::DrawScan(const Scan& scan) {
    const double left = X(scan.begin);
    const double right = X(scan.end.value_or(m_wakeUp.end));
    const char* const colour = scan.how == Scan::End::kFailed ? kRed : kBlue;
    DrawLane({"LE scan", Describe(scan), left, std::max(right, left + kLeastBar)},
             [&](double y) { DrawBar(left, right, y, colour, scan.end.has_value()); });
}

// Advertisements at the same place of the axis are one stroke.
void Panel::DrawHeard() {
    std::set<long long> places;
    for (const auto* times : {&m_wakeUp.strangers.times, &m_wakeUp.strangers.shortTimes}) {
        for (const double time : *times) {
            places.insert(std::llround(X(time) / 2) * 2);
        }
    }
    const std::vector<double> strangers(places.begin(), places.end());
    std::vector<double> all = strangers;
    std::vector<std::string> addresses;
    ForEach(m_wakeUp.heard, [&](const HeardPhone& heard) {
        all.push_back(X(heard.time));
        addresses.push_back(heard.address);
    });
    const std::vector<double> phones(all.begin() + static_cast<std::ptrdiff_t>(strangers.size()),
                                     all.end());
    std::string label = Join(addresses);
    if (!strangers.empty()) {
        label += (label.empty() ? "" : " after ") + Describe(m_wakeUp.strangers);
    }
    if (all.empty()) {
        all.push_back(X(m_wakeUp.scans.front().begin));
        label = "nothing";
    }
    const auto [first, last] = std::minmax_element(all.begin(), all.end());
    DrawLane({"Heard", label, *first - kRadius, *last + kRadius}, [&](double y) {
        m_lanes.Ticks(strangers, y - 5, 10, kGrey);
        for (const double x : phones) {
            m_lanes.Diamond(x, y, kRadius, kAmber);
        }
    });
}

// Below the bar a line shows for how long the phone stayed connected, as far as the log tells.
void Panel::DrawConnection(const Connection& connection) {
    const char* const colour = TextOf(kConnectionColours, connection.result);
    const std::string name = connection.address.empty() ? "not named" : connection.address;
    const double left = X(connection.begin);
    if (connection.result == Connection::Result::kNotBonded) {
        DrawLane({name, Describe(connection), left - kRadius, left + kRadius, "address"},
                 [&](double y) { m_lanes.Diamond(left, y, kRadius, colour); });
        return;
    }
    const double right = X(connection.end.value_or(m_wakeUp.end));
    DrawLane({name, Describe(connection), left, std::max(right, left + kLeastBar), "address"},
             [&](double y) {
                 DrawBar(left, right, y, colour, connection.result != Connection::Result::kUnknown);
                 if (connection.WasMade()) {
                     const double lost = X(connection.lost.value_or(m_wakeUp.end));
                     m_lanes.Line(left, y + 8.5, lost, y + 8.5, colour, R"(stroke-width="2")");
                 }
             });
}

void Panel::DrawPlayback(const Playback& playback) {
    const char* const colour = TextOf(kPlaybackColours, playback.outcome);
    const double left = X(playback.begin);
    const double right =
        X(playback.answered ? *playback.answered : playback.end.value_or(m_wakeUp.end));
    DrawLane({"Playback", Describe(playback), left, right + kRadius}, [&](double y) {
        m_lanes.Line(left, y, right, y, colour, R"(stroke-width="2" stroke-dasharray="2 4")");
        if (playback.end) {
            m_lanes.Diamond(right, y, kRadius, colour);
        }
    });
}

Panel::Label Panel::Place(const Lane& lane) {
    const double atRight = kPlotRight - lane.right - kGap;
    const double atLeft = lane.left - kPlotLeft - kGap;
    const double width = TextWidth(lane.label, kLabelSize);
    if (lane.isLabelInside && width + 2 * kGap <= lane.right - lane.left) {
        return {{lane.label}, lane.left + kGap, Anchor::kStart, false};
    }
    const double room = std::max(atRight, atLeft);
    if (room < width && room < kLeastRoom) {
        return {WrapText(lane.label, kLabelSize, kPlotRight - kPlotLeft, kMostLines), kPlotLeft,
                Anchor::kStart, true};
    }
    const bool isRight = width <= atRight || (width > atLeft && atRight >= atLeft);
    return {WrapText(lane.label, kLabelSize, isRight ? atRight : atLeft, kMostLines),
            isRight ? lane.right + kGap : lane.left - kGap, isRight ? Anchor::kStart : Anchor::kEnd,
            false};
}

void Panel::DrawLane(const Lane& lane, const std::function<void(double y)>& draw) {
    const Label label = Place(lane);
    const double middle = m_y + kLaneHeight / 2;
    m_lanes.BeginGroup(lane.name + ": " + lane.label);
    m_lanes.Text(kMargin, middle + 4, lane.nameClass,
                 WrapText(lane.name, kLabelSize, kPlotLeft - kMargin - kGap, 1).front());
    draw(middle);
    double base = label.isBelow ? m_y + kLaneHeight + 8 : middle + 4;
    for (const std::string& line : label.lines) {
        m_lanes.Text(label.x, base, lane.isLabelInside ? "inside" : "label", line, label.anchor);
        base += kLineHeight;
    }
    m_lanes.EndGroup();
    const auto lines = static_cast<double>(label.lines.size() - (label.isBelow ? 0 : 1));
    m_y += kLaneHeight + kLineHeight * lines;
}

// "2026-11-21", of a time of any form its first word.
std::string DateOf(const WakeUp& wakeUp) {
    return wakeUp.when.substr(0, wakeUp.when.find(' '));
}

}  // namespace

void TimelinePicture::Add(const WakeUp& wakeUp) {
    m_firstDate = m_count == 0 ? DateOf(wakeUp) : m_firstDate;
    ++m_count;
    m_last.push_back(wakeUp);
    if (m_last.size() > kMostPanels) {
        m_last.pop_front();
    }
}

std::string TimelinePicture::Draw() const {
    SvgWriter writer;
    const std::string lastDate = m_last.empty() ? "" : DateOf(m_last.back());
    const std::string title =
        "bt-autoconnect: " + (m_count == 1 ? "a wake-up" : std::to_string(m_count) + " wake-ups") +
        ", " + m_firstDate + (m_firstDate == lastDate ? "" : " to " + lastDate);
    writer.Text(kMargin, kMargin + 18, "title", title);
    writer.Text(kWidth - kMargin, kMargin + 18, "faint",
                m_last.size() < m_count ? "the last " + std::to_string(m_last.size()) + " are shown"
                                        : "seconds from the wake-up's signal",
                Anchor::kEnd);
    double y = kMargin + kTitleHeight;
    std::size_t number = m_count - m_last.size();
    for (const WakeUp& wakeUp : m_last) {
        y = Panel(wakeUp, ++number, y, writer).Bottom() + kMargin;
    }
    return writer.Document(kWidth, y, title);
}

}  // namespace Tvctl
