// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/ConfigText.h"

#include <algorithm>

#include "common/Parse.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

using Platform::ConfigEntry;
using Platform::ConfigStore;
using Platform::ConfigType;
using Platform::ConfigValue;

constexpr const char* kBlanks = " \t";

// Takes the first word off the front of `text`, and what separates it from the next: blanks of a
// line that was typed, one tab of a line that was printed.
std::string TakeWord(std::string& text, bool isPrinted) {
    const size_t end = text.find_first_of(isPrinted ? "\t" : kBlanks);
    std::string word = text.substr(0, end);
    const size_t next = isPrinted ? end + 1 : text.find_first_not_of(kBlanks, end);
    text = end == std::string::npos || next == std::string::npos ? "" : text.substr(next);
    return word;
}

}  // namespace

ConfigType GuessType(const std::string& text) {
    if (ParseBool(text)) {
        return ConfigType::kBool;
    }
    return ParseInt(text) ? ConfigType::kInt : ConfigType::kString;
}

std::optional<std::string> KeyMeant(const std::string& word) {
    std::string key = word;
    const auto id = ParseInt(word);
    if (id && *id >= 0 && *id < Util::VCONF_KEY_COUNT) {
        key = Util::VconfUtil::keys[static_cast<size_t>(*id)];
    }
    return ConfigStore::Instance().FileOf(key) == nullptr ? std::nullopt : std::optional(key);
}

std::optional<ConfigValue> ParseValue(ConfigType type, const std::string& text) {
    if (type == ConfigType::kString) {
        return ConfigValue{type, text, 0};
    }
    const auto flag = ParseBool(text);
    if (type == ConfigType::kBool && flag) {
        return ConfigValue{type, {}, *flag ? 1 : 0};
    }
    const auto number = ParseInt(text);
    return number ? std::optional<ConfigValue>({type, {}, *number}) : std::nullopt;
}

std::string NotOfType(ConfigType type, const std::string& text) {
    return "'" + text + "' is not " + (type == ConfigType::kInt ? "an " : "a ") + NameOf(type);
}

Json::Value ToJson(const ConfigValue& value) {
    if (value.type == ConfigType::kString) {
        return value.text;
    }
    const bool isFlag = value.type == ConfigType::kBool && (value.number == 0 || value.number == 1);
    return isFlag ? Json::Value(value.number != 0) : Json::Value(value.number);
}

std::string TextOf(const ConfigValue& value) {
    return ToJson(value).asString();
}

std::string LineOf(const ConfigEntry& entry) {
    return entry.key + "\t" + NameOf(entry.value.type) + "\t" + TextOf(entry.value);
}

std::string ParseLine(const std::string& line, ConfigEntry& entry) {
    std::string rest = line;
    const bool isPrinted = std::count(line.begin(), line.end(), '\t') >= 2;
    const std::string word = TakeWord(rest, isPrinted);
    const auto key = KeyMeant(word);
    if (!key) {
        return "'" + word + "' is not a key";
    }
    const std::string typeName = TakeWord(rest, isPrinted);
    const auto type = Platform::TypeNamed(typeName);
    if (!type) {
        return "the type is string, bool or int, not '" + typeName + "'";
    }
    const auto value = ParseValue(*type, rest);
    if (!value) {
        return NotOfType(*type, rest);
    }
    entry = {*key, *value};
    return "";
}

}  // namespace Tvctl
