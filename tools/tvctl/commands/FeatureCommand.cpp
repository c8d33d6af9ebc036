// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/FeatureCommand.h"

#include "platform/linux/base/Parse.h"
#include "platform/linux/config/FeatureFile.h"

namespace Tvctl {

namespace {

using Platform::FeatureFile;

constexpr char kNameHelp[] =
    "NAME is the feature's path, such as com.velmora/featureconf/display_rotator_supported;\n"
    "a NAME without a '/' stands below com.velmora/featureconf.\n";

std::string KeyOf(const std::string& name) {
    return name.find('/') == std::string::npos ? "com.velmora/featureconf/" + name : name;
}

// As the type that its text has.
Json::Value JsonOf(const std::string& text) {
    if (const auto flag = Platform::ParseBool(text)) {
        return *flag;
    }
    if (const auto number = Platform::ParseInt(text)) {
        return *number;
    }
    return text;
}

}  // namespace

CommandGroup FeatureCommand::Group() {
    return {"feature",
            "the product features",
            {{"get", "NAME", "Shows a feature", kNameHelp, {}, 1, 1, Get},
             {"set",
              "NAME VALUE",
              "Sets a feature",
              std::string(kNameHelp) + "VALUE is true, false or an integer.\n",
              {},
              2,
              2,
              Set},
             {"list", "", "Lists all features that are set", "", {}, 0, 0, List}}};
}

ExitCode FeatureCommand::Get(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments.positional[0]);
    const auto text = FeatureFile::Instance().GetText(key);
    if (!text) {
        const std::string failure = FeatureFile::Instance().LastFailure();
        return console.Fail(failure.empty() ? key + " is not set" : failure);
    }
    console.Print(JsonOf(*text), *text);
    return kDone;
}

ExitCode FeatureCommand::Set(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments.positional[0]);
    const std::string& value = arguments.positional[1];
    if (!FeatureFile::IsValidKey(key)) {
        return console.Misuse("'" + key + "' cannot be a feature");
    }
    if (!Platform::ParseBool(value) && !Platform::ParseInt(value)) {
        return console.Misuse("'" + value + "' is neither true nor false nor an integer");
    }
    if (!FeatureFile::Instance().Set(key, value)) {
        return console.Fail(FeatureFile::Instance().LastFailure());
    }
    return kDone;
}

ExitCode FeatureCommand::List(const Arguments& /*arguments*/, Console& console) {
    const auto features = FeatureFile::Instance().List();
    if (!features) {
        return console.Fail(FeatureFile::Instance().LastFailure());
    }
    Json::Value json(Json::objectValue);
    for (const FeatureFile::Feature& feature : *features) {
        json[feature.key] = JsonOf(feature.value);
        if (!console.IsJson()) {
            console.PrintLine(feature.key + "\t" + feature.value);
        }
    }
    if (console.IsJson()) {
        console.Print(json);
    }
    return kDone;
}

}  // namespace Tvctl
