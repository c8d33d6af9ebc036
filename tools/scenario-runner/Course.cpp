// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/Course.h"

#include <algorithm>
#include <utility>

namespace ScenarioRunner {
namespace {

std::string Seconds(gint64 us) {
    const gint64 tenths = (us + 50000) / 100000;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

}  // namespace

Course::Course(const TvSim::Scenario& scenario, std::function<void(const TvSim::TvEvent&)> act,
               std::function<void(bool, const std::string&)> done)
    : m_scenario(scenario), m_act(std::move(act)), m_done(std::move(done)), m_verdict(scenario) {}

void Course::Begin() {
    m_begunUs = g_get_monotonic_time();
    const int withinMs = m_scenario.expect.withinMs;
    m_deadline = Timer::Once(withinMs, [this, withinMs] {
        const std::string problem = m_next == m_scenario.events.size()
                                        ? m_verdict.Problem(true)
                                        : "the last event did not happen";
        Finish(problem.empty(), problem + " within " + Seconds(withinMs * G_TIME_SPAN_MILLISECOND));
    });
    RunNext();
}

// One at a time: while an event is carried out, the next one waits.
void Course::RunNext() {
    const std::vector<TvSim::TvEvent>& events = m_scenario.events;
    if (m_next < events.size()) {
        const gint64 sinceMs = (g_get_monotonic_time() - m_begunUs) / G_TIME_SPAN_MILLISECOND;
        const gint64 pauseMs = events[m_next].afterMs - sinceMs;
        m_event = Timer::Once(static_cast<int>(std::max<gint64>(0, pauseMs)), [this] {
            m_act(m_scenario.events[m_next]);
            ++m_next;
            RunNext();
        });
    }
    Judge();
}

void Course::OnLogLine(const std::string& line) {
    m_verdict.OnLogLine(line);
    Judge();
}

void Course::OnSimulatorLine(const std::string& line) {
    m_verdict.OnSimulatorLine(line);
    Judge();
}

void Course::Judge() {
    if (m_begunUs == 0) {
        return;
    }
    if (m_verdict.Spoilt()) {
        Finish(false, m_verdict.Problem(true));
    } else if (m_next == m_scenario.events.size() && !m_settle.IsRunning() &&
               m_verdict.Problem(false).empty()) {
        m_settle = Timer::Once(m_scenario.expect.settleMs, [this] {
            const std::string problem = m_verdict.Problem(false);
            Finish(problem.empty(), problem);
        });
    }
}

void Course::Finish(bool succeeded, const std::string& what) {
    m_deadline.Cancel();
    m_event.Cancel();
    m_settle.Cancel();
    if (const auto done = std::exchange(m_done, nullptr)) {
        done(succeeded, succeeded ? "OK " + m_scenario.name + ": " + m_verdict.Outcome() + " (" +
                                        Seconds(g_get_monotonic_time() - m_begunUs) + ")"
                                  : "FAILED " + m_scenario.name + ": " + what);
    }
}

}  // namespace ScenarioRunner
