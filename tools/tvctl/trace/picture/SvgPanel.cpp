// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/SvgPanel.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "tools/tvctl/trace/picture/SvgText.h"

namespace Tvctl {

namespace {

constexpr double kLeft = 24;
constexpr double kPlotLeft = 172;
constexpr double kPlotRight = SvgPanel::kWidth - 40;
constexpr double kLabelSize = 12;
constexpr double kLineHeight = 15;
constexpr double kLaneHeight = 28;
constexpr double kBarHeight = 12;
constexpr double kWindowHeight = 18;
constexpr double kGap = 7;  // between what a lane shows and its label
// With less room at its side a long label goes below.
constexpr double kLeastRoom = 240;
constexpr std::size_t kMostLines = 3;
constexpr double kAxisHeight = 24;
constexpr int kMostTicks = 12;
// A panel of a broken log must not grow without end; the text has everything.
constexpr std::size_t kMostOfAKind = 40;

constexpr const char* kBlue = "#4c78a8";
constexpr const char* kPale = "#c6d6ea";
constexpr const char* kPaler = "#e8eff7";
constexpr const char* kGreen = "#2a9d5c";
constexpr const char* kRed = "#d1495b";
constexpr const char* kAmber = "#d98a00";
constexpr const char* kGrey = "#8c959f";
constexpr const char* kGrid = "#e3e7eb";

const char* ColourOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::kPlays:
            return kGreen;
        case Verdict::kConnected:
        case Verdict::kRefused:
            return kAmber;
        case Verdict::kNobody:
            return kRed;
        case Verdict::kUnknown:
            break;
    }
    return kGrey;
}

const char* ColourOf(const Connection& connection) {
    switch (connection.result) {
        case Connection::Result::kConnected:
        case Connection::Result::kByItself:
            return kGreen;
        case Connection::Result::kFailed:
        case Connection::Result::kNotBonded:
            return kRed;
        case Connection::Result::kUnknown:
            break;
    }
    return kGrey;
}

const char* ColourOf(const Playback& playback) {
    switch (playback.outcome) {
        case Playback::Outcome::kPlaysAlready:
        case Playback::Outcome::kCommandSent:
            return kGreen;
        case Playback::Outcome::kNotSent:
            return kAmber;
        case Playback::Outcome::kLaunchFailed:
            return kRed;
        case Playback::Outcome::kUnknown:
            break;
    }
    return kGrey;
}

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

// A bar that is seen even when it took no time; one whose end is not known fades.
void DrawBar(SvgWriter& writer, double left, double right, double y, const char* colour,
             bool hasEnd) {
    writer.Rectangle(left, y - kBarHeight / 2, std::max(3.0, right - left), kBarHeight, colour,
                     hasEnd ? R"(rx="2")" : R"(rx="2" fill-opacity="0.45")");
}

}  // namespace

SvgPanel::SvgPanel(const WakeUp& wakeUp, std::size_t number)
    : m_wakeUp(wakeUp),
      m_number(number),
      m_seconds(std::max(
          {1.0, wakeUp.end * 1.01, wakeUp.window ? wakeUp.window->begin + kWindowSeconds : 0.0})) {
    AddWindow();
    AddRefusals();
    AddScans();
    AddHeard();
    AddConnections();
    AddPlaybacks();
    AddRemarks();
}

double SvgPanel::X(double time) const {
    const double part = std::clamp(time / m_seconds, 0.0, 1.0);
    return kPlotLeft + part * (kPlotRight - kPlotLeft);
}

void SvgPanel::AddMark(const std::string& name, double time, const char* colour,
                       const std::string& label) {
    const double x = X(time);
    m_lanes.push_back(
        {name, "lane",
         [x, colour](SvgWriter& writer, double y) { writer.Diamond(x, y, kBarHeight / 2, colour); },
         x - kBarHeight / 2, x + kBarHeight / 2, label});
}

void SvgPanel::AddRefusals() {
    for (std::size_t i = 0; i < std::min(m_wakeUp.refusals.size(), kMostOfAKind); ++i) {
        AddMark("Refused", m_wakeUp.refusals[i].time, kAmber, m_wakeUp.refusals[i].text);
    }
}

// The part of the window that is not in the log is drawn as it was planned.
void SvgPanel::AddWindow() {
    if (!m_wakeUp.window) {
        return;
    }
    const Window& window = *m_wakeUp.window;
    const double left = X(window.begin);
    const double right = X(window.end.value_or(window.begin + kWindowSeconds));
    const double known = std::clamp(X(window.end.value_or(m_wakeUp.end)), left, right);
    const auto draw = [left, known, right](SvgWriter& writer, double y) {
        const double top = y - kWindowHeight / 2;
        writer.Rectangle(left, top, right - left, kWindowHeight, kPaler);
        writer.Rectangle(left, top, known - left, kWindowHeight, kPale);
    };
    m_lanes.push_back({"Wake-up window", "lane", draw, left, right, Describe(window), true});
}

