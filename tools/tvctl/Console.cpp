// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/Console.h"

#include <glib.h>

#include <array>
#include <cstdio>

#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

void AppendHex(std::string& out, const char* begin, const char* end) {
    for (const char* at = begin; at < end; ++at) {
        std::array<char, 8> hex;
        std::snprintf(hex.data(), hex.size(), "\\x%02X", static_cast<unsigned char>(*at));
        out += hex.data();
    }
}

std::string Printable(const std::string& text) {
    std::string result;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end) {
        const gunichar character = g_utf8_get_char_validated(at, end - at);
        const bool isInvalid = character >= 0x80000000U || character == 0;
        const char* const next = isInvalid ? at + 1 : g_utf8_next_char(at);
        if (isInvalid || (g_unichar_iscntrl(character) != FALSE && *at != '\t')) {
            AppendHex(result, at, next);
        } else {
            result.append(at, next);
        }
        at = next;
    }
    return result;
}

}  // namespace

void Console::PrintLine(const std::string& text) {
    PrintRaw(Printable(text));
}

void Console::PrintRaw(const std::string& text) {
    m_out << text << std::endl;
}

void Console::Print(const Json::Value& value) {
    PrintRaw(Util::JsonUtil::JsonToString(value));
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
