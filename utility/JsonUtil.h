// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace Util {

// Converts between JSON text and jsoncpp values. Stateless; any thread.
class JsonUtil {
public:
    // The value of the whole of `text`. Throws std::runtime_error with the parser's
    // message when it does not parse or is nested too deeply.
    static Json::Value StringToJson(const std::string& text);

    // `value` on one line, without blanks.
    static const std::string JsonToString(const Json::Value& value);
};

// A JSON object with these members.
[[nodiscard]] Json::Value Object(
    std::initializer_list<std::pair<const char*, Json::Value>> members);

}  // namespace Util
