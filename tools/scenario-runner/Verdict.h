// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/tv-sim/Scenario.h"

namespace ScenarioRunner {

inline bool Holds(const std::string& line, const std::string& text) {
    return line.find(text) != std::string::npos;
}

// Compares what the service logs and what the simulator tells with what a scenario expects.
class Verdict {
public:
    explicit Verdict(const TvSim::Scenario& scenario);

    void OnLogLine(const std::string& line);  // without colours
    void OnSimulatorLine(const std::string& line);

    // Something came that must never come; nothing that follows helps.
    [[nodiscard]] bool Spoilt() const { return !m_spoiltBy.empty(); }
    // What is missing or wrong now, empty when nothing is. A scenario that names no end lasts for
    // its whole time, and is not complete before that is over.
    [[nodiscard]] std::string Problem(bool timeIsOver) const;
    // Who is connected and who plays, as a sentence.
    [[nodiscard]] std::string Outcome() const;

private:
    // Texts that must come in this order.
    struct Sequence {
        void OnLine(const std::string& line);
        // What is missing; empty when nothing is.
        [[nodiscard]] std::string Problem(const char* where) const;

        std::vector<std::string> texts;
        std::size_t reached = 0;  // so many of them came
    };

    void CheckExactly(const std::string& line);
    void CheckNever(const std::string& line, const char* where);

    TvSim::Expectation m_expect;
    std::map<std::string, std::string> m_phoneByPrefix;  // "phone NAME: " to NAME
    bool m_untilCame = false;
    bool m_isWoken = false;
    std::size_t m_said = 0;  // messages that were expected exactly
    Sequence m_log;
    Sequence m_events;
    std::string m_spoiltBy;
    std::set<std::string> m_connected;
    std::set<std::string> m_playing;
};

}  // namespace ScenarioRunner
