// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/ConfCommand.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>

#include "common/CHandle.h"
#include "common/Source.h"
#include "platform/config_store.h"
#include "platform/linux/base/Parse.h"
#include "platform/linux/config/ConfigStore.h"
#include "tools/tvctl/model/ConfigText.h"
#include "utility/CommonUtil.h"

namespace Tvctl {

namespace {

using Platform::ConfigEntry;
using Platform::ConfigLookup;
using Platform::ConfigStatus;
using Platform::ConfigStore;
using Platform::ConfigType;
using Platform::ConfigValue;

constexpr char kKeyHelp[] =
    "KEY is a name below db/ (kept) or memory/ (gone at the next boot), or the number of a\n"
    "well-known key, 0 to 143.\n";

// The key that a word means; nothing after a reported mistake.
std::optional<std::string> ResolveKey(const std::string& word, Console& console) {
    auto key = KeyMeant(word);
    if (!key) {
        static_cast<void>(console.Misuse("'" + word + "' is not a key; see tvctl conf get --help"));
    }
    return key;
}

ConfigType GuessType(const std::string& text) {
    if (Platform::ParseBool(text)) {
        return ConfigType::kBool;
    }
    return Platform::ParseInt(text) ? ConfigType::kInt : ConfigType::kString;
}

// The type that a key has, or for a new one the type that the text looks like.
std::optional<ConfigType> TypeFor(const std::string& key, const std::string& text) {
    const ConfigLookup present = ConfigStore::Instance().Lookup(key);
    return present.status == ConfigStatus::kOk ? present.value.type : GuessType(text);
}

Json::Value JsonOf(const ConfigEntry& entry) {
    const ConfigValue& value = entry.value;
    Json::Value json;
    json["key"] = entry.key;
    json["type"] = NameOf(value.type);
    if (value.type == ConfigType::kBool && (value.number == 0 || value.number == 1)) {
        json["value"] = value.number != 0;
    } else {
        json["value"] =
            value.type == ConfigType::kString ? Json::Value(value.text) : Json::Value(value.number);
    }
    return json;
}

ExitCode FailAccess(const std::string& key, ConfigStatus status, Console& console) {
    if (status == ConfigStatus::kAbsent || status == ConfigStatus::kNoFile) {
        return console.Fail(key + " is not set");
    }
    return console.Fail(ConfigStore::Instance().LastFailure(key));
}

// Writes the key unless it has a value, also one that somebody else writes at the same time;
// whether it was written.
ConfigStatus StoreIfUnset(const ConfigEntry& entry, bool& isWritten) {
    ConfigStore& store = ConfigStore::Instance();
    const ConfigLookup present = store.Lookup(entry.key);
    if (present.status != ConfigStatus::kAbsent && present.status != ConfigStatus::kNoFile) {
        return present.status;
    }
    const ConfigStatus status = store.Store(entry.key, entry.value, present.revision);
    isWritten = status == ConfigStatus::kOk;
    return status == ConfigStatus::kChanged ? ConfigStatus::kOk : status;
}

// Writes the entry where it has no value, and shows or collects it; false when it cannot be
// written.
bool LoadEntry(const ConfigEntry& entry, Console& console, Json::Value& written) {
    bool isWritten = false;
    if (StoreIfUnset(entry, isWritten) != ConfigStatus::kOk) {
        return false;
    }
    if (isWritten) {
        written.append(JsonOf(entry));
    }
    if (isWritten && !console.IsJson()) {
        console.PrintLine(LineOf(entry));
    }
    return true;
}

// A running watch: what it prints to and how many changes are still to come (0: no limit).
struct WatchRun {
    Console& console;
    size_t left;
    GMainLoopPtr loop;
};

struct WatchedKey {
    std::string key;
    WatchRun* run;  // not owned
};

void OnChanged(keynode_t* /*node*/, void* userData) noexcept {
    const auto* watched = static_cast<const WatchedKey*>(userData);
    WatchRun& run = *watched->run;
    const ConfigLookup lookup = ConfigStore::Instance().Lookup(watched->key);
    const ConfigEntry entry = {watched->key, lookup.value};
    if (lookup.status == ConfigStatus::kOk) {
        run.console.Print(JsonOf(entry), LineOf(entry));
    } else if (lookup.status == ConfigStatus::kAbsent) {
        Json::Value json;
        json["key"] = watched->key;
        json["value"] = Json::Value();
        run.console.Print(json, watched->key + "\tunset");
    } else {
        static_cast<void>(FailAccess(watched->key, lookup.status, run.console));
        return;
    }
    if (run.left > 0 && --run.left == 0) {
        g_main_loop_quit(run.loop.get());
    }
}

}  // namespace

CommandGroup ConfCommand::Group() {
    const std::string typeHelp =
        std::string(kKeyHelp) +
        "Without --type the key keeps the type that it has; a new one gets the type that VALUE\n"
        "looks like. A bool is true, false or a number.\n";
    return {
        "conf",
        "the configuration store",
        {{"get", "KEY", "Shows the value of a key", kKeyHelp, {}, 1, 1, Get},
         {"set",
          "KEY VALUE [--type TYPE]",
          "Writes a key",
          typeHelp,
          {{"--type", "TYPE", "string, bool or int"}},
          2,
          2,
          Set},
         {"unset", "KEY", "Removes a key", kKeyHelp, {}, 1, 1, Unset},
         {"list", "[PREFIX]", "Lists keys with type and value", "", {}, 0, 1, List},
         {"load",
          "FILE",
          "Writes those keys of a file that have no value yet",
          "FILE has a line for each key, KEY TYPE VALUE, as tvctl conf list prints them. Empty\n"
          "lines and those that begin with # mean nothing. A line that is wrong is reported and\n"
          "left out. Shows the keys that were written.\n",
          {},
          1,
          1,
          Load},
         {"watch",
          "KEY... [--count N]",
          "Shows each change of the keys, until it is stopped",
          kKeyHelp,
          {{"--count", "N", "end after N changes"}},
          1,
          kAnyNumber,
          Watch}}};
}

ExitCode ConfCommand::Get(const Arguments& arguments, Console& console) {
    const auto key = ResolveKey(arguments.positional[0], console);
    if (!key) {
        return kUsage;
    }
    const ConfigLookup lookup = ConfigStore::Instance().Lookup(*key);
    if (lookup.status != ConfigStatus::kOk) {
        return FailAccess(*key, lookup.status, console);
    }
    if (console.IsJson()) {
        console.Print(JsonOf({*key, lookup.value}));
    } else {
        console.PrintText(TextOf(lookup.value));
    }
    return kDone;
}

ExitCode ConfCommand::Set(const Arguments& arguments, Console& console) {
    const auto key = ResolveKey(arguments.positional[0], console);
    if (!key) {
        return kUsage;
    }
    const std::string& text = arguments.positional[1];
    const auto wanted = arguments.Option("--type");
    const auto type = wanted ? TypeNamed(*wanted) : TypeFor(*key, text);
    if (!type) {
        return console.Misuse("--type is string, bool or int, not '" + *wanted + "'");
    }
    const auto value = ParseValue(*type, text);
    if (!value) {
        return console.Misuse("'" + text + "' is no " + NameOf(*type) + ", the type of " + *key);
    }
    const ConfigStatus status = ConfigStore::Instance().Store(*key, *value);
    return status == ConfigStatus::kOk ? kDone : FailAccess(*key, status, console);
}

ExitCode ConfCommand::Unset(const Arguments& arguments, Console& console) {
    const auto key = ResolveKey(arguments.positional[0], console);
    if (!key) {
        return kUsage;
    }
    const ConfigStatus status = ConfigStore::Instance().Unset(*key);
    return status == ConfigStatus::kOk ? kDone : FailAccess(*key, status, console);
}

ExitCode ConfCommand::List(const Arguments& arguments, Console& console) {
    const std::string prefix = arguments.positional.empty() ? "" : arguments.positional[0];
    const auto entries = ConfigStore::Instance().List();
    if (!entries) {
        return console.Fail(ConfigStore::Instance().LastFailure());
    }
    Json::Value json(Json::arrayValue);
    for (const ConfigEntry& entry : *entries) {
        if (!Util::CommonUtil::StartsWith(entry.key, prefix)) {
            continue;
        }
        json.append(JsonOf(entry));
        if (!console.IsJson()) {
            console.PrintLine(LineOf(entry));
        }
    }
    if (console.IsJson()) {
        console.Print(json);
    }
    return kDone;
}

ExitCode ConfCommand::Load(const Arguments& arguments, Console& console) {
    const std::string& path = arguments.positional[0];
    std::ifstream file(path);
    if (!file) {
        return console.Fail(path + ": " + std::strerror(errno));
    }
    ExitCode result = kDone;
    Json::Value written(Json::arrayValue);
    size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.find_first_not_of(" \t") == std::string::npos || line[0] == '#') {
            continue;
        }
        ConfigEntry entry;
        std::string mistake = ParseLine(line, entry);
        if (!mistake.empty()) {
            mistake.insert(0, path + ":" + std::to_string(number) + ": ");
            result = console.Fail(mistake);
            continue;
        }
        if (!LoadEntry(entry, console, written)) {
            // The next key would wait for the same file as long again.
            return console.Fail(ConfigStore::Instance().LastFailure(entry.key));
        }
    }
    if (console.IsJson()) {
        console.Print(written);
    }
    return file.bad() ? console.Fail(path + " cannot be read to its end") : result;
}

