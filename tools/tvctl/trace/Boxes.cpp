// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/Boxes.h"

#include <algorithm>

namespace Tvctl {

Timeline& Boxes::Add(const LogRecord& record) {
    const std::string_view name = record.machine.empty() ? record.host : record.machine;
    auto found = m_boxes.find(name);
    if (found == m_boxes.end()) {
        found = m_boxes.emplace(name, Box{std::string(record.boot), Timeline(m_take)}).first;
    }
    Box& box = found->second;
    if (box.boot != record.boot) {
        box.timeline.Finish();
        box.boot = record.boot;
    }
    box.timeline.Add(record);
    return box.timeline;
}

void Boxes::Finish() {
    for (auto& [name, box] : m_boxes) {
        box.timeline.Finish();
    }
}

void Boxes::ForEachHeld(const TakeWakeUp& look) const {
    for (const auto& [name, box] : m_boxes) {
        const std::vector<WakeUp>& held = box.timeline.Held();
        std::for_each(held.begin(), held.end(), look);
    }
}

}  // namespace Tvctl
