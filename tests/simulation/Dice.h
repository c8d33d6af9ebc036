// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

// Random numbers that are the same on every machine (splitmix64, Steele and others, 2014).
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Roll() {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    // From 0 to `count` - 1; a count of 1 or more.
    int Below(int count) { return static_cast<int>(Roll() % static_cast<std::uint64_t>(count)); }
    bool OneIn(int count) { return Below(count) == 0; }
    // A time in ms up to `longest` (1 or more): short ones as often as long ones.
    int Time(int longest) {
        const int most = 1 + Below(longest);
        return Below(1 + Below(most));
    }
    template <typename T>
    const T& Pick(const std::vector<T>& values) {
        return values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
    }

private:
    std::uint64_t m_state;
};