void SvgPanel::AddScans() {
    for (std::size_t i = 0; i < std::min(m_wakeUp.scans.size(), kMostOfAKind); ++i) {
        const Scan& scan = m_wakeUp.scans[i];
        const double left = X(scan.begin);
        const double right = X(scan.end.value_or(m_wakeUp.end));
        const char* const colour = scan.how == Scan::End::kFailed ? kRed : kBlue;
        const bool hasEnd = scan.end.has_value();
        m_lanes.push_back({"LE scan", "lane",
                           [left, right, colour, hasEnd](SvgWriter& writer, double y) {
                               DrawBar(writer, left, right, y, colour, hasEnd);
                           },
                           left, std::max(right, left + 3), Describe(scan)});
    }
}

// Advertisements at the same place of the axis are one stroke.
void SvgPanel::AddHeard() {
    if (m_wakeUp.scans.empty()) {
        return;
    }
    std::set<long long> places;
    for (const std::vector<double>* times :
         {&m_wakeUp.strangers.times, &m_wakeUp.strangers.shortTimes}) {
        for (const double time : *times) {
            places.insert(std::llround(X(time) / 2) * 2);
        }
    }
    const std::vector<double> strangers(places.begin(), places.end());
    std::vector<double> phones;
    std::string label;
    for (std::size_t i = 0; i < std::min(m_wakeUp.heard.size(), kMostOfAKind); ++i) {
        phones.push_back(X(m_wakeUp.heard[i].time));
        label += (label.empty() ? "" : ", ") + m_wakeUp.heard[i].address;
    }
    if (!strangers.empty()) {
        label += (label.empty() ? "" : " behind ") + Describe(m_wakeUp.strangers);
    }
    std::vector<double> all = strangers;
    all.insert(all.end(), phones.begin(), phones.end());
    all.push_back(all.empty() ? X(m_wakeUp.scans.front().begin) : all.front());
    m_lanes.push_back({"Heard", "lane",
                       [strangers, phones](SvgWriter& writer, double y) {
                           writer.Ticks(strangers, y - 5, 10, kGrey);
                           for (const double x : phones) {
                               writer.Diamond(x, y, kBarHeight / 2, kAmber);
                           }
                       },
                       *std::min_element(all.begin(), all.end()) - kBarHeight / 2,
                       *std::max_element(all.begin(), all.end()) + kBarHeight / 2,
                       label.empty() ? "nothing" : label});
}

void SvgPanel::AddConnections() {
    const std::size_t count = m_wakeUp.connections.size();
    for (std::size_t i = 0; i < std::min(count, kMostOfAKind); ++i) {
        AddConnection(m_wakeUp.connections[i]);
    }
    if (count > kMostOfAKind) {
        AddMark("Connections", m_wakeUp.connections[kMostOfAKind].begin, kGrey,
                std::to_string(count - kMostOfAKind) + " more are not shown");
    }
}

// Below the bar a line shows for how long the phone stayed connected, as far as the log tells.
void SvgPanel::AddConnection(const Connection& connection) {
    const double left = X(connection.begin);
    const double right = X(connection.end.value_or(m_wakeUp.end));
    const double lost = X(connection.lost.value_or(m_wakeUp.end));
    const char* const colour = ColourOf(connection);
    const Connection::Result result = connection.result;
    const bool isMoment = result == Connection::Result::kNotBonded;
    const bool isLink =
        result == Connection::Result::kConnected || result == Connection::Result::kByItself;
    const auto draw = [=](SvgWriter& writer, double y) {
        if (isMoment) {
            writer.Diamond(left, y, kBarHeight / 2, colour);
            return;
        }
        DrawBar(writer, left, right, y, colour, result != Connection::Result::kUnknown);
        if (isLink) {
            writer.Line(left, y + 8.5, lost, y + 8.5, colour, R"(stroke-width="2")");
        }
    };
    const std::string name = connection.address.empty() ? "not named" : connection.address;
    m_lanes.push_back({name, "address", draw, isMoment ? left - kBarHeight / 2 : left,
                       isMoment ? left + kBarHeight / 2 : std::max(right, left + 3),
                       Describe(connection)});
}

void SvgPanel::AddPlaybacks() {
    for (std::size_t i = 0; i < std::min(m_wakeUp.playbacks.size(), kMostOfAKind); ++i) {
        const Playback& playback = m_wakeUp.playbacks[i];
        const double left = X(playback.begin);
        const double right = X(playback.end.value_or(m_wakeUp.end));
        const char* const colour = ColourOf(playback);
        const bool hasEnd = playback.end.has_value();
        m_lanes.push_back({"Playback", "lane",
                           [=](SvgWriter& writer, double y) {
                               writer.Line(left, y, right, y, colour,
                                           R"(stroke-width="2" stroke-dasharray="2 4")");
                               if (hasEnd) {
                                   writer.Diamond(right, y, kBarHeight / 2, colour);
                               }
                           },
                           left, right + kBarHeight / 2, Describe(playback)});
    }
}

