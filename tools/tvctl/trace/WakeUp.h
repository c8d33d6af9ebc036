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
    enum class Outcome { kUnknown, kPlaysAlready, kCommandSent, kNotSent, kLaunchFailed };

    std::string address;
    double begin = 0;  // when the phone was connected
    std::optional<double> end;
    Outcome outcome = Outcome::kUnknown;
    std::string reason;  // for which nothing was sent
};

struct Remark {
    double time = 0;
    std::string text;
};

enum class Verdict { kPlays, kConnected, kNobody, kRefused, kUnknown };

struct WakeUp {
    std::string when;          // as the log has it
    std::int64_t beginUs = 0;  // of its signal, by the timeline's clock
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

    // Whether something began that has not ended, except the window, which ends by itself.
    [[nodiscard]] bool IsOpen() const;
    // Whether a connection to that phone went down again.
    [[nodiscard]] bool IsLost(const std::string& address) const;
    [[nodiscard]] Verdict Outcome() const;
    // The outcome in one sentence, without a full stop.
    [[nodiscard]] std::string Summary() const;
};

// What came of it, a few words each, without a full stop.
[[nodiscard]] std::string Describe(const Window& window);
[[nodiscard]] std::string Describe(const Scan& scan);
[[nodiscard]] std::string Describe(const Strangers& strangers);
[[nodiscard]] std::string Describe(const Connection& connection);
[[nodiscard]] std::string Describe(const Playback& playback);
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
