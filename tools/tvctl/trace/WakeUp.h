// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "tools/tvctl/trace/LogRecord.h"

namespace Tvctl {

// What one wake-up led to, as far as the log tells. Every time is in seconds from its signal, and
// an end that is missing did not come into the log.

inline constexpr double kWindowSeconds = Conditions::kWakeUpWindowMs / 1000.0;

struct Window {
    double begin = 0;
    std::optional<double> end;
};

struct Scan {
    enum class End { kUnknown, kMatch, kTimer, kFailed, kTakenOver };

    double begin = 0;
    std::optional<double> end;
    End how = End::kUnknown;
    std::string reason;  // of a failure
};

struct HeardPhone {
    double time = 0;
    std::string address;
};

// Advertisements that do not name a registered phone.
struct Strangers {
    std::vector<double> times;        // of those that are long enough to name a phone
    std::set<std::string> different;  // what these would name
    std::vector<double> shortTimes;
};

struct Connection {
    enum class Result { kUnknown, kConnected, kFailed, kNotBonded, kByItself };

    std::string address;  // empty where the log does not say it
    double begin = 0;
    std::optional<double> end;
    Result result = Result::kUnknown;
    std::string code;            // of a failure, as it is logged
    std::string reason;          // of a failure, from the platform; may be empty
    std::optional<double> lost;  // when the connection went down again

    // Whether the phone was connected, by the service or by itself.
    [[nodiscard]] bool WasMade() const {
        return result == Result::kConnected || result == Result::kByItself;
    }
};

struct Playback {
    // Not every log has the lines of the media player, which tell what became of the command.
    enum class Outcome {
        kUnknown,
        kPlaysAlready,
        kCommandSent,
        kNotSent,
        kLaunchFailed,
        kPlays,
        kSilent
    };

    std::string address;
    double begin = 0;  // when the phone was connected
    std::optional<double> end;
    Outcome outcome = Outcome::kUnknown;
    std::string reason;                   // for which nothing was sent, or nothing plays
    std::optional<double> answered = {};  // when it was known what became of the command
};

struct Remark {
    double time = 0;
    std::string text;
};

enum class Verdict { kPlays, kConnected, kNobody, kRefused, kUnknown };
// What JSON calls them.
inline constexpr const char* kVerdictNames[] = {"plays", "connected", "nobody", "refused",
                                                "unknown"};

struct WakeUp {
    std::size_t number = 0;    // of its box, from 1
    std::string when;          // as the log has it, or local time
    std::int64_t timeUs = 0;   // since 1970; as if in UTC where the log has no zone
    std::int64_t beginUs = 0;  // of its signal, by the timeline's clock
    // Of the box; empty where the log does not tell.
    std::string machine;
    std::string host;
    std::string boot;
    std::optional<Window> window;
    bool isStarted = false;        // the conditions that come before the list of phones hold
    std::vector<Remark> refusals;  // conditions that ended it
    std::vector<std::string> phones;
    std::vector<Scan> scans;
    std::vector<HeardPhone> heard;
    Strangers strangers;
    std::vector<Connection> connections;
    std::vector<Playback> playbacks;
    std::vector<Remark> remarks;  // what happened to Bluetooth, the clock or the service
    double end = 0;               // of the last thing that the log tells

    // Takes when and where it began from the line of its signal.
    void SetOrigin(const LogRecord& record);
    // Whether something began that has not ended, except the window, which ends by itself.
    [[nodiscard]] bool IsOpen() const;
    // Whether a connection to that phone went down again.
    [[nodiscard]] bool IsLost(const std::string& address) const;
    [[nodiscard]] Verdict Outcome() const;
    // The outcome in one sentence, without a full stop.
    [[nodiscard]] std::string Summary() const;
    // Why it did not end in music, the same words for the same cause; empty if it did.
    [[nodiscard]] std::string Reason() const;
    // The phone that was connected; empty if none was.
    [[nodiscard]] std::string ConnectedPhone() const;
    // When the phone played or was told to, if it ended in music.
    [[nodiscard]] std::optional<double> TimeOfMusic() const;
};

// What came of it, a few words each, without a full stop.
[[nodiscard]] std::string Describe(const Window& window);
[[nodiscard]] std::string Describe(const Scan& scan);
[[nodiscard]] std::string Describe(const Strangers& strangers);
[[nodiscard]] std::string Describe(const Connection& connection);
[[nodiscard]] std::string Describe(const Playback& playback);
// Why a phone is not connected, the same words for the same cause.
[[nodiscard]] std::string ReasonOf(const Connection& connection);
// The same of its check only, without what became of the command.
[[nodiscard]] std::string DescribeCheck(const Playback& playback);
// The text for `value` out of `texts`, which are in the order of the enumerators.
template <typename Enum, std::size_t Count>
const char* TextOf(const char* const (&texts)[Count], Enum value) {
    return texts[static_cast<std::size_t>(value)];
}
// The texts with commas between them.
[[nodiscard]] std::string Join(const std::vector<std::string>& texts);
// "2.5 s"
[[nodiscard]] std::string Seconds(double seconds);

}  // namespace Tvctl
