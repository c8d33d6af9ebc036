// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/StatisticsText.h"

#include <algorithm>

#include "common/CHandle.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

constexpr int kBarWidth = 50;

// By Verdict.
constexpr const char* kVerdicts[] = {"ended in music", "a phone was connected, no music",
                                     "no phone was connected", "no attempt",
                                     "the log does not tell"};

template <typename... Values>
std::string Format(const char* format, Values... values) {
    return GStringPtr(g_strdup_printf(format, values...)).get();
}

void AddHistogram(const Durations& durations, std::vector<std::string>& lines) {
    const std::vector<Durations::Bar> bars = durations.Histogram();
    std::size_t highest = 1;
    for (const Durations::Bar& bar : bars) {
        highest = std::max(highest, bar.count);
    }
    for (const Durations::Bar& bar : bars) {
        // What is counted is seen.
        const std::size_t length = (bar.count * kBarWidth + highest - 1) / highest;
        lines.push_back(Format("%14s %7zu%s%s", RangeText(bar).c_str(), bar.count,
                               length > 0 ? "  " : "", std::string(length, '#').c_str()));
    }
}

void AddMore(std::size_t count, std::vector<std::string>& lines) {
    if (count > kMostRows) {
        lines.push_back("  and " + std::to_string(count - kMostRows) + " more");
    }
}

void AddPhones(const Statistics& statistics, std::vector<std::string>& lines) {
    const auto phones = MostTried(statistics, kMostRows);
    if (phones.empty()) {
        return;
    }
    lines.emplace_back("");
    lines.push_back(Format("%-17s %7s %9s %7s %9s %9s  %s", "phone", "tried", "connected", "music",
                           "median", "95 %", "most frequent reason otherwise"));
    for (const auto& [address, phone] : phones) {
        const auto reason = MostFrequent(phone->reasons, 1);
        const auto duration = [&music = phone->music](int percent) {
            return music.Count() > 0 ? DurationText(music.PercentileMs(percent)) : "-";
        };
        lines.push_back(Format(
            "%-17s %7zu %9zu %7zu %9s %9s  %s", address.empty() ? "(not named)" : address.c_str(),
            phone->tried, phone->connected, phone->music.Count(), duration(50).c_str(),
            duration(95).c_str(), reason.empty() ? "-" : reason.front().first.c_str()));
    }
    AddMore(statistics.Phones().size(), lines);
}

Json::Value DurationsToJson(const Durations& durations) {
    Json::Value json = Util::Object({{"count", static_cast<Json::UInt64>(durations.Count())}});
    if (durations.Count() == 0) {
        return json;
    }
    json["medianMs"] = durations.PercentileMs(50);
    json["p95Ms"] = durations.PercentileMs(95);
    return json;
}

Json::Value HistogramToJson(const Durations& durations) {
    Json::Value json(Json::arrayValue);
    for (const Durations::Bar& bar : durations.Histogram()) {
        Json::Value entry =
            Util::Object({{"fromMs", bar.fromMs}, {"count", static_cast<Json::UInt64>(bar.count)}});
        if (bar.toMs > 0) {
            entry["toMs"] = bar.toMs;
        }
        json.append(entry);
    }
    return json;
}

Json::Value ReasonsToJson(const Statistics::Reasons& reasons) {
    Json::Value json(Json::arrayValue);
    for (const auto& [reason, count] : MostFrequent(reasons, reasons.size())) {
        json.append(
            Util::Object({{"reason", reason}, {"count", static_cast<Json::UInt64>(count)}}));
    }
    return json;
}

}  // namespace

std::string Share(std::size_t part, std::size_t whole) {
    return Format("%.1f %%", whole == 0
                                 ? 0.0
                                 : 100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

std::string DurationText(int ms) {
    return ms >= Durations::kCountedMs ? "60 s or more" : Format("%.2f s", ms / 1000.0);
}

std::string RangeText(const Durations::Bar& bar) {
    const int decimals = bar.fromMs % 1000 == 0 && bar.toMs % 1000 == 0 ? 0 : 1;
    return bar.toMs == 0
               ? Format("%.*f s or more", decimals, bar.fromMs / 1000.0)
               : Format("%.*f-%.*f s", decimals, bar.fromMs / 1000.0, decimals, bar.toMs / 1000.0);
}

std::vector<std::string> ToLines(const Statistics& statistics, std::size_t boxes) {
    const Durations& music = statistics.Music();
    std::vector<std::string> lines = {Format(
        "%zu wake-up%s%s, %s to %s", statistics.WakeUps(), statistics.WakeUps() == 1 ? "" : "s",
        boxes > 1 ? (" of " + std::to_string(boxes) + " boxes").c_str() : "",
        statistics.First().c_str(), statistics.Last().c_str())};
    for (std::size_t i = 0; i < std::size(kVerdicts); ++i) {
        const std::size_t count = statistics.Count(static_cast<Verdict>(i));
        lines.push_back(Format("%9zu %8s  %s", count, Share(count, statistics.WakeUps()).c_str(),
                               kVerdicts[i]));
    }
    if (music.Count() > 0) {
        lines.emplace_back("");
        lines.push_back("from the signal to music: median " + DurationText(music.PercentileMs(50)) +
                        ", 95 % within " + DurationText(music.PercentileMs(95)));
        AddHistogram(music, lines);
    }
    if (!statistics.WhyNot().empty()) {
        lines.emplace_back("");
        lines.emplace_back("no music, because");
        for (const auto& [reason, count] : MostFrequent(statistics.WhyNot(), kMostRows)) {
            lines.push_back(Format("%9zu  %s", count, reason.c_str()));
        }
        AddMore(statistics.WhyNot().size(), lines);
    }
    AddPhones(statistics, lines);
    return lines;
}

Json::Value ToJson(const Statistics& statistics, std::size_t boxes) {
    Json::Value phones(Json::arrayValue);
    for (const auto& [address, phone] : MostTried(statistics, statistics.Phones().size())) {
        phones.append(Util::Object({{"address", address},
                                    {"tried", static_cast<Json::UInt64>(phone->tried)},
                                    {"connected", static_cast<Json::UInt64>(phone->connected)},
                                    {"music", DurationsToJson(phone->music)},
                                    {"reasons", ReasonsToJson(phone->reasons)}}));
    }
    Json::Value music = DurationsToJson(statistics.Music());
    music["histogram"] = HistogramToJson(statistics.Music());
    Json::Value verdicts(Json::objectValue);
    for (std::size_t i = 0; i < std::size(kVerdictNames); ++i) {
        verdicts[kVerdictNames[i]] =
            static_cast<Json::UInt64>(statistics.Count(static_cast<Verdict>(i)));
    }
    return Util::Object({{"wakeUps", static_cast<Json::UInt64>(statistics.WakeUps())},
                         {"boxes", static_cast<Json::UInt64>(boxes)},
                         {"first", statistics.First()},
                         {"last", statistics.Last()},
                         {"verdicts", verdicts},
                         {"music", music},
                         {"reasons", ReasonsToJson(statistics.WhyNot())},
                         {"phones", phones}});
}

}  // namespace Tvctl
