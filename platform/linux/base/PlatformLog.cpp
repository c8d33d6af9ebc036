// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/PlatformLog.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace Platform {

namespace {

int ThresholdFromEnvironment() {
    const char* level = std::getenv("TV_LOG_LEVEL");
    const auto isLevel = [level](const char* name) {
        return level != nullptr && std::strcmp(level, name) == 0;
    };
    if (isLevel("info")) {
        return DLOG_INFO;
    }
    if (isLevel("warn")) {
        return DLOG_WARN;
    }
    return isLevel("error") ? DLOG_ERROR : DLOG_DEBUG;
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
