// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tools/tvctl/trace/WakeUp.h"
#include "tools/tvctl/trace/picture/SvgWriter.h"

namespace Tvctl {

// One wake-up in the picture: its outcome, lanes over a common time axis, and the axis. A lane's
// label stands beside what the lane shows, on the side that has room for it, else below.
class SvgPanel {
public:
    static constexpr double kWidth = 1000;

    // The wake-up stays the caller's.
    SvgPanel(const WakeUp& wakeUp, std::size_t number);

    // Draws it with its upper edge at `top`; how high it is.
    [[nodiscard]] double Draw(SvgWriter& writer, double top) const;

private:
    struct Lane {
        std::string name;
        const char* nameClass = "lane";
        // Draws what the lane shows around the middle line `y`.
        std::function<void(SvgWriter& writer, double y)> draw;
        // What of the lane's width that takes.
        double left = 0;
        double right = 0;
        std::string label;
        bool isLabelInside = false;  // upon what the lane shows, if there is room
    };
    struct Label {
        std::vector<std::string> lines;
        double x = 0;
        SvgWriter::Anchor anchor = SvgWriter::Anchor::kStart;
        bool isBelow = false;
    };

    void AddRefusals();
    void AddWindow();
    void AddScans();
    void AddHeard();
    void AddConnections();
    void AddConnection(const Connection& connection);
    void AddPlaybacks();
    void AddRemarks();
    void AddMark(const std::string& name, double time, const char* colour,
                 const std::string& label);

    [[nodiscard]] double X(double time) const;
    [[nodiscard]] double DrawHeading(SvgWriter& writer, double top) const;
    [[nodiscard]] double DrawLane(SvgWriter& writer, const Lane& lane, double top) const;
    void DrawGrid(SvgWriter& writer, double top, double bottom) const;
    [[nodiscard]] static Label Place(const Lane& lane);
    [[nodiscard]] static double HeightOf(const Label& label);

    const WakeUp& m_wakeUp;
    std::size_t m_number;
    double m_seconds;  // that the axis shows
    std::vector<Lane> m_lanes;
};

}  // namespace Tvctl
