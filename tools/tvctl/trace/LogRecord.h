// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace Tvctl {

// One line that the service, the platform or the media player wrote. The texts are valid UTF-8, may
// hold control characters, and stay only as long as the record is being taken.
struct LogRecord {
    std::int64_t timeUs = 0;  // since 1970; as if in UTC where the log has no zone
    std::string_view when;    // the time as the log has it; empty for one that is a number
    std::string_view file;    // empty, like the function, for a line of the platform
    std::string_view function;
    std::string_view message;
    // Of the box that wrote it; empty where the log does not tell.
    std::string_view machine;
    std::string_view host;
    std::string_view boot;
};

// In place of the file of a line that the media player wrote.
inline constexpr const char* kPlayerFile = "media-player";

using TakeRecord = std::function<void(const LogRecord& record)>;

// How many lines were read, and what ended the reading too early.
struct LogCount {
    std::size_t records = 0;  // of the service, the platform and the media player
    std::size_t skipped = 0;  // of another kind
    std::string failure;      // what could not be read and why; empty when all was read
};

}  // namespace Tvctl
