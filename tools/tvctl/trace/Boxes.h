// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "tools/tvctl/trace/LogRecord.h"
#include "tools/tvctl/trace/Timeline.h"

namespace Tvctl {

// The timelines of the boxes that wrote into a log, so that their wake-ups are not mixed. Memory
// grows with the number of boxes, not with their wake-ups.
class Boxes {
public:
    // `take` gets each wake-up when nothing more of it can come, those of a box in their order.
    explicit Boxes(TakeWakeUp take) : m_take(std::move(take)) {}

    // The timeline that the record belongs to.
    Timeline& Add(const LogRecord& record);
    // No more records come, or not for long.
    void Finish();
    // Those wake-ups of which more may come.
    void ForEachHeld(const TakeWakeUp& look) const;
    [[nodiscard]] std::size_t Count() const { return m_boxes.size(); }

private:
    struct Box {
        std::string boot;
        Timeline timeline;
    };

    TakeWakeUp m_take;
    std::map<std::string, Box, std::less<>> m_boxes;  // by machine, by host where it is not known
};

}  // namespace Tvctl
