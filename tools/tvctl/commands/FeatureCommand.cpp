// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/FeatureFile.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/ConfigText.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

using Platform::FeatureFile;

constexpr char kNameHelp[] =
    "NAME is the feature's path, such as com.velmora/featureconf/display_rotator_supported;\n"
    "a NAME without a '/' is below com.velmora/featureconf.\n";

std::string KeyOf(const std::string& name) {
    return name.find('/') == std::string::npos ? "com.velmora/featureconf/" + name : name;
}

// The value as the type that its text has.
Json::Value JsonOf(const std::string& key, const std::string& text) {
    return Util::Object({{"name", key}, {"value", ToJson(*ParseValue(GuessType(text), text))}});
}

// A feature that is not there, or cannot be read or written.
ExitCode Fail(const std::string& key, Console& console) {
    const std::string failure = FeatureFile::Instance().LastFailure();
    return console.Fail(failure.empty() ? key + " is not set" : failure);
}

ExitCode Get(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments.positional[0]);
    const auto text = FeatureFile::Instance().GetText(key);
    return text ? console.Show(JsonOf(key, *text), {*text}) : Fail(key, console);
}

ExitCode Set(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments.positional[0]);
    const std::string& value = arguments.positional[1];
    if (!FeatureFile::IsValidKey(key)) {
        return console.Misuse("'" + key + "' cannot be a feature");
    }
    if (GuessType(value) == Platform::ConfigType::kString) {
        return console.Misuse("'" + value + "' is not true, false or an integer");
    }
    return FeatureFile::Instance().Set(key, value) ? console.Show(JsonOf(key, value))
                                                   : Fail(key, console);
}

ExitCode Unset(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments.positional[0]);
    return FeatureFile::Instance().Unset(key)
               ? console.Show(Util::Object({{"name", key}, {"value", Json::Value()}}))
               : Fail(key, console);
}

ExitCode List(const Arguments& /*arguments*/, Console& console) {
    const auto features = FeatureFile::Instance().List();
    if (!features) {
        return console.Fail(FeatureFile::Instance().LastFailure());
    }
    Json::Value json(Json::arrayValue);
    std::vector<std::string> lines;
    for (const FeatureFile::Feature& feature : *features) {
        json.append(JsonOf(feature.key, feature.value));
        lines.push_back(feature.key + "\t" + feature.value);
    }
    return console.Show(json, lines);
}

}  // namespace

CommandGroup FeatureCommands() {
    return {"feature",
            "the product features",
            {{"get", "NAME", "Shows a feature", Get, kNameHelp},
             {"set", "NAME VALUE", "Sets a feature", Set,
              std::string(kNameHelp) + "VALUE is true, false or an integer.\n"},
             {"unset", "NAME", "Removes a feature", Unset, kNameHelp},
             {"list", "", "Lists all features that are set", List}}};
}

}  // namespace Tvctl
