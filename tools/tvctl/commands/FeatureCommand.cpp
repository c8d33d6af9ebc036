// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/FeatureFile.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/ConfigText.h"

namespace Tvctl {

namespace {

using Platform::FeatureFile;

constexpr char kNameHelp[] =
    "NAME is the feature's path, such as com.velmora/featureconf/display_rotator_supported;\n"
    "a NAME without a '/' is below com.velmora/featureconf.\n";

std::string KeyOf(const std::string& name) {
    return name.find('/') == std::string::npos ? "com.velmora/featureconf/" + name : name;
}

// As the type that its text has.
Json::Value JsonOf(const std::string& text) {
    return ToJson(*ParseValue(GuessType(text), text));
}

ExitCode Get(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments.positional[0]);
    const auto text = FeatureFile::Instance().GetText(key);
    if (!text) {
        const std::string failure = FeatureFile::Instance().LastFailure();
        return console.Fail(failure.empty() ? key + " is not set" : failure);
    }
    return console.Show(JsonOf(*text), {*text});
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
    return FeatureFile::Instance().Set(key, value)
               ? kDone
               : console.Fail(FeatureFile::Instance().LastFailure());
}

ExitCode List(const Arguments& /*arguments*/, Console& console) {
    const auto features = FeatureFile::Instance().List();
    if (!features) {
        return console.Fail(FeatureFile::Instance().LastFailure());
    }
    Json::Value json(Json::objectValue);
    std::vector<std::string> lines;
    for (const FeatureFile::Feature& feature : *features) {
        json[feature.key] = JsonOf(feature.value);
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
             {"list", "", "Lists all features that are set", List}}};
}

}  // namespace Tvctl
