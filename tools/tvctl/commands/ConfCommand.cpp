// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>

#include "common/CHandle.h"
#include "common/Parse.h"
#include "common/Source.h"
#include "platform/config_store.h"
#include "platform/linux/config/ConfigStore.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/ConfigText.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

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
    "well-known key, which the log shows in brackets.\n";

// The key that the first argument means.
std::string KeyOf(const Arguments& arguments) {
    return *KeyMeant(arguments.positional[0]);
}

// The type that a key has, or for a new one the type that the text looks like.
ConfigType TypeFor(const std::string& key, const std::string& text) {
    const ConfigLookup present = ConfigStore::Instance().Lookup(key);
    return present.status == ConfigStatus::kOk ? present.value.type : GuessType(text);
}

Json::Value JsonOf(const ConfigEntry& entry) {
    return Util::Object(
        {{"key", entry.key}, {"type", NameOf(entry.value.type)}, {"value", ToJson(entry.value)}});
}

Json::Value JsonOfUnset(const std::string& key) {
    return Util::Object({{"key", key}, {"value", Json::Value()}});
}

ExitCode FailAccess(const std::string& key, ConfigStatus status, Console& console) {
    if (status == ConfigStatus::kAbsent || status == ConfigStatus::kNoFile) {
        return console.Fail(key + " is not set");
    }
    return console.Fail(ConfigStore::Instance().LastFailure(key));
}

// Writes the entry; kChanged when its key has a value, also one that somebody else wrote meanwhile.
ConfigStatus StoreIfUnset(const ConfigEntry& entry) {
    ConfigStore& store = ConfigStore::Instance();
    const ConfigLookup present = store.Lookup(entry.key);
    if (present.status == ConfigStatus::kOk) {
        return ConfigStatus::kChanged;
    }
    return IsFailure(present.status) ? present.status
                                     : store.Store(entry.key, entry.value, present.revision);
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
        run.console.Show(JsonOf(entry), {LineOf(entry)});
    } else if (lookup.status == ConfigStatus::kAbsent) {
        run.console.Show(JsonOfUnset(watched->key), {watched->key + "\tunset"});
    } else {
        static_cast<void>(FailAccess(watched->key, lookup.status, run.console));
        return;
    }
    if (run.left > 0 && --run.left == 0) {
        g_main_loop_quit(run.loop.get());
    }
}

ExitCode Get(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments);
    const ConfigLookup lookup = ConfigStore::Instance().Lookup(key);
    if (lookup.status != ConfigStatus::kOk) {
        return FailAccess(key, lookup.status, console);
    }
    std::vector<std::string> lines;
    Util::CommonUtil::StrSplit(TextOf(lookup.value), "\n", &lines);
    return console.Show(JsonOf({key, lookup.value}), lines);
}

ExitCode Set(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments);
    const std::string& text = arguments.positional[1];
    const auto wanted = arguments.Option("--type");
    const auto type = wanted ? Platform::TypeNamed(*wanted) : TypeFor(key, text);
    if (!type) {
        return console.Misuse("--type is string, bool or int, not '" + *wanted + "'");
    }
    const auto value = ParseValue(*type, text);
    if (!value) {
        return console.Misuse(NotOfType(*type, text) + ", the type of " + key);
    }
    const ConfigStatus status = ConfigStore::Instance().Store(key, *value);
    return status == ConfigStatus::kOk ? console.Show(JsonOf({key, *value}))
                                       : FailAccess(key, status, console);
}

ExitCode Unset(const Arguments& arguments, Console& console) {
    const std::string key = KeyOf(arguments);
    const ConfigStatus status = ConfigStore::Instance().Unset(key);
    return status == ConfigStatus::kOk ? console.Show(JsonOfUnset(key))
                                       : FailAccess(key, status, console);
}

ExitCode List(const Arguments& arguments, Console& console) {
    const std::string prefix = arguments.positional.empty() ? "" : arguments.positional[0];
    const auto entries = ConfigStore::Instance().List();
    if (!entries) {
        return console.Fail(ConfigStore::Instance().LastFailure());
    }
    Json::Value json(Json::arrayValue);
    std::vector<std::string> lines;
    for (const ConfigEntry& entry : *entries) {
        if (Util::CommonUtil::StartsWith(entry.key, prefix)) {
            json.append(JsonOf(entry));
            lines.push_back(LineOf(entry));
        }
    }
    return console.Show(json, lines);
}

ExitCode Load(const Arguments& arguments, Console& console) {
    const std::string& path = arguments.positional[0];
    std::ifstream file(path);
    if (!file) {
        return console.Fail(path + ": " + std::strerror(errno));
    }
    ExitCode result = kDone;
    Json::Value written(Json::arrayValue);
    std::vector<std::string> lines;
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
        const ConfigStatus status = StoreIfUnset(entry);
        if (IsFailure(status)) {
            // The next key would wait for the same file as long again.
            result = console.Fail(ConfigStore::Instance().LastFailure(entry.key));
            break;
        }
        if (status == ConfigStatus::kOk) {
            written.append(JsonOf(entry));
            lines.push_back(LineOf(entry));
        }
    }
    console.Show(written, lines);
    return file.bad() ? console.Fail(path + " cannot be read to its end") : result;
}

ExitCode Watch(const Arguments& arguments, Console& console) {
    const auto count = ParseInt(arguments.Option("--count").value_or("0"));
    if (!count || *count < 0 || (*count == 0 && arguments.Has("--count"))) {
        return console.Misuse("--count needs a number above 0");
    }
    std::vector<WatchedKey> keys;
    WatchRun run = {console, static_cast<size_t>(*count),
                    GMainLoopPtr(g_main_loop_new(nullptr, FALSE))};
    for (const std::string& word : arguments.positional) {
        keys.push_back({*KeyMeant(word), &run});
    }
    const auto quit = [&run] { g_main_loop_quit(run.loop.get()); };
    const Source interrupt = Source::OnSignal(SIGINT, quit);
    const Source terminate = Source::OnSignal(SIGTERM, quit);
    ExitCode result = kDone;
    for (WatchedKey& watched : keys) {
        if (vconf_notify_key_changed(watched.key.c_str(), OnChanged, &watched) != 0) {
            result = console.Fail("cannot watch " + watched.key + "; --verbose shows why");
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

}  // namespace

CommandGroup ConfCommands() {
    return {
        "conf",
        "the configuration store",
        {{"get", "KEY", "Shows the value of a key", Get, kKeyHelp},
         {"set",
          "KEY VALUE [--type TYPE]",
          "Writes a key",
          Set,
          std::string(kKeyHelp) +
              "Without --type the key keeps its type; a new key gets the type that VALUE looks\n"
              "like. A bool is true, false or a number.\n",
          {{"--type", "TYPE", "string, bool or int"}}},
         {"unset", "KEY", "Removes a key", Unset, kKeyHelp},
         {"list", "[PREFIX]", "Lists keys with type and value", List},
         {"load", "FILE", "Writes those keys of a file that have no value yet", Load,
          "FILE has a line for each key, KEY TYPE VALUE, as tvctl conf list prints them. Empty\n"
          "lines and those that begin with # are ignored. A wrong line is reported and skipped.\n"
          "Shows the keys that were written.\n"},
         {"watch",
          "KEY... [--count N]",
          "Shows each change of the keys, until stopped",
          Watch,
          kKeyHelp,
          {{"--count", "N", "end after N changes"}}}}};
}

}  // namespace Tvctl
