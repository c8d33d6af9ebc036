// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/PowerCommand.h"

#include <algorithm>

#include "platform/linux/base/Parse.h"
#include "platform/linux/config/ConfigStore.h"
#include "platform/linux/config/PlatformState.h"

namespace Tvctl {

namespace {

using Platform::ConfigLookup;
using Platform::ConfigStatus;
using Platform::ConfigStore;
using Platform::ConfigType;

struct StateName {
    const char* name;
    const char* summary;
};

constexpr StateName kNames[] = {
    {"wakeup-reason", "why the TV woke"},
    {"power-state", "0 normal, 1 picture off, 2 background standby, 4 low power"},
    {"power-state-option", "what came with the last request for a power state"},
    {"ambient-mode", "1 ambient picture, 2 ambient low power"},
    {"ambient-type", "bits: 0 general, 2 the art application shows"},
    {"ambient-lock", "1 while ambient low power is locked"},
    {"ambient-lock-timeout", "what came with the last ambient lock"},
    {"standby-lock-ms", "there while a standby lock is held; 0 has no end"},
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

Json::Value NumberIn(const ConfigLookup& lookup) {
    const bool isSet = lookup.status == ConfigStatus::kOk && lookup.value.type == ConfigType::kInt;
    return isSet ? Json::Value(lookup.value.number) : Json::Value();
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

}  // namespace

CommandGroup PowerCommand::Group() {
    return {"power",
            "the TV's power, ambient and sound state",
            {{"show", "[NAME]", "Shows one number, or all of them", NamesHelp(), {}, 0, 1, Show},
             {"set", "NAME VALUE", "Sets a number", NamesHelp(), {}, 2, 2, Set}}};
}

ExitCode PowerCommand::Show(const Arguments& arguments, Console& console) {
    const std::string wanted = arguments.positional.empty() ? "" : arguments.positional[0];
    if (!wanted.empty() && !IsKnown(wanted)) {
        return console.Misuse("no state is called " + wanted +
                              "; tvctl power show --help lists them");
    }
    Json::Value json(Json::objectValue);
    std::string lines;
    for (const StateName& known : kNames) {
        if (!wanted.empty() && wanted != known.name) {
            continue;
        }
        const std::string key = KeyOf(known.name);
        const ConfigLookup lookup = ConfigStore::Instance().Lookup(key);
        if (IsFailure(lookup.status)) {
            return console.Fail(ConfigStore::Instance().LastFailure(key));
        }
        json[known.name] = NumberIn(lookup);
        const std::string text = json[known.name].isNull() ? "-" : json[known.name].asString();
        lines += wanted.empty() ? std::string(known.name) + "\t" + text + "\n" : text + "\n";
    }
    if (console.IsJson()) {
        console.Print(json);
    } else {
        lines.pop_back();
        console.PrintText(lines);
    }
    return kDone;
}

ExitCode PowerCommand::Set(const Arguments& arguments, Console& console) {
    const std::string& name = arguments.positional[0];
    if (!IsKnown(name)) {
        return console.Misuse("no state is called " + name + "; tvctl power set --help lists them");
    }
    const auto number = Platform::ParseInt(arguments.positional[1]);
    if (!number) {
        return console.Misuse("'" + arguments.positional[1] + "' is not an integer");
    }
    const std::string key = KeyOf(name);
    if (!ConfigStore::Instance().SetInt(key, *number)) {
        return console.Fail(ConfigStore::Instance().LastFailure(key));
    }
    return kDone;
}

}  // namespace Tvctl
