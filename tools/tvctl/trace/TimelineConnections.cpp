// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <utility>

#include "tools/tvctl/trace/Timeline.h"

// The part of the timeline from the first attempt to connect on; Timeline.cpp has what comes
// before.

namespace Tvctl {

namespace {

// How many wake-ups, connections or checks may be on their way at once; any more are a broken log.
constexpr std::size_t kMostAtOnce = 8;

// Where the last of the items begin, those among which something may still be on its way.
template <typename Item>
auto RecentOf(std::vector<Item>& items) {
    return items.end() - static_cast<std::ptrdiff_t>(std::min(items.size(), kMostAtOnce));
}

}  // namespace

bool Timeline::OnConnection(const RecognisedLine& line) {
    const auto add = [this](const std::string& address, Connection::Result result) {
        const double now = Touch();
        const bool isOver = result != Connection::Result::kUnknown;
        Current().connections.push_back(
            {address, now, isOver ? std::optional<double>(now) : std::nullopt, result, "", "", {}});
    };
    switch (line.event) {
        case LogEvent::kNotBonded:
            // The service says so, too, where it could not ask.
            if (!m_candidate.empty() && m_failedAddress == m_candidate) {
                add(m_candidate, Connection::Result::kFailed);
                Current().connections.back().reason = m_failure;
            } else {
                add(m_candidate, Connection::Result::kNotBonded);
            }
            m_failedAddress.clear();
            return true;
        case LogEvent::kConnecting:
            add(line.values[0], Connection::Result::kUnknown);
            return true;
        case LogEvent::kNotConnected:
            m_failedAddress = line.values[0];
            m_failure = line.values[1];
            return true;
        case LogEvent::kConnectResult:
            OnConnectResult(line.values[0], line.values[1]);
            return true;
        case LogEvent::kDisconnected:
            OnDisconnected(line.values[1]);
            return true;
        default:
            return false;
    }
}

Timeline::Begun* Timeline::FindConnecting(const std::string& address) {
    Begun* latest = nullptr;
    for (auto begun = RecentOf(m_wakeUps); begun != m_wakeUps.end(); ++begun) {
        const std::vector<Connection>& connections = begun->wakeUp.connections;
        if (!connections.empty() && !connections.back().end &&
            connections.back().address == address) {
            latest = &*begun;
        }
    }
    return latest;
}

void Timeline::OnConnectResult(const std::string& code, const std::string& address) {
    Begun* const begun = FindConnecting(address);
    const bool isConnected = code == "0";
    if (begun == nullptr) {
        if (isConnected) {
            OnConnectedByItself(address);
        }
        return;
    }
    Connection& connection = begun->wakeUp.connections.back();
    connection.end = Touch(*begun);
    connection.result = isConnected ? Connection::Result::kConnected : Connection::Result::kFailed;
    if (!isConnected) {
        connection.code = code;
        connection.reason = m_failedAddress == address ? m_failure : "";
    } else if (begun == &m_wakeUps.back()) {
        begun->wakeUp.playbacks.push_back(
            {address, *connection.end, {}, Playback::Outcome::kUnknown, ""});
    }
    m_failedAddress.clear();
    m_playerFault.clear();
}

// The service has a phone play that it once asked for, however late it comes.
void Timeline::OnConnectedByItself(const std::string& address) {
    const double now = Touch();
    std::vector<Connection>& connections = Current().connections;
    const bool wasAskedFor = !connections.empty() && connections.back().address == address &&
                             connections.back().result == Connection::Result::kFailed;
    connections.push_back({address, now, now, Connection::Result::kByItself, "", "", {}});
    if (wasAskedFor) {
        Current().playbacks.push_back({address, now, {}, Playback::Outcome::kUnknown, ""});
    }
}

void Timeline::OnDisconnected(const std::string& address) {
    std::vector<Connection>& connections = Current().connections;
    for (auto connection = RecentOf(connections); connection != connections.end(); ++connection) {
        const bool wasConnected = connection->result == Connection::Result::kConnected ||
                                  connection->result == Connection::Result::kByItself;
        if (connection->address == address && wasConnected && !connection->lost) {
            connection->lost = Touch();
        }
    }
}

bool Timeline::OnPlayback(const RecognisedLine& line) {
    switch (line.event) {
        case LogEvent::kPlayerUnknown:
            m_playerFault = line.meaning;
            return true;
        case LogEvent::kPlaysAlready:
            EndPlayback(Playback::Outcome::kPlaysAlready, "");
            return true;
        case LogEvent::kPlaySent:
            EndPlayback(Playback::Outcome::kCommandSent, "");
            return true;
        case LogEvent::kPlayNotSent:
            EndPlayback(Playback::Outcome::kNotSent, std::exchange(m_playerFault, ""));
            return true;
        case LogEvent::kLaunchFailed:
            OnLaunchFailed(line.values.empty() ? "the media player cannot be launched"
                                               : line.values[0]);
            return true;
        default:
            return false;
    }
}

// The check belongs to the oldest connection that waits for one: its timer outlives a wake-up.
void Timeline::EndPlayback(Playback::Outcome outcome, const std::string& reason) {
    for (auto begun = RecentOf(m_wakeUps); begun != m_wakeUps.end(); ++begun) {
        std::vector<Playback>& playbacks = begun->wakeUp.playbacks;
        const auto awaited = std::find_if(RecentOf(playbacks), playbacks.end(),
                                          [](const Playback& playback) { return !playback.end; });
        if (awaited == playbacks.end()) {
            continue;
        }
        awaited->end = Touch(*begun);
        awaited->outcome = outcome;
        awaited->reason = reason;
        if (outcome == Playback::Outcome::kNotSent && reason.empty()) {
            awaited->reason = begun->wakeUp.IsLost(awaited->address)
                                  ? "the phone had left"
                                  : "the state of its player cannot be read";
        }
        return;
    }
}

// It comes behind the command, a moment or a timeout later, and may be reported twice.
void Timeline::OnLaunchFailed(const std::string& reason) {
    for (auto begun = m_wakeUps.end(); begun != RecentOf(m_wakeUps);) {
        --begun;
        std::vector<Playback>& playbacks = begun->wakeUp.playbacks;
        if (playbacks.empty()) {
            continue;
        }
        if (playbacks.back().outcome == Playback::Outcome::kCommandSent) {
            playbacks.back().outcome = Playback::Outcome::kLaunchFailed;
            playbacks.back().reason = reason;
            Touch(*begun);
        }
        return;
    }
}

}  // namespace Tvctl
