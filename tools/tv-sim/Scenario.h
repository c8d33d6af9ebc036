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

// What the TV, or a phone over it, does from the first wake-up on.
struct TvEvent {
    enum class Kind { kWake, kUpdate, kSet, kUnset, kCheck };
    int afterMs = 0;  // after the first wake-up
    Kind kind = Kind::kWake;
    std::string key;   // kSet, kUnset and kCheck: a configuration key
    std::string text;  // kUpdate: of the setting; kSet: its new value; kCheck: what it must be
};

// What is expected of a run.
struct Expectation {
    std::string until;        // a text that ends the run when a line holds it
    bool untilInLog = false;  // a line of the service's log, else of the simulator's events
    int withinMs = 30000;
    int settleMs = 0;                // so long everything must stay as expected after that
    std::vector<std::string> log;    // in the service's log, in this order
    std::vector<std::string> sim;    // in the simulator's events, in this order
    std::vector<std::string> never;  // nowhere in the service's log or the simulator's events
    std::optional<std::vector<std::string>> exactly;  // the service's own messages; not said: any
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
    std::vector<TvEvent> events;  // in the order of their time; the first wake-up is one, too
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
