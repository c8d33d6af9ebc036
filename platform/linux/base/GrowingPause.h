// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <utility>

namespace Platform {

// How long to wait before something is tried again: twice as long each time, up to a limit.
// Milliseconds.
class GrowingPause {
public:
    GrowingPause(int firstMs, int longestMs)
        : m_firstMs(firstMs), m_longestMs(longestMs), m_nextMs(firstMs) {}

    int Next() { return std::exchange(m_nextMs, std::min(2 * m_nextMs, m_longestMs)); }
    void Reset() { m_nextMs = m_firstMs; }

private:
    int m_firstMs;
    int m_longestMs;
    int m_nextMs;
};

}  // namespace Platform
