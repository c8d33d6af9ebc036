// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/Console.h"

#include <algorithm>
#include <map>

#include "common/PrintableText.h"

namespace Tvctl {

namespace {

std::string Printable(const std::string& text) {
    std::string result;
    AppendPrintable(result, text, "\t");
    return result;
}

// In characters, as it is printed.
size_t Width(const std::string& text) {
    return static_cast<size_t>(g_utf8_strlen(Printable(text).c_str(), -1));
}

using Widths = std::map<size_t, size_t>;  // by column

Widths WidthsOf(const std::vector<Row>& rows) {
    Widths widths;
    for (const Row& row : rows) {
        for (size_t i = 0; i < row.fields.size(); ++i) {
            widths[i] = std::max(widths[i], Width(row.fields[i]));
        }
    }
    return widths;
}

// With blanks up to the widths, or without widths with tabs.
std::string Join(const std::vector<std::string>& fields, const Widths& widths) {
    std::string text;
    for (size_t i = 0; i < fields.size(); ++i) {
        text += fields[i];
        if (i + 1 < fields.size()) {
            text += widths.empty() ? "\t" : std::string(widths.at(i) - Width(fields[i]) + 2, ' ');
        }
    }
    return text;
}

}  // namespace

void Console::PrintLine(const std::string& text, Tone tone) {
    // By Tone.
    static constexpr const char* kColours[] = {"", "\x1B[1m", "\x1B[32m", "\x1B[31m", "\x1B[33m"};
    const std::string colour = m_style.hasColours ? kColours[static_cast<int>(tone)] : "";
    m_out << colour << Printable(text) << (colour.empty() ? "" : "\x1B[0m") << std::endl;
}

ExitCode Console::Show(const Json::Value& json, const std::vector<std::string>& lines) {
    if (m_style.isJson) {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        // With two digits more, 0.1 would be 0.10000000000000001.
        builder["precision"] = 15;
        m_out << Json::writeString(builder, json) << std::endl;
        return kDone;
    }
    for (const std::string& line : lines) {
        PrintLine(line);
    }
    return kDone;
}

ExitCode Console::ShowRows(const Json::Value& json, const std::vector<Row>& rows,
                           const std::vector<std::string>& names) {
    if (m_style.isJson) {
        return Show(json);
    }
    std::vector<Row> lines = rows;
    Widths widths;
    if (m_style.isTerminal) {
        if (!names.empty()) {
            lines.insert(lines.begin(), {names, Tone::kHeading});
        }
        widths = WidthsOf(lines);
    }
    for (const Row& line : lines) {
        PrintLine(Join(line.fields, widths), line.tone);
    }
    return kDone;
}

void Console::ShowLine(const std::string& text) {
    if (!m_style.isJson) {
        PrintLine(text);
    }
}

ExitCode Console::Fail(const std::string& reason) {
    m_err << "tvctl: " << Printable(reason) << std::endl;
    return kFailed;
}

ExitCode Console::Misuse(const std::string& reason) {
    static_cast<void>(Fail(reason));
    return kUsage;
}

}  // namespace Tvctl
