// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/TimelineText.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "common/CHandle.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

struct Line {
    double time = 0;
    std::string what;
    std::string text;
    bool isFinal = true;  // nothing that is still to come can change it
};

std::string Print(const Line& line) {
    return GStringPtr(
               g_strdup_printf("%8.3f  %-9s %s", line.time, line.what.c_str(), line.text.c_str()))
        .get();
}

// A loss has a line of its own.
void AddConnections(const WakeUp& wakeUp, std::vector<Line>& lines) {
    for (Connection connection : wakeUp.connections) {
        const auto add = [&](double time, const std::string& text) {
            lines.push_back(
                {time, "connect",
                 (connection.address.empty() ? "a phone " : connection.address + " ") + text});
        };
        const auto lost = std::exchange(connection.lost, std::nullopt);
        if (!connection.end || *connection.end > connection.begin) {
            add(connection.begin, "is tried");
        }
        add(connection.end.value_or(wakeUp.end), Describe(connection));
        lines.back().isFinal = connection.end.has_value();
        if (lost) {
            add(*lost, "is lost");
        }
    }
}

void AddScans(const WakeUp& wakeUp, std::vector<Line>& lines) {
    const Strangers& strangers = wakeUp.strangers;
    const double last = std::max(strangers.times.empty() ? 0 : strangers.times.back(),
                                 strangers.shortTimes.empty() ? 0 : strangers.shortTimes.back());
    if (last > 0) {
        const bool isOver = wakeUp.scans.empty() || wakeUp.scans.back().end;
        lines.push_back({last, "heard", Describe(strangers), isOver});
    }
    for (const HeardPhone& heard : wakeUp.heard) {
        lines.push_back({heard.time, "heard", heard.address + ", which is registered"});
    }
    for (const Scan& scan : wakeUp.scans) {
        lines.push_back({scan.begin, "scan", "starts for " + Join(wakeUp.phones)});
        lines.push_back(
            {scan.end.value_or(wakeUp.end), "scan", Describe(scan), scan.end.has_value()});
    }
}

std::vector<Line> LinesOf(const WakeUp& wakeUp) {
    std::vector<Line> lines;
    if (wakeUp.window) {
        lines.push_back({wakeUp.window->begin, "window", "opens"});
    }
    if (wakeUp.window && wakeUp.window->end) {
        lines.push_back({*wakeUp.window->end, "window", "closes"});
    }
    for (const Remark& refusal : wakeUp.refusals) {
        lines.push_back({refusal.time, "refused", refusal.text});
    }
    AddScans(wakeUp, lines);
    AddConnections(wakeUp, lines);
    for (const Playback& playback : wakeUp.playbacks) {
        lines.push_back({playback.end.value_or(wakeUp.end), "playback", DescribeCheck(playback),
                         playback.end.has_value()});
        if (playback.answered) {
            lines.push_back({*playback.answered, "playback", Describe(playback)});
        }
    }
    for (const Remark& remark : wakeUp.remarks) {
        lines.push_back({remark.time, "remark", remark.text});
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const Line& left, const Line& right) { return left.time < right.time; });
    return lines;
}

// JSON has whole milliseconds, which have no digits of a floating-point number's making.
Json::Value Ms(double seconds) {
    return static_cast<Json::Int64>(std::llround(seconds * 1000));
}

// Adds a text or a time to an object, if there is one.
void AddText(Json::Value& json, const char* name, const std::string& text) {
    if (!text.empty()) {
        json[name] = text;
    }
}
void AddMs(Json::Value& json, const char* name, const std::optional<double>& seconds) {
    if (seconds) {
        json[name] = Ms(*seconds);
    }
}

template <typename Items, typename Convert>
Json::Value ArrayOf(const Items& items, Convert convert) {
    Json::Value array(Json::arrayValue);
    for (const auto& item : items) {
        array.append(convert(item));
    }
    return array;
}

Json::Value ConnectionToJson(const Connection& connection) {
    // By Connection::Result.
    static constexpr const char* kResults[] = {"unknown", "connected", "failed", "not-bonded",
                                               "by-itself"};
    Json::Value json = Util::Object({{"address", connection.address},
                                     {"begin", Ms(connection.begin)},
                                     {"result", TextOf(kResults, connection.result)}});
    AddMs(json, "end", connection.end);
    AddMs(json, "lost", connection.lost);
    AddText(json, "code", connection.code);
    AddText(json, "reason", connection.reason);
    return json;
}

}  // namespace

std::string HeadingOf(const WakeUp& wakeUp, std::size_t number) {
    return "wake-up " + std::to_string(number) + ", " + wakeUp.when +
           (wakeUp.host.empty() ? "" : " on " + wakeUp.host);
}

std::vector<std::string> ToLines(const WakeUp& wakeUp, std::size_t number) {
    std::vector<std::string> texts = {HeadingOf(wakeUp, number) + ": " + wakeUp.Summary()};
    for (const Line& line : LinesOf(wakeUp)) {
        texts.push_back(Print(line));
    }
    return texts;
}

Json::Value ToJson(const WakeUp& wakeUp) {
    Json::Value json = Util::Object({{"when", wakeUp.when},
                                     {"unixMs", static_cast<Json::Int64>(wakeUp.timeUs / 1000)},
                                     {"verdict", TextOf(kVerdictNames, wakeUp.Outcome())},
                                     {"summary", wakeUp.Summary()}});
    AddText(json, "machine", wakeUp.machine);
    AddText(json, "host", wakeUp.host);
    AddText(json, "boot", wakeUp.boot);
    AddText(json, "address", wakeUp.ConnectedPhone());
    AddText(json, "reason", wakeUp.Reason());
    AddMs(json, "music", wakeUp.TimeOfMusic());
    json["phones"] = ArrayOf(wakeUp.phones, [](const std::string& phone) {
        return Util::Object({{"address", phone}});
    });
    json["connections"] = ArrayOf(wakeUp.connections, ConnectionToJson);
    json["events"] = ArrayOf(LinesOf(wakeUp), [](const Line& line) {
        return Util::Object({{"ms", Ms(line.time)}, {"what", line.what}, {"text", line.text}});
    });
    return json;
}

std::vector<std::string> LiveTimeline::NewLines(const WakeUp& wakeUp) {
    std::vector<std::string> texts;
    std::multiset<std::string> known = m_given;
    for (const Line& line : LinesOf(wakeUp)) {
        const std::string text = Print(line);
        const auto found = known.find(text);
        if (found != known.end()) {
            known.erase(found);
        } else if (line.isFinal) {
            texts.push_back(text);
        }
    }
    m_given.insert(texts.begin(), texts.end());
    return texts;
}

std::vector<std::string> LiveTimeline::NewOutcome(const WakeUp& wakeUp) {
    const std::string outcome = "=> " + wakeUp.Summary();
    const bool isNew = outcome != m_outcome;
    m_outcome = outcome;
    return isNew ? std::vector<std::string>{outcome} : std::vector<std::string>{};
}

}  // namespace Tvctl
