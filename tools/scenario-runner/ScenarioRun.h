// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/scenario-runner/Workspace.h"
#include "tools/tv-sim/Scenario.h"

namespace ScenarioRunner {

struct Options {
    std::string binDir;
    std::string scenarioFile;
    bool keep = false;
    bool quiet = false;   // only the last line
    bool log = false;     // the service's log as well, on standard error
    bool colour = false;  // the service's log in colours
};

// Runs a scenario: a bus of its own, the simulator, the TV's settings, the service, the wake-up,
// and then waiting for the end that the scenario expects. Ends everything that it started. Prints
// what the scenario shows, what the phones do, and the timeline of the service's log. Returns
// whether all was as expected; `result` is then the last line to print: "OK ..." or "FAILED ...".
bool Run(const Options& options, const TvSim::Scenario& scenario, const Workspace& workspace,
         std::string& result);

}  // namespace ScenarioRunner
