// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/tv-sim/Plans.h"

namespace TvSim {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// What the runner sets up before it starts the service.
struct TvPlan {
    bool zemi = true;
    int wakeupReason = 1;
    int ambientMode = 1;
    int ambientType = 1;
    Pairs features;
    Pairs keys;
};

// The wake-ups that the runner sends.
struct WakePlan {
    Pairs updates;  // sent before: phones with their new setting, "on" or "off"
    int count = 1;
    int everyMs = 0;  // from one to the next
};

// What is expected of a run.
struct Expectation {
    std::string until;        // a text that ends the run when a line holds it
    bool untilInLog = false;  // a line of the service's log, else of the simulator's events
    int withinMs = 30000;
    int settleMs = 0;                      // so long everything must stay as expected after that
    std::vector<std::string> log;          // in the service's log, in this order
    std::vector<std::string> sim;          // in the simulator's events, in this order
    std::vector<std::string> never;        // nowhere in the service's log or the simulator's events
    std::optional<std::string> connected;  // the phone at the end, empty for none; not said: any
    std::optional<std::string> playing;
};

// A world to simulate, and for the runner how to set the TV up and what must come of it.
struct Scenario {
    std::string name;  // the file's name without directory and suffix
    std::string description;
    CallFaults faults;
    AdapterPlan adapter;
    AdapterPlan secondAdapter = SecondAdapter();
    std::vector<PhonePlan> phones;
    StrangersPlan strangers;
    TvPlan tv;
    WakePlan wake;
    Expectation expect;

    // Borrowed; null when there is no such phone.
    [[nodiscard]] const PhonePlan* FindPhone(const std::string& id) const;
};

// Reads a scenario. Empty when the file cannot be read or says something unknown or malformed;
// `error` then is one line with the file's name, the section and the key.
[[nodiscard]] std::optional<Scenario> ReadScenario(const std::string& file, std::string& error);

// The format, for a person, as `--help` prints it.
extern const char kScenarioHelp[];

}  // namespace TvSim
