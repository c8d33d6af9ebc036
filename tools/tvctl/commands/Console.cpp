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

void Console::PrintLine(const std::string& text) {
    m_out << Printable(text) << std::endl;
}

ExitCode Console::Show(const Json::Value& json, const std::vector<std::string>& lines) {
    if (m_json) {
        m_out << Util::JsonUtil::JsonToString(json) << std::endl;
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
