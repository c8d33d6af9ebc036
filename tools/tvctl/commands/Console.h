// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <ostream>
#include <string>
#include <vector>

namespace Tvctl {

// The exit status of a command; scripts depend on the numbers.
enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2 };

// What a line of text tells, which a terminal shows as its colour.
enum class Tone { kPlain, kHeading, kGood, kBad, kHint };

struct Row {
    std::vector<std::string> fields;
    Tone tone = Tone::kPlain;
};

// Where a command writes: its result to one stream, as text or as JSON, and what went wrong to the
// other, one line for each failure.
class Console {
public:
    struct Style {
        bool isJson = false;
        bool isTerminal = false;  // the result goes to one
        bool hasColours = false;
    };

    Console(std::ostream& out, std::ostream& err, Style style)
        : m_out(out), m_err(err), m_style(style) {}

    // One line of text; a tab is shown as it is, else see AppendPrintable.
    void PrintLine(const std::string& text, Tone tone = Tone::kPlain);
    // Prints a result, as one line of JSON or as lines of text, as wanted; always kDone.
    ExitCode Show(const Json::Value& json, const std::vector<std::string>& lines = {});
    // The same with lines of fields: on a terminal columns, below their names if they have some,
    // else with a tab between the fields.
    ExitCode ShowRows(const Json::Value& json, const std::vector<Row>& rows,
                      const std::vector<std::string>& names = {});
    // Prints a line of text that is no part of the JSON.
    void ShowLine(const std::string& text);

    // Report why a command failed, or was called wrongly; give the exit code that says so.
    [[nodiscard]] ExitCode Fail(const std::string& reason);
    [[nodiscard]] ExitCode Misuse(const std::string& reason);

private:
    std::ostream& m_out;
    std::ostream& m_err;
    Style m_style;
};

}  // namespace Tvctl
