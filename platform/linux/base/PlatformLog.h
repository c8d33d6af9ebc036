// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/system_log.h"

namespace Platform {

// Where a log line comes from.
struct LogPlace {
    const char* file;  // without its folder
    const char* function;
    int line;
};

}  // namespace Platform

// The platform's own log lines, printf style. Macros, so that the compiler checks the arguments.
// The text is all that is printed. The place stands before it in the form in which the layers above
// begin their lines, after a mark that keeps it for the journal's fields.
#define PLATFORM_PLACE_ASIDE "@%s: %s(%d) > "
#define PLATFORM_HERE (Platform::LogPlace{__FILE_NAME__, __func__, __LINE__})
#define PLATFORM_PRINT(place, priority, tag, format, ...)                                   \
    static_cast<void>(__dlog_print(LOG_ID_MAIN, priority, tag, PLATFORM_PLACE_ASIDE format, \
                                   (place).file, (place).function, (place).line, ##__VA_ARGS__))

#define PLATFORM_DEBUG(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_DEBUG, "TV_PLATFORM", __VA_ARGS__)
#define PLATFORM_INFO(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_INFO, "TV_PLATFORM", __VA_ARGS__)
#define PLATFORM_WARN(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_WARN, "TV_PLATFORM", __VA_ARGS__)
#define PLATFORM_ERROR(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_ERROR, "TV_PLATFORM", __VA_ARGS__)

namespace Platform {

// Lines below `priority` (a log_priority) are dropped from now on; a number above DLOG_ERROR drops
// all. Overrides $TV_LOG_LEVEL. Any thread.
void SetLogThreshold(int priority) noexcept;

// Logs a lasting fault once: a line when a reason begins or changes, none while it stays. Not
// locked; it belongs to what it watches.
class FaultLog {
public:
    // `place` is PLATFORM_HERE.
    void Begin(const LogPlace& place, const std::string& reason) {
        if (reason != m_reason) {
            m_reason = reason;
            PLATFORM_PRINT(place, DLOG_WARN, "TV_PLATFORM", "%s", reason.c_str());
        }
    }
    void End() { m_reason.clear(); }
    [[nodiscard]] const std::string& Reason() const { return m_reason; }

private:
    std::string m_reason;
};

}  // namespace Platform
