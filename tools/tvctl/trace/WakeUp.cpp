// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/WakeUp.h"

#include <algorithm>
#include <cstdlib>

#include "common/CHandle.h"
#include "utility/CommonUtil.h"

namespace Tvctl {

namespace {

template <typename Items, typename Test>
bool Any(const Items& items, Test test) {
    return std::any_of(items.begin(), items.end(), test);
}

std::string NameOf(const std::string& address) {
    return address.empty() ? "a phone that the log does not name" : address;
}

std::string Plural(std::size_t count, const std::string& singular) {
    return std::to_string(count) + " " + singular + (count == 1 ? "" : "s");
}

std::string DescribeFailure(const Connection& connection) {
    if (connection.code.empty()) {
        return connection.reason;
    }
    const int code = std::atoi(connection.code.c_str());
    const std::string name = Util::CommonUtil::ERR_STR(code);
    const std::string result =
        name == "None" ? "result " + connection.code : name + " (" + connection.code + ")";
    return connection.reason.empty() ? result : connection.reason + "; " + result;
}

// The connection that the service made, or was given later by a phone that it had asked for.
const Connection* FindConnected(const WakeUp& wakeUp) {
    for (const Connection& connection : wakeUp.connections) {
        const auto isChecked = [&connection](const Playback& playback) {
            return playback.address == connection.address;
        };
        if (connection.result == Connection::Result::kConnected ||
            (connection.WasMade() && Any(wakeUp.playbacks, isChecked))) {
            return &connection;
        }
    }
    return nullptr;
}

// What follows "was connected" or "connected".
std::string AfterConnection(const WakeUp& wakeUp) {
    static constexpr const char* kChecks[] = {"; the log has no playback check",
                                              " and plays already",
                                              " and told to play",
                                              ", but not told to play: ",
                                              ", but not told to play: ",
                                              ", told to play and plays",
                                              ", but does not play: "};
    if (wakeUp.playbacks.empty()) {
        return "";
    }
    const Playback& last = wakeUp.playbacks.back();
    return TextOf(kChecks, last.outcome) + last.reason;
}

std::string SummariseFailures(const WakeUp& wakeUp) {
    const Connection& last = wakeUp.connections.back();
    switch (last.result) {
        case Connection::Result::kUnknown:
            return "the log does not tell how the connection to " + NameOf(last.address) + " ended";
        case Connection::Result::kByItself:
            return NameOf(last.address) + " connected by itself; the service connected nobody";
        default:
            break;
    }
    if (wakeUp.connections.size() > 1) {
        return "no phone was connected in " + Plural(wakeUp.connections.size(), "attempt");
    }
    return NameOf(last.address) + (last.result == Connection::Result::kNotBonded
                                       ? " was " + Describe(last)
                                       : " was not connected: " + Describe(last));
}

// Of phones that were tried in vain; several fail for the cause of the last that was asked.
std::string CauseOf(const std::vector<Connection>& connections) {
    if (connections.back().result == Connection::Result::kUnknown ||
        connections.back().result == Connection::Result::kByItself) {
        return ReasonOf(connections.back());
    }
    const auto failed =
        std::find_if(connections.rbegin(), connections.rend(), [](const Connection& connection) {
            return connection.result == Connection::Result::kFailed;
        });
    return ReasonOf(failed == connections.rend() ? connections.back() : *failed);
}

std::string SummariseScan(const Scan& scan) {
    static constexpr const char* kEnds[] = {
        "the log ends during the LE scan", "nothing was connected after the LE scan",
        "nothing was connected after the LE scan",
        "the LE scan failed: ", "another wake-up came during the LE scan"};
    return TextOf(kEnds, scan.how) + scan.reason;
}

}  // namespace

std::string Join(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

std::string Seconds(double seconds) {
    return GStringPtr(g_strdup_printf("%.*f s", seconds < 9.95 ? 2 : 1, seconds)).get();
}

std::string Describe(const Window& window) {
    if (!window.end) {
        return "open for " + std::to_string(static_cast<int>(kWindowSeconds)) +
               " s; its end is not in the log";
    }
    return "open for " + Seconds(*window.end - window.begin);
}

std::string Describe(const Scan& scan) {
    const std::string length = scan.end ? Seconds(*scan.end - scan.begin) : "";
    switch (scan.how) {
        case Scan::End::kMatch:
            return "ended by a match after " + length;
        case Scan::End::kTimer:
            return "ended by its timer after " + length + ", no registered phone heard";
        case Scan::End::kFailed:
            return "failed: " + scan.reason;
        case Scan::End::kTakenOver:
            return "taken over by the next wake-up";
        case Scan::End::kUnknown:
            break;
    }
    return scan.end ? "stopped after " + length : "its end is not in the log";
}

std::string Describe(const Strangers& strangers) {
    std::string text = Plural(strangers.times.size(), "other advertisement");
    if (strangers.different.size() < strangers.times.size()) {
        text += " (" + std::to_string(strangers.different.size()) + " different)";
    }
    return strangers.shortTimes.empty()
               ? text
               : text + ", " + std::to_string(strangers.shortTimes.size()) +
                     " too short to name a phone";
}

std::string Describe(const Connection& connection) {
    const std::string length = connection.end ? Seconds(*connection.end - connection.begin) : "";
    const std::string loss = connection.lost ? ", lost at " + Seconds(*connection.lost) : "";
    switch (connection.result) {
        case Connection::Result::kConnected:
            return "connected after " + length + loss;
        case Connection::Result::kFailed:
            return "failed after " + length + ": " + DescribeFailure(connection);
        case Connection::Result::kNotBonded:
            return "not tried, it is not bonded";
        case Connection::Result::kByItself:
            return "connected by itself" + loss;
        case Connection::Result::kUnknown:
            break;
    }
    return "tried; its end is not in the log";
}

std::string ReasonOf(const Connection& connection) {
    static constexpr const char* kCauses[] = {
        "the log does not tell how the connection ended", "connected, and another phone played", "",
        "the phone is not bonded", "the phone connected by itself"};
    if (connection.result == Connection::Result::kFailed) {
        return connection.reason.empty() ? DescribeFailure(connection) : connection.reason;
    }
    return TextOf(kCauses, connection.result);
}

std::string Describe(const Playback& playback) {
    static constexpr const char* kOutcomes[] = {
        "the check is not in the log", "plays already, nothing sent", "play command sent",
        "play command not sent: ",     "play command failed: ",       "told to play, plays",
        "told to play, no music: "};
    return TextOf(kOutcomes, playback.outcome) + playback.reason;
}

std::string DescribeCheck(const Playback& playback) {
    if (!playback.answered) {
        return Describe(playback);
    }
    Playback sent = playback;
    sent.outcome = Playback::Outcome::kCommandSent;
    sent.reason.clear();
    return Describe(sent);
}

void WakeUp::SetOrigin(const LogRecord& record) {
    timeUs = record.timeUs;
    machine = record.machine;
    host = record.host;
    boot = record.boot;
    when = record.when;
    if (when.empty()) {
        const CPtr<GDateTime, g_date_time_unref> time(
            g_date_time_new_from_unix_local(timeUs / G_USEC_PER_SEC));
        const std::string ms = std::to_string(1000 + timeUs % G_USEC_PER_SEC / 1000);
        when = time == nullptr
                   ? "a time that no calendar has"
                   : GStringPtr(g_date_time_format(time.get(), "%Y-%m-%d %H:%M:%S.")).get() +
                         ms.substr(1);
    }
}

bool WakeUp::IsOpen() const {
    const auto hasNoEnd = [](const auto& item) { return !item.end; };
    return Any(scans, hasNoEnd) || Any(connections, hasNoEnd) || Any(playbacks, hasNoEnd);
}

bool WakeUp::IsLost(const std::string& address) const {
    return Any(connections, [&address](const Connection& connection) {
        return connection.address == address && connection.lost;
    });
}

Verdict WakeUp::Outcome() const {
    if (FindConnected(*this) != nullptr) {
        const auto last =
            playbacks.empty() ? Playback::Outcome::kUnknown : playbacks.back().outcome;
        const bool plays = last == Playback::Outcome::kPlaysAlready ||
                           last == Playback::Outcome::kCommandSent ||
                           last == Playback::Outcome::kPlays;
        return plays ? Verdict::kPlays : Verdict::kConnected;
    }
    if (!connections.empty()) {
        return connections.back().result == Connection::Result::kUnknown ? Verdict::kUnknown
                                                                         : Verdict::kNobody;
    }
    if (!scans.empty()) {
        return scans.back().how == Scan::End::kUnknown ? Verdict::kUnknown : Verdict::kNobody;
    }
    return refusals.empty() && (!window || isStarted) ? Verdict::kUnknown : Verdict::kRefused;
}

std::string WakeUp::Summary() const {
    if (const Connection* connected = FindConnected(*this)) {
        return NameOf(connected->address) + " was connected" + AfterConnection(*this);
    }
    if (!refusals.empty()) {
        return std::string(scans.empty() ? "no attempt: " : "given up: ") + refusals.back().text;
    }
    if (!connections.empty()) {
        return SummariseFailures(*this);
    }
    if (!scans.empty()) {
        return SummariseScan(scans.back());
    }
    return "the log ends before anything was tried";
}

std::string WakeUp::Reason() const {
    if (Outcome() == Verdict::kPlays) {
        return "";
    }
    if (FindConnected(*this) != nullptr) {
        return playbacks.empty() ? "connected when the next wake-up had come"
                                 : "connected" + AfterConnection(*this);
    }
    if (!refusals.empty()) {
        return refusals.back().text;
    }
    return connections.empty() ? Summary() : CauseOf(connections);
}

std::string WakeUp::ConnectedPhone() const {
    const Connection* const connected = FindConnected(*this);
    return connected == nullptr ? "" : connected->address;
}

std::optional<double> WakeUp::TimeOfMusic() const {
    if (Outcome() != Verdict::kPlays) {
        return std::nullopt;
    }
    return playbacks.back().answered ? playbacks.back().answered : playbacks.back().end;
}

}  // namespace Tvctl
