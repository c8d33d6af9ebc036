// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/picture/StatisticsSvg.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "tools/tvctl/trace/StatisticsText.h"
#include "tools/tvctl/trace/picture/Layout.h"
#include "tools/tvctl/trace/picture/SvgWriter.h"

namespace Tvctl {

namespace {

using Anchor = SvgWriter::Anchor;

constexpr double kRight = kWidth - kMargin;
constexpr double kRowHeight = 22;
constexpr double kChartHeight = 180;
constexpr double kOutcomeHeight = 22;
constexpr std::size_t kMostReasons = 8;
constexpr std::size_t kMostPhones = 10;
// Of the columns in the table of phones: where they end, or the last one begins.
constexpr double kColumns[] = {210, 300, 380, 460, 550, 580};

// Draws the parts one below the other.
class Sheet {
public:
    Sheet(const Statistics& statistics, std::size_t boxes)
        : m_statistics(statistics),
          m_title("bt-autoconnect: " + std::to_string(statistics.WakeUps()) + " wake-ups" +
                  (boxes > 1 ? " of " + std::to_string(boxes) + " boxes" : "")) {}

    std::string Draw() {
        m_writer.Text(kMargin, m_y, "title", m_title);
        m_writer.Text(kRight, m_y, "faint", m_statistics.First() + " to " + m_statistics.Last(),
                      Anchor::kEnd);
        m_y += 18;
        DrawOutcomes();
        DrawDurations();
        DrawReasons();
        DrawPhones();
        return m_writer.Document(kWidth, m_y + kMargin, m_title);
    }

private:
    void DrawHeading(const std::string& text) {
        m_y += 30;
        m_writer.Text(kMargin, m_y, "heading", text);
        m_y += 10;
    }

    // A bar whose parts are the outcomes, and below it what they mean.
    void DrawOutcomes() {
        static constexpr const char* kNames[] = {"music", "connected only", "nobody", "no attempt",
                                                 "not known"};
        // Two outcomes have one colour in a timeline, where there is only one at a time.
        static constexpr const char* kColours[] = {kGreen, kAmber, kRed, kPale, kGrey};
        const double unit = (kRight - kMargin) /
                            static_cast<double>(std::max<std::size_t>(1, m_statistics.WakeUps()));
        double left = kMargin;
        double text = kMargin;
        for (std::size_t i = 0; i < std::size(kNames); ++i) {
            const std::size_t count = m_statistics.Count(static_cast<Verdict>(i));
            if (count == 0) {
                continue;
            }
            const double width = unit * static_cast<double>(count);
            const std::string label = std::string(kNames[i]) + ": " + std::to_string(count) + " (" +
                                      Share(count, m_statistics.WakeUps()) + ")";
            m_writer.BeginGroup(label);
            m_writer.Rectangle(left, m_y, width, kOutcomeHeight, kColours[i]);
            m_writer.Rectangle(text, m_y + kOutcomeHeight + 11, 10, 10, kColours[i]);
            m_writer.Text(text + 15, m_y + kOutcomeHeight + 20, "label", label);
            m_writer.EndGroup();
            left += width;
            text += TextWidth(label, kLabelSize) + 30;
        }
        m_y += kOutcomeHeight + 24;
    }

    void DrawDurations() {
        const Durations& music = m_statistics.Music();
        if (music.Count() == 0) {
            return;
        }
        DrawHeading("From the signal to music: median " + DurationText(music.PercentileMs(50)) +
                    ", 95 % within " + DurationText(music.PercentileMs(95)));
        const std::vector<Durations::Bar> bars = music.Histogram();
        std::size_t highest = 1;
        for (const Durations::Bar& bar : bars) {
            highest = std::max(highest, bar.count);
        }
        m_y += 18;
        const double bottom = m_y + kChartHeight;
        const double pitch =
            (kRight - kMargin) / static_cast<double>(std::max<std::size_t>(bars.size(), 10));
        double x = kMargin;
        for (const Durations::Bar& bar : bars) {
            const double height =
                kChartHeight * static_cast<double>(bar.count) / static_cast<double>(highest);
            m_writer.BeginGroup(RangeText(bar) + ": " + std::to_string(bar.count));
            m_writer.Rectangle(x + 2, bottom - height, pitch - 4, height, kBlue);
            if (bar.count > 0) {
                m_writer.Text(x + pitch / 2, bottom - height - 4, "faint",
                              std::to_string(bar.count), Anchor::kMiddle);
            }
            const std::string range = RangeText(bar);
            m_writer.Text(x + pitch / 2, bottom + 15, "faint",
                          bar.toMs == 0 ? "longer" : range.substr(0, range.find(" s")),
                          Anchor::kMiddle);
            m_writer.EndGroup();
            x += pitch;
        }
        m_writer.Line(kMargin, bottom, kRight, bottom, kGrey);
        m_writer.Text(kRight, bottom + 30, "faint", "seconds", Anchor::kEnd);
        m_y = bottom + 20;
    }

