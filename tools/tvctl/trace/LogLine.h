// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <functional>
#include <string>
#include <string_view>

#include "common/CHandle.h"
#include "tools/tvctl/trace/LogRecord.h"

namespace Tvctl {

// What one line of a log says. Each function is false for a line that is not the service's, the
// platform's or the media player's; then the record is not to be used.

// Lines of the service's own form, and those that `journalctl -o json` prints, or, with a pattern,
// of another logger's form. The records' texts stay until the next line.
class LineParser {
public:
    // The named groups of a regular expression: `text`, and perhaps `time`, `tag`, `machine` and
    // `host`. `failure` says what is wrong with it.
    [[nodiscard]] bool SetPattern(const std::string& pattern, std::string& failure);
    [[nodiscard]] bool Parse(std::string_view line, LogRecord& record);
    // An entry of a journal; `field` gives the text of a field, "" when the entry has none. What
    // its fields tell counts, else its text. Where the service's standard error was passed on to
    // the journal line by line, the text is a line of the service's own form.
    using FieldReader = std::function<std::string(const char* name)>;
    [[nodiscard]] bool ParseEntry(const FieldReader& field, LogRecord& record);

private:
    [[nodiscard]] bool ParseJson(std::string_view line, LogRecord& record);
    [[nodiscard]] bool TakeFields(const FieldReader& field, LogRecord& record);
    [[nodiscard]] bool ParseByPattern(std::string_view line, LogRecord& record);
    // Valid UTF-8 without a terminal's colours; kept in m_text where something had to change.
    std::string_view Clean(std::string_view text);

    CPtr<GRegex, g_regex_unref> m_pattern;
    std::string m_text;
    std::string m_message;
    std::string m_event;
    std::string m_file;
    std::string m_function;
    std::string m_time;
    std::string m_machine;
    std::string m_host;
    std::string m_boot;
};

}  // namespace Tvctl
