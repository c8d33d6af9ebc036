// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

// How often something took how long: counted by hundredths of a second, and above a minute only
// that it took longer. So percentiles are exact to 0.01 s, and the counters do not grow with what
// is counted.
class Durations {
public:
    static constexpr int kCountedMs = 60000;

    struct Bar {
        int fromMs = 0;
        int toMs = 0;  // 0 for all that is longer
        std::size_t count = 0;
    };

    void Add(double seconds);
    [[nodiscard]] std::size_t Count() const { return m_count; }
    // Of `percent`, 1 to 100, of them none took longer; kCountedMs stands for anything longer. 0
    // when there is none.
    [[nodiscard]] int PercentileMs(int percent) const;
    // From the shortest on, so that 99 of 100 fit, 20 at most, and one for those that are longer.
    [[nodiscard]] std::vector<Bar> Histogram() const;

private:
    std::map<int, std::size_t> m_counts;  // by the time in steps
    std::size_t m_count = 0;
};

// What many wake-ups led to. Memory grows with the number of phones and of different reasons, each
// up to a limit, and not with the number of wake-ups.
class Statistics {
public:
    using Reasons = std::map<std::string, std::size_t>;
    struct Phone {
        std::size_t tried = 0;  // in how many wake-ups, also when it connected by itself
        std::size_t connected = 0;
        Durations music;
        Reasons reasons;  // for which it was not connected, or did not play
    };

    void Add(const WakeUp& wakeUp);

    [[nodiscard]] std::size_t WakeUps() const { return m_wakeUps; }
    [[nodiscard]] std::size_t Count(Verdict verdict) const {
        return m_verdicts[static_cast<std::size_t>(verdict)];
    }
    // From the signal on.
    [[nodiscard]] const Durations& Music() const { return m_music; }
    [[nodiscard]] const std::map<std::string, Phone>& Phones() const { return m_phones; }
    [[nodiscard]] const Reasons& WhyNot() const { return m_reasons; }
    [[nodiscard]] const std::string& First() const { return m_first.second; }
    [[nodiscard]] const std::string& Last() const { return m_last.second; }

private:
    void AddPhones(const WakeUp& wakeUp);

    std::size_t m_wakeUps = 0;
    std::array<std::size_t, 5> m_verdicts = {};
    Durations m_music;
    Reasons m_reasons;
    std::map<std::string, Phone> m_phones;
    std::pair<std::int64_t, std::string> m_first;  // time and text of it
    std::pair<std::int64_t, std::string> m_last;
};

// Those with the highest counts, the highest first.
[[nodiscard]] std::vector<std::pair<std::string, std::size_t>> MostFrequent(
    const Statistics::Reasons& reasons, std::size_t most);

// The phones that were tried most, those with as many in the order of their addresses.
[[nodiscard]] std::vector<std::pair<std::string, const Statistics::Phone*>> MostTried(
    const Statistics& statistics, std::size_t most);

}  // namespace Tvctl
