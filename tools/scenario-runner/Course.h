// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "common/Source.h"
#include "tools/scenario-runner/Verdict.h"
#include "tools/tv-sim/Scenario.h"

namespace ScenarioRunner {

// A scenario from its first wake-up to its end: its events at their time, and whether what is
// expected comes. Main loop only.
class Course {
public:
    // `act` carries an event out, and may run the main loop meanwhile. `done` is called once: with
    // whether all was as expected, and the last line to print, "OK ..." or "FAILED ...".
    Course(const TvSim::Scenario& scenario, std::function<void(const TvSim::TvEvent&)> act,
           std::function<void(bool, const std::string&)> done);
    Course(const Course&) = delete;
    Course& operator=(const Course&) = delete;

    // Now the TV wakes for the first time.
    void Begin();
    void OnLogLine(const std::string& line);  // without colours
    void OnSimulatorLine(const std::string& line);
    // Something is wrong that the scenario does not speak of. The first end decides.
    void Fail(const std::string& what) { Finish(false, what); }

private:
    void RunNext();
    void Judge();
    void Finish(bool succeeded, const std::string& what);

    const TvSim::Scenario& m_scenario;
    std::function<void(const TvSim::TvEvent&)> m_act;
    std::function<void(bool, const std::string&)> m_done;
    Verdict m_verdict;
    std::size_t m_next = 0;  // of the events
    gint64 m_begunUs = 0;
    Timer m_deadline;
    Timer m_event;
    Timer m_settle;  // the expected end is there, and must stay so for a moment
};

}  // namespace ScenarioRunner
