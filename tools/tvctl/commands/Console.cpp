// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/Console.h"

#include "common/PrintableText.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

std::string Printable(const std::string& text, const char* kept = "\t") {
    std::string result;
    AppendPrintable(result, text, kept);
    return result;
}

}  // namespace

void Console::PrintLine(const std::string& text) {
    m_out << Printable(text) << std::endl;
}

void Console::PrintText(const std::string& text) {
    m_out << Printable(text, "\t\n") << std::endl;
}

void Console::Print(const Json::Value& value) {
    m_out << Util::JsonUtil::JsonToString(value) << std::endl;
}

void Console::Print(const Json::Value& json, const std::string& line) {
    if (m_json) {
        Print(json);
    } else {
        PrintLine(line);
    }
}

ExitCode Console::Fail(const std::string& reason) {
    m_err << "tvctl: " << Printable(reason) << std::endl;
    return kFailed;
}

ExitCode Console::Misuse(const std::string& reason) {
    m_err << "tvctl: " << Printable(reason) << std::endl;
    return kUsage;
}

}  // namespace Tvctl
