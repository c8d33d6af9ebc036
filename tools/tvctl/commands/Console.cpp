// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/Console.h"

#include <algorithm>

#include "common/PrintableText.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

std::string Printable(const std::string& text) {
    std::string result;
    AppendPrintable(result, text, "\t");
    return result;
}

}  // namespace

Json::Value Object(std::initializer_list<std::pair<const char*, Json::Value>> members) {
    Json::Value json(Json::objectValue);
    for (const auto& [name, value] : members) {
        json[name] = value;
    }
    return json;
}

void Console::PrintLine(const std::string& text) {
    m_out << Printable(text) << std::endl;
}

void Console::Print(const Json::Value& value) {
    m_out << Util::JsonUtil::JsonToString(value) << std::endl;
}

ExitCode Console::Show(const Json::Value& json, const std::vector<std::string>& lines) {
    if (m_json) {
        Print(json);
    } else {
        std::for_each(lines.begin(), lines.end(), [this](const auto& line) { PrintLine(line); });
    }
    return kDone;
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
