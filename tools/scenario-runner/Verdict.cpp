// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/Verdict.h"

#include <optional>

namespace ScenarioRunner {
namespace {

std::string Join(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "nobody" : text;
}

std::string Compare(const char* verb, const std::set<std::string>& names,
                    const std::optional<std::string>& expected) {
    const std::set<std::string> wanted =
        expected && !expected->empty() ? std::set<std::string>{*expected} : std::set<std::string>();
    if (!expected || names == wanted) {
        return "";
    }
    return Join(names) + " " + verb + ", expected: " + Join(wanted);
}

// Key files keep no blanks at the end of a line.
std::string WithoutBlanks(const std::string& text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

constexpr char kInLog[] = "the service's log";
constexpr char kInEvents[] = "the simulator's events";

}  // namespace

void Verdict::Sequence::OnLine(const std::string& line) {
    if (reached < texts.size() && Holds(line, texts[reached])) {
        ++reached;
    }
}

std::string Verdict::Sequence::Problem(const char* where) const {
    if (reached == texts.size()) {
        return "";
    }
    return "'" + texts[reached] + "' did not come in " + where +
           (reached == 0 ? "" : " after '" + texts[reached - 1] + "'");
}

Verdict::Verdict(const TvSim::Scenario& scenario) : m_expect(scenario.expect) {
    m_log.texts = m_expect.log;
    m_events.texts = m_expect.sim;
    for (const TvSim::PhonePlan& phone : scenario.phones) {
        m_phoneByPrefix[" phone " + phone.id + ": "] = phone.id;
    }
}

void Verdict::OnLogLine(const std::string& line) {
    CheckNever(line, kInLog);
    CheckExactly(line);
    m_log.OnLine(line);
    m_untilCame |= m_expect.untilInLog && Holds(line, m_expect.until);
}

void Verdict::OnSimulatorLine(const std::string& line) {
    CheckNever(line, kInEvents);
    m_events.OnLine(line);
    for (const auto& [prefix, phone] : m_phoneByPrefix) {
        const std::size_t at = line.find(prefix);
        if (at == std::string::npos) {
            continue;
        }
        const std::string what = line.substr(at + prefix.size());
        if (what == "connected") {
            m_connected.insert(phone);
        } else if (what == "disconnected") {
            m_connected.erase(phone);
            m_playing.erase(phone);
        } else if (what == "plays") {
            m_playing.insert(phone);
        } else if (what.compare(0, 3, "is ") == 0) {
            m_playing.erase(phone);
        }
    }
    m_untilCame |= !m_expect.untilInLog && Holds(line, m_expect.until);
}

std::string Verdict::Outcome() const {
    if (m_connected.empty()) {
        return "nobody is connected";
    }
    return Join(m_connected) + (m_connected.size() == 1 ? " is connected" : " are connected") +
           (m_playing.empty()          ? ", nothing plays"
            : m_playing == m_connected ? " and plays"
                                       : ", " + Join(m_playing) + " plays");
}

std::string Verdict::Problem(bool timeIsOver) const {
    if (!m_spoiltBy.empty()) {
        return m_spoiltBy;
    }
    if (m_expect.until.empty() && !timeIsOver) {
        return "it lasts for its whole time";
    }
    for (const std::string& missing : {m_log.Problem(kInLog), m_events.Problem(kInEvents)}) {
        if (!missing.empty()) {
            return missing;
        }
    }
    if (m_expect.exactly && m_said < m_expect.exactly->size()) {
        return "'" + (*m_expect.exactly)[m_said] + "' did not come in " + kInLog;
    }
    if (!m_expect.until.empty() && !m_untilCame) {
        return "'" + m_expect.until + "' did not come";
    }
    const std::string connected = Compare("connected", m_connected, m_expect.connected);
    return !connected.empty() ? connected : Compare("playing", m_playing, m_expect.playing);
}

void Verdict::CheckExactly(const std::string& line) {
    const std::size_t tag = line.find(" BT_AUTO_CONNECT: ");
    const std::size_t place = line.find(" > ", tag);
    if (!m_expect.exactly || !m_spoiltBy.empty() || place == std::string::npos ||
        line[tag - 1] == 'D') {
        return;
    }
    const std::string message = line.substr(tag - 1, 1) + line.substr(place + 2);
    m_isWoken |= Holds(message, "PrePareAndDoAutoConnect recieved");
    if (!m_isWoken) {
        return;
    }
    const bool isMore = m_said == m_expect.exactly->size();
    const std::string expected = isMore ? "nothing more" : (*m_expect.exactly)[m_said++];
    if (isMore || WithoutBlanks(message) != WithoutBlanks(expected)) {
        m_spoiltBy = "'" + message + "' came in " + kInLog + ", expected: '" + expected + "'";
    }
}

void Verdict::CheckNever(const std::string& line, const char* where) {
    for (const std::string& text : m_expect.never) {
        if (m_spoiltBy.empty() && Holds(line, text)) {
            m_spoiltBy = "'" + text + "' came in " + where;
        }
    }
}

}  // namespace ScenarioRunner
