// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/system_log.h"

// The platform's own log lines, printf style. Macros, so that the compiler checks the arguments.
#define PLATFORM_DEBUG(...) __dlog_print(LOG_ID_MAIN, DLOG_DEBUG, "TV_PLATFORM", __VA_ARGS__)
#define PLATFORM_INFO(...) __dlog_print(LOG_ID_MAIN, DLOG_INFO, "TV_PLATFORM", __VA_ARGS__)
#define PLATFORM_WARN(...) __dlog_print(LOG_ID_MAIN, DLOG_WARN, "TV_PLATFORM", __VA_ARGS__)
#define PLATFORM_ERROR(...) __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "TV_PLATFORM", __VA_ARGS__)

namespace Platform {

// Lines below `priority` (a log_priority) are dropped from now on; a number above DLOG_ERROR drops
// all. Overrides $TV_LOG_LEVEL. Any thread.
void SetLogThreshold(int priority) noexcept;
int LogThreshold() noexcept;

// Logs a lasting fault once: a line when a reason begins or changes, none while it stays. Not
// locked; it belongs to what it watches.
class FaultLog {
public:
    void Begin(const std::string& reason) {
        if (reason != m_reason) {
            m_reason = reason;
            PLATFORM_WARN("%s", reason.c_str());
        }
    }
    void End() { m_reason.clear(); }
    [[nodiscard]] const std::string& Reason() const { return m_reason; }

private:
    std::string m_reason;
};

}  // namespace Platform
