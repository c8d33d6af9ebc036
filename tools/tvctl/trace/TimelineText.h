// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <set>
#include <string>
#include <vector>

#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

// "wake-up 3, 2026-11-21 07:00:01.000 on HOST"
[[nodiscard]] std::string HeadingOf(const WakeUp& wakeUp, std::size_t number);

// The timeline as lines of text: its outcome, then what happened, in the order of the times, each
// line with its time.
[[nodiscard]] std::vector<std::string> ToLines(const WakeUp& wakeUp, std::size_t number);

// The same as a JSON object, see tvctl(1); times in milliseconds from the wake-up's signal.
[[nodiscard]] Json::Value ToJson(const WakeUp& wakeUp);

// The timeline of a wake-up that is under way, line by line as they come.
class LiveTimeline {
public:
    // The lines that were not given before: of what began and has not ended, only that it began.
    [[nodiscard]] std::vector<std::string> NewLines(const WakeUp& wakeUp);
    // The outcome so far, unless it was given before.
    [[nodiscard]] std::vector<std::string> NewOutcome(const WakeUp& wakeUp);

private:
    std::multiset<std::string> m_given;
    std::string m_outcome;
};

}  // namespace Tvctl
