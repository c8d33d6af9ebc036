// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/TimelineText.h"

#include <algorithm>
#include <utility>

#include "common/CHandle.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

// By Verdict.
constexpr const char* kVerdicts[] = {"plays", "connected", "nobody", "refused", "unknown"};

struct Line {
    double time = 0;
    std::string what;
    std::string text;
};

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
        lines.push_back({last, "heard", Describe(strangers)});
    }
    for (const HeardPhone& heard : wakeUp.heard) {
        lines.push_back({heard.time, "heard", heard.address + ", which is registered"});
    }
    for (const Scan& scan : wakeUp.scans) {
        lines.push_back({scan.begin, "scan", "starts for " + Join(wakeUp.phones)});
        lines.push_back({scan.end.value_or(wakeUp.end), "scan", Describe(scan)});
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
        lines.push_back({playback.end.value_or(wakeUp.end), "playback", Describe(playback)});
    }
    for (const Remark& remark : wakeUp.remarks) {
        lines.push_back({remark.time, "remark", remark.text});
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const Line& left, const Line& right) { return left.time < right.time; });
    return lines;
}

}  // namespace

std::vector<std::string> ToLines(const std::vector<WakeUp>& wakeUps) {
    std::vector<std::string> texts;
    std::size_t number = 0;
    for (const WakeUp& wakeUp : wakeUps) {
        ++number;
        texts.push_back("wake-up " + std::to_string(number) + " of " +
                        std::to_string(wakeUps.size()) + ", " + wakeUp.when + ": " +
                        wakeUp.Summary());
        for (const Line& line : LinesOf(wakeUp)) {
            texts.emplace_back(GStringPtr(g_strdup_printf("%8.3f  %-9s %s", line.time,
                                                          line.what.c_str(), line.text.c_str()))
                                   .get());
        }
    }
    return texts;
}

Json::Value ToJson(const std::vector<WakeUp>& wakeUps) {
    Json::Value json(Json::arrayValue);
    for (const WakeUp& wakeUp : wakeUps) {
        Json::Value phones(Json::arrayValue);
        for (const std::string& phone : wakeUp.phones) {
            phones.append(phone);
        }
        Json::Value events(Json::arrayValue);
        for (const Line& line : LinesOf(wakeUp)) {
            events.append(
                Util::Object({{"time", line.time}, {"what", line.what}, {"text", line.text}}));
        }
        json.append(Util::Object({{"when", wakeUp.when},
                                  {"verdict", TextOf(kVerdicts, wakeUp.Outcome())},
                                  {"summary", wakeUp.Summary()},
                                  {"phones", phones},
                                  {"events", events}}));
    }
    return json;
}

}  // namespace Tvctl
