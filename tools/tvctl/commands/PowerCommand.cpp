// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "common/Parse.h"
#include "platform/linux/config/PlatformState.h"
#include "tools/tvctl/commands/Commands.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

using Platform::ConfigStore;

struct StateName {
    const char* name;
    const char* summary;
};

constexpr StateName kNames[] = {
    {"wakeup-reason", "why the TV woke"},
    {"power-state", "0 normal, 1 picture off, 2 background standby, 4 low power"},
    {"power-state-option", "the option of the last request for a power state"},
    {"ambient-mode", "1 ambient picture, 2 ambient low power"},
    {"ambient-type", "bits: 0 general, 2 the art application shows"},
    {"ambient-lock", "1 while ambient low power is locked"},
    {"ambient-lock-timeout", "the timeout of the last ambient lock"},
    {"standby-lock-ms", "set while a standby lock is held; 0 has no end"},
    {"poweroff-request", "kind of the last power-off that was asked for"},
    {"master-mute", "1 when everything is muted"},
    {"tv-speaker-mute", "1 when the TV's own speaker is muted"},
};

std::string KeyOf(std::string name) {
    std::replace(name.begin(), name.end(), '-', '_');
    return Platform::StateKey(name.c_str());
}

bool IsKnown(const std::string& name) {
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [&name](const StateName& known) { return name == known.name; });
}

ExitCode RefuseName(const std::string& name, Console& console) {
    return console.Misuse("unknown state: " + name + "; tvctl power show --help lists them");
}

std::string NamesHelp() {
    std::string text = "NAME is one of:\n";
    for (const StateName& known : kNames) {
        text += std::string("  ") + known.name;
        text.append(22 - std::string(known.name).size(), ' ');
        text += std::string(known.summary) + "\n";
    }
    return text;
}

ExitCode Show(const Arguments& arguments, Console& console) {
    const std::string wanted = arguments.positional.empty() ? "" : arguments.positional[0];
    Json::Value json(Json::objectValue);
    std::vector<std::string> lines;
    for (const StateName& known : kNames) {
        if (!wanted.empty() && wanted != known.name) {
            continue;
        }
        const std::string key = KeyOf(known.name);
        const Platform::ConfigLookup lookup = ConfigStore::Instance().Lookup(key);
        if (IsFailure(lookup.status)) {
            return console.Fail(ConfigStore::Instance().LastFailure(key));
        }
        const bool isSet = lookup.Holds(Platform::ConfigType::kInt);
        json[known.name] = isSet ? Json::Value(lookup.value.number) : Json::Value();
        const std::string text = isSet ? std::to_string(lookup.value.number) : "-";
        lines.push_back(wanted.empty() ? std::string(known.name) + "\t" + text : text);
    }
    return lines.empty() ? RefuseName(wanted, console) : console.Show(json, lines);
}

ExitCode Set(const Arguments& arguments, Console& console) {
    const std::string& name = arguments.positional[0];
    if (!IsKnown(name)) {
        return RefuseName(name, console);
    }
    const auto number = ParseInt(arguments.positional[1]);
    if (!number) {
        return console.Misuse("'" + arguments.positional[1] + "' is not an integer");
    }
    const std::string key = KeyOf(name);
    return ConfigStore::Instance().SetInt(key, *number)
               ? console.Show(Util::Object({{name.c_str(), *number}}))
               : console.Fail(ConfigStore::Instance().LastFailure(key));
}

}  // namespace

CommandGroup PowerCommands() {
    return {"power",
            "the TV's power, ambient and sound state",
            {{"show", "[NAME]", "Shows one number, or all of them", Show, NamesHelp()},
             {"set", "NAME VALUE", "Sets a number", Set, NamesHelp()}}};
}

}  // namespace Tvctl