    void DrawReasons() {
        const auto reasons = MostFrequent(m_statistics.WhyNot(), kMostReasons);
        if (reasons.empty()) {
            return;
        }
        DrawHeading("No music, because");
        constexpr double kBarsLeft = 620;
        for (const auto& [reason, count] : reasons) {
            const double width = (kRight - kBarsLeft - 60) * static_cast<double>(count) /
                                 static_cast<double>(reasons.front().second);
            m_writer.BeginGroup(reason + ": " + std::to_string(count));
            m_writer.Text(kMargin, m_y + 14, "label",
                          WrapText(reason, kLabelSize, kBarsLeft - kMargin - 10, 1).front());
            m_writer.Rectangle(kBarsLeft, m_y + 4, std::max(2.0, width), 12, kRed);
            m_writer.Text(kBarsLeft + std::max(2.0, width) + 6, m_y + 14, "faint",
                          std::to_string(count));
            m_writer.EndGroup();
            m_y += kRowHeight;
        }
        DrawMore(m_statistics.WhyNot().size(), kMostReasons);
    }

    void DrawPhones() {
        const auto phones = MostTried(m_statistics, kMostPhones);
        if (phones.empty()) {
            return;
        }
        DrawHeading("Phones");
        DrawRow("faint", "", {"tried", "connected", "music", "median", "95 %"},
                "most frequent reason otherwise");
        for (const auto& [address, phone] : phones) {
            const auto reason = MostFrequent(phone->reasons, 1);
            const bool played = phone->music.Count() > 0;
            DrawRow("label", address.empty() ? "(not named)" : address,
                    {std::to_string(phone->tried), std::to_string(phone->connected),
                     std::to_string(phone->music.Count()),
                     played ? DurationText(phone->music.PercentileMs(50)) : "",
                     played ? DurationText(phone->music.PercentileMs(95)) : ""},
                    reason.empty() ? "" : reason.front().first);
        }
        DrawMore(m_statistics.Phones().size(), kMostPhones);
    }

    void DrawRow(const char* textClass, const std::string& name,
                 const std::vector<std::string>& numbers, const std::string& reason) {
        m_writer.BeginGroup(reason);
        m_writer.Text(kMargin, m_y + 14, textClass, name);
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            m_writer.Text(kColumns[i], m_y + 14, textClass, numbers[i], Anchor::kEnd);
        }
        const double left = kColumns[std::size(kColumns) - 1];
        m_writer.Text(left, m_y + 14, textClass,
                      WrapText(reason, kLabelSize, kRight - left, 1).front());
        m_writer.EndGroup();
        m_y += kRowHeight;
        m_writer.Line(kMargin, m_y, kRight, m_y, kGrid);
    }

    void DrawMore(std::size_t count, std::size_t shown) {
        if (count > shown) {
            m_writer.Text(kMargin, m_y + 14, "faint",
                          "and " + std::to_string(count - shown) + " more");
            m_y += kRowHeight;
        }
    }

    const Statistics& m_statistics;
    std::string m_title;
    SvgWriter m_writer;
    double m_y = kMargin + 18;
};

}  // namespace

std::string ToSvg(const Statistics& statistics, std::size_t boxes) {
    return Sheet(statistics, boxes).Draw();
}

}  // namespace Tvctl
