// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/Statistics.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace Tvctl {

namespace {

constexpr int kStepMs = 10;
constexpr int kMostBars = 20;
// The few that took much longer would leave no room for the others.
constexpr int kPercentShown = 99;
// Of a log that is not what it should be.
constexpr std::size_t kMostReasons = 1000;
constexpr std::size_t kMostPhones = 100000;

template <typename Value>
Value& Find(std::map<std::string, Value>& values, const std::string& name, std::size_t most) {
    const bool isKnown = values.size() < most || values.count(name) > 0;
    return values[isKnown ? name : "(others)"];
}

// The shortest of 0.1, 0.2, 0.5, 1 ... seconds that makes few bars.
int WidthMs(int rangeMs) {
    for (int decade = 100;; decade *= 10) {
        for (const int width : {decade, 2 * decade, 5 * decade}) {
            // One more, because the first bar seldom begins where the range does.
            if (rangeMs / width + 1 < kMostBars) {
                return width;
            }
        }
    }
}

// The highest by `rank` first, equal ones as they were.
template <typename Items, typename Rank>
void SortAndCut(Items& items, std::size_t most, Rank rank) {
    std::stable_sort(items.begin(), items.end(), [rank](const auto& left, const auto& right) {
        return rank(left.second) > rank(right.second);
    });
    items.resize(std::min(items.size(), most));
}

}  // namespace

void Durations::Add(double seconds) {
    const double ms = std::clamp(seconds * 1000, 0.0, static_cast<double>(kCountedMs));
    // Half a microsecond, so that a time that is whole in the log stays so.
    ++m_counts[static_cast<int>((ms + 0.0005) / kStepMs)];
    ++m_count;
}

int Durations::PercentileMs(int percent) const {
    std::size_t left = (m_count * static_cast<std::size_t>(percent) + 99) / 100;
    for (const auto& [step, count] : m_counts) {
        if (left <= count) {
            return step * kStepMs;
        }
        left -= count;
    }
    return 0;
}

std::vector<Durations::Bar> Durations::Histogram() const {
    std::vector<Bar> bars;
    if (m_counts.empty()) {
        return bars;
    }
    const int firstMs = m_counts.begin()->first * kStepMs;
    const int lastMs = PercentileMs(kPercentShown);
    const int widthMs = WidthMs(lastMs - firstMs);
    int ms = firstMs / widthMs * widthMs;
    for (; ms <= lastMs && ms < kCountedMs; ms += widthMs) {
        bars.push_back({ms, ms + widthMs, 0});
    }
    bars.push_back({ms, 0, 0});
    for (const auto& [step, count] : m_counts) {
        const int bar = (step * kStepMs - bars.front().fromMs) / widthMs;
        bars[std::min(static_cast<std::size_t>(bar), bars.size() - 1)].count += count;
    }
    if (bars.back().count == 0) {
        bars.pop_back();
    }
    return bars;
}

void Statistics::Add(const WakeUp& wakeUp) {
    ++m_wakeUps;
    ++m_verdicts[static_cast<std::size_t>(wakeUp.Outcome())];
    if (const auto music = wakeUp.TimeOfMusic()) {
        m_music.Add(*music);
    } else {
        ++Find(m_reasons, wakeUp.Reason(), kMostReasons);
    }
    const std::pair<std::int64_t, std::string> time(wakeUp.timeUs, wakeUp.when);
    m_first = m_wakeUps == 1 ? time : std::min(m_first, time);
    m_last = m_wakeUps == 1 ? time : std::max(m_last, time);
    AddPhones(wakeUp);
}

// A phone that was tried several times in a wake-up counts once, with its last reason.
void Statistics::AddPhones(const WakeUp& wakeUp) {
    std::map<std::string, const Connection*> lastOf;
    std::set<std::string> tried;
    for (const Connection& connection : wakeUp.connections) {
        lastOf[connection.address] = &connection;
        if (connection.result != Connection::Result::kNotBonded) {
            tried.insert(connection.address);
        }
    }
    const std::string played = wakeUp.ConnectedPhone();
    const auto music = wakeUp.TimeOfMusic();
    for (const auto& [address, connection] : lastOf) {
        Phone& phone = Find(m_phones, address, kMostPhones);
        phone.tried += tried.count(address);
        phone.connected += connection->WasMade() ? 1 : 0;
        if (address == played && music) {
            phone.music.Add(*music);
        } else {
            const std::string reason = address == played ? wakeUp.Reason() : ReasonOf(*connection);
            ++Find(phone.reasons, reason, kMostReasons);
        }
    }
}

std::vector<std::pair<std::string, std::size_t>> MostFrequent(const Statistics::Reasons& reasons,
                                                              std::size_t most) {
    std::vector<std::pair<std::string, std::size_t>> sorted(reasons.begin(), reasons.end());
    SortAndCut(sorted, most, [](std::size_t count) { return count; });
    return sorted;
}

std::vector<std::pair<std::string, const Statistics::Phone*>> MostTried(
    const Statistics& statistics, std::size_t most) {
    std::vector<std::pair<std::string, const Statistics::Phone*>> sorted;
    for (const auto& [address, phone] : statistics.Phones()) {
        sorted.emplace_back(address, &phone);
    }
    SortAndCut(sorted, most, [](const Statistics::Phone* phone) { return phone->tried; });
    return sorted;
}

}  // namespace Tvctl
