// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LiveLog.h"

#include <glib.h>

namespace Tvctl {

namespace {

// What happens next in a wake-up of which nothing is under way follows sooner.
constexpr std::int64_t kSettledMs = 1500;
// Nothing that the service waits for takes longer.
constexpr std::int64_t kForgottenMs = 60000;

LogSource NewPartOf(LogSource source) {
    source.onlyNew = true;
    return source;
}

}  // namespace

LiveLog::LiveLog(LogSource source, std::function<void(const std::string& line)> print,
                 TakeWakeUp take)
    : m_print(std::move(print)),
      m_take(std::move(take)),
      m_lastUs(g_get_monotonic_time()),
      m_boxes([this](const WakeUp& wakeUp) {
          Draw(wakeUp);
          DrawOutcome(wakeUp);
          m_drawn.erase(KeyOf(wakeUp));
          m_take(wakeUp);
      }),
      m_reader(OpenLog(NewPartOf(std::move(source)), [this](const auto& record) { Add(record); })) {
}

void LiveLog::Look(int ms) {
    const std::size_t before = m_reader->Count().records;
    m_reader->Read();
    if (m_reader->Count().records == before && !IsOver()) {
        m_reader->Wait(ms);
        m_reader->Read();
    }
    if (QuietMs() > kForgottenMs) {
        m_boxes.Finish();
    } else if (QuietMs() > kSettledMs) {
        m_boxes.ForEachHeld([this](const WakeUp& wakeUp) {
            if (!wakeUp.IsOpen()) {
                DrawOutcome(wakeUp);
            }
        });
    }
}

std::int64_t LiveLog::QuietMs() const {
    return (g_get_monotonic_time() - m_lastUs) / 1000;
}

void LiveLog::Add(const LogRecord& record) {
    m_lastUs = g_get_monotonic_time();
    for (const WakeUp& wakeUp : m_boxes.Add(record).Held()) {
        Draw(wakeUp);
    }
}

void LiveLog::Draw(const WakeUp& wakeUp) {
    if (!m_first || KeyOf(*m_first) == KeyOf(wakeUp)) {
        m_first = wakeUp;
    }
    const bool isNew = m_drawn.count(KeyOf(wakeUp)) == 0;
    if (isNew) {
        m_print(HeadingOf(wakeUp, ++m_count));
        m_last = KeyOf(wakeUp);
    }
    Print(wakeUp, m_drawn[KeyOf(wakeUp)].NewLines(wakeUp));
}

void LiveLog::DrawOutcome(const WakeUp& wakeUp) {
    Print(wakeUp, m_drawn[KeyOf(wakeUp)].NewOutcome(wakeUp));
}

// Says whose lines they are when those before were another wake-up's.
void LiveLog::Print(const WakeUp& wakeUp, const std::vector<std::string>& lines) {
    if (!lines.empty() && m_last != KeyOf(wakeUp)) {
        m_print("the wake-up of " + wakeUp.when +
                (wakeUp.host.empty() ? "" : " on " + wakeUp.host) + ":");
        m_last = KeyOf(wakeUp);
    }
    for (const std::string& line : lines) {
        m_print(line);
    }
}

LiveLog::Key LiveLog::KeyOf(const WakeUp& wakeUp) {
    return {wakeUp.machine.empty() ? wakeUp.host : wakeUp.machine, wakeUp.number};
}

}  // namespace Tvctl