ExitCode ConfCommand::Watch(const Arguments& arguments, Console& console) {
    const auto count = Platform::ParseInt(arguments.Option("--count").value_or("0"));
    if (!count || *count < 0 || (*count == 0 && arguments.Has("--count"))) {
        return console.Misuse("--count needs a number above 0");
    }
    std::vector<WatchedKey> keys;
    WatchRun run = {console, static_cast<size_t>(*count),
                    GMainLoopPtr(g_main_loop_new(nullptr, FALSE))};
    for (const std::string& word : arguments.positional) {
        const auto key = ResolveKey(word, console);
        if (!key) {
            return kUsage;
        }
        keys.push_back({*key, &run});
    }
    const auto quit = [&run] { g_main_loop_quit(run.loop.get()); };
    const Source interrupt = Source::OnSignal(SIGINT, quit);
    const Source terminate = Source::OnSignal(SIGTERM, quit);
    ExitCode result = kDone;
    for (WatchedKey& watched : keys) {
        if (vconf_notify_key_changed(watched.key.c_str(), OnChanged, &watched) != 0) {
            result = console.Fail("the kernel gives no watch for " + watched.key);
        }
    }
    if (result == kDone) {
        g_main_loop_run(run.loop.get());
    }
    for (const WatchedKey& watched : keys) {
        static_cast<void>(vconf_ignore_key_changed(watched.key.c_str(), OnChanged));
    }
    return result;
}

}  // namespace Tvctl
