// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/linux/base/LogFields.h"
#include "platform/linux/base/PlatformLog.h"

namespace Platform {

// One line while it is written: what it reads, where it comes from, what it tells. To be used while
// its format and arguments are there.
class LogLine {
public:
    // `format` and `arguments` are printf's. A line of the layers above begins with its place,
    // one of the platform has it aside; see PlatformLog.h.
    LogLine(const char* format, va_list arguments);
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    // Appends the text, made printable; what is longer than 16 KiB is cut, and says so.
    void AppendText(std::string& out) const;
    // Appends the fields CODE_FILE, CODE_LINE and CODE_FUNC and those of the event, in the form
    // "NAME=VALUE\n". A value is printable, so that none has a newline.
    void AppendFields(std::string& out) const;

private:
    void Append(std::string_view text);
    void AppendPlace(const char*& format, va_list& arguments);
    void AppendFormatted(const char* format, va_list& arguments);
    [[nodiscard]] std::string_view From(std::size_t begin) const;
    [[nodiscard]] const LogEvent* FindEvent() const;

    static constexpr std::size_t kMaxBytes = 16384;

    // One byte more than is kept tells whether the cut is between two characters; vsnprintf ends
    // its text with another one.
    std::array<char, kMaxBytes + 2> m_buffer;
    std::size_t m_size = 0;     // also of what did not fit
    std::string_view m_format;  // after the place; a literal of the caller
    LogPlace m_place = {nullptr, nullptr, 0};
    std::array<std::string_view, 2> m_values;  // the first arguments, as the text has them
};

}  // namespace Platform