void SvgPanel::AddRemarks() {
    for (std::size_t i = 0; i < std::min(m_wakeUp.remarks.size(), kMostOfAKind); ++i) {
        AddMark("Remark", m_wakeUp.remarks[i].time, kGrey, m_wakeUp.remarks[i].text);
    }
}

SvgPanel::Label SvgPanel::Place(const Lane& lane) {
    const double atRight = kPlotRight - lane.right - kGap;
    const double atLeft = lane.left - kPlotLeft - kGap;
    const double width = TextWidth(lane.label, kLabelSize);
    if (lane.isLabelInside && width + 2 * kGap <= lane.right - lane.left) {
        return {{lane.label}, lane.left + kGap, SvgWriter::Anchor::kStart, false};
    }
    const double room = std::max(atRight, atLeft);
    if (room < width && room < kLeastRoom) {
        return {WrapText(lane.label, kLabelSize, kPlotRight - kPlotLeft, kMostLines), kPlotLeft,
                SvgWriter::Anchor::kStart, true};
    }
    const bool isRight = width <= atRight || (width > atLeft && atRight >= atLeft);
    return {WrapText(lane.label, kLabelSize, isRight ? atRight : atLeft, kMostLines),
            isRight ? lane.right + kGap : lane.left - kGap,
            isRight ? SvgWriter::Anchor::kStart : SvgWriter::Anchor::kEnd, false};
}

double SvgPanel::HeightOf(const Label& label) {
    const double lines = kLineHeight * static_cast<double>(label.lines.size());
    return label.isBelow ? kLaneHeight + lines : kLaneHeight + lines - kLineHeight;
}

double SvgPanel::DrawLane(SvgWriter& writer, const Lane& lane, double top) const {
    const Label label = Place(lane);
    const double middle = top + kLaneHeight / 2;
    writer.BeginGroup(lane.name + ": " + lane.label);
    writer.Text(kLeft, middle + 4, lane.nameClass,
                WrapText(lane.name, kLabelSize, kPlotLeft - kLeft - kGap, 1).front());
    lane.draw(writer, middle);
    double base = label.isBelow ? top + kLaneHeight + 8 : middle + 4;
    for (const std::string& line : label.lines) {
        writer.Text(label.x, base, lane.isLabelInside ? "inside" : "label", line, label.anchor);
        base += kLineHeight;
    }
    writer.EndGroup();
    return HeightOf(label);
}

double SvgPanel::DrawHeading(SvgWriter& writer, double top) const {
    const std::string summary = m_wakeUp.Summary();
    const double width = SvgPanel::kWidth - 2 * kLeft - 18;
    writer.BeginGroup(summary);
    writer.Circle(kLeft + 6, top + 9, 6, ColourOf(m_wakeUp.Outcome()));
    writer.Text(kLeft + 20, top + 14, "heading",
                "Wake-up " + std::to_string(m_number) + ", " + m_wakeUp.when);
    double base = top + 33;
    for (const std::string& line : WrapText(summary, 13, width, 2)) {
        writer.Text(kLeft + 20, base, "summary", line);
        base += 17;
    }
    writer.EndGroup();
    if (!m_wakeUp.phones.empty()) {
        std::string phones;
        for (const std::string& phone : m_wakeUp.phones) {
            phones += (phones.empty() ? "registered: " : ", ") + phone;
        }
        writer.BeginGroup(phones);
        writer.Text(kLeft + 20, base, "faint", WrapText(phones, 11, width, 1).front());
        writer.EndGroup();
        base += 15;
    }
    return base - top;
}

void SvgPanel::DrawGrid(SvgWriter& writer, double top, double bottom) const {
    const double step = TickStep(m_seconds);
    for (int i = 0; i * step <= m_seconds; ++i) {
        const double x = X(i * step);
        writer.Line(x, top, x, bottom + 4, kGrid);
        writer.Text(x, bottom + 17, "faint", TickText(i * step), SvgWriter::Anchor::kMiddle);
    }
    writer.Line(kPlotLeft, bottom, kPlotRight, bottom, kGrey);
}

double SvgPanel::Draw(SvgWriter& writer, double top) const {
    writer.Line(kLeft, top - 12, SvgPanel::kWidth - kLeft, top - 12, kGrid);
    const double lanesTop = top + DrawHeading(writer, top);
    double lanesBottom = lanesTop;
    for (const Lane& lane : m_lanes) {
        lanesBottom += HeightOf(Place(lane));
    }
    DrawGrid(writer, lanesTop, lanesBottom);
    double y = lanesTop;
    for (const Lane& lane : m_lanes) {
        y += DrawLane(writer, lane, y);
    }
    return lanesBottom + kAxisHeight - top;
}

}  // namespace Tvctl
