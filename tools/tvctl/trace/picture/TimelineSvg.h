// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

// The timelines as an SVG picture, one panel below the other. Of very many wake-ups it keeps and
// shows the last ones, and says so.
class TimelinePicture {
public:
    void Add(const WakeUp& wakeUp);
    [[nodiscard]] std::string Draw() const;

private:
    static constexpr std::size_t kMostPanels = 50;

    std::deque<WakeUp> m_last;
    std::size_t m_count = 0;
    std::string m_firstDate;
};

}  // namespace Tvctl
