// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tools/tvctl/trace/Boxes.h"
#include "tools/tvctl/trace/LogReader.h"
#include "tools/tvctl/trace/TimelineText.h"

namespace Tvctl {

// Follows a log and draws each wake-up that begins from now on, line by line as it happens, and its
// outcome as soon as nothing of it is under way.
class LiveLog {
public:
    // `print` gets the lines, `take` each wake-up of which nothing more can come.
    LiveLog(LogSource source, std::function<void(const std::string& line)> print, TakeWakeUp take);

    // Draws what has come; if nothing has, waits for it, but not longer.
    void Look(int ms);
    // Nothing more comes, or what came was the last that is of interest.
    void Finish() { m_boxes.Finish(); }
    [[nodiscard]] bool IsOver() const { return m_reader->IsOver(); }
    [[nodiscard]] LogCount Count() const { return m_reader->Count(); }
    // The first wake-up, as far as it has come.
    [[nodiscard]] const std::optional<WakeUp>& First() const { return m_first; }
    // Since the last line of the service.
    [[nodiscard]] std::int64_t QuietMs() const;

private:
    using Key = std::pair<std::string, std::size_t>;  // box, number of the wake-up

    void Add(const LogRecord& record);
    void Draw(const WakeUp& wakeUp);
    void DrawOutcome(const WakeUp& wakeUp);
    void Print(const WakeUp& wakeUp, const std::vector<std::string>& lines);
    static Key KeyOf(const WakeUp& wakeUp);

    std::function<void(const std::string& line)> m_print;
    TakeWakeUp m_take;
    std::map<Key, LiveTimeline> m_drawn;
    std::size_t m_count = 0;
    std::optional<Key> m_last;  // whose lines were printed
    std::optional<WakeUp> m_first;
    std::int64_t m_lastUs;  // by the monotonic clock
    Boxes m_boxes;
    std::unique_ptr<LogReader> m_reader;
};

}  // namespace Tvctl
