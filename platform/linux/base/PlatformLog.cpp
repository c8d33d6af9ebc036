// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/PlatformLog.h"

#include <glib.h>

#include <atomic>
#include <cstdlib>

namespace Platform {

namespace {

int ThresholdFromEnvironment() {
    const char* level = std::getenv("TV_LOG_LEVEL");
    if (g_strcmp0(level, "info") == 0) {
        return DLOG_INFO;
    }
    if (g_strcmp0(level, "warn") == 0) {
        return DLOG_WARN;
    }
    return g_strcmp0(level, "error") == 0 ? DLOG_ERROR : DLOG_DEBUG;
}

// Trivially destructible: lines are written before main begins and after it ended.
std::atomic<int>& Threshold() {
    static std::atomic<int> threshold{ThresholdFromEnvironment()};
    return threshold;
}

}  // namespace

void SetLogThreshold(int priority) noexcept {
    Threshold() = priority;
}

int LogThreshold() noexcept {
    return Threshold();
}

}  // namespace Platform
