// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/DbusInterface.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/PhoneRegistry.h"
#include "tools/tvctl/model/ServiceSignal.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

using Outcome = PhoneRegistry::Outcome;

ExitCode Report(const char* change, const std::string& address, Outcome outcome,
                const PhoneRegistry& registry, Console& console) {
    return outcome == Outcome::kFailed
               ? console.Fail(registry.Failure())
               : console.Show(Util::Object({{"address", Util::CommonUtil::ToCapital(address)},
                                            {change, outcome == Outcome::kDone}}));
}

ExitCode Add(const Arguments& arguments, Console& console) {
    const std::string& address = arguments.positional[0];
    PhoneRegistry registry;
    const Outcome outcome = registry.Add(address, !arguments.Has("--off"));
    return Report("added", address, outcome, registry, console);
}

ExitCode Remove(const Arguments& arguments, Console& console) {
    const std::string& address = arguments.positional[0];
    PhoneRegistry registry;
    const Outcome outcome = registry.Remove(address);
    return outcome == Outcome::kNothingToDo
               ? console.Fail(address + " is not registered")
               : Report("removed", address, outcome, registry, console);
}

std::string SettingText(const Phone& phone) {
    if (!phone.setting) {
        return "unknown";
    }
    return *phone.setting == "Y" ? "on" : "off";
}

ExitCode List(const Arguments& /*arguments*/, Console& console) {
    PhoneRegistry registry;
    const auto phones = registry.List();
    if (!phones) {
        return console.Fail(registry.Failure());
    }
    Json::Value json(Json::arrayValue);
    std::vector<std::string> lines;
    for (const Phone& phone : *phones) {
        json.append(Util::Object({{"address", phone.address},
                                  {"setting", SettingText(phone)},
                                  {"power", phone.hasPower},
                                  {"qualifies", phone.Qualifies()}}));
        lines.push_back(phone.address + "\t" + SettingText(phone) + "\t" +
                        (phone.hasPower ? "power" : "no-power") + "\t" +
                        (phone.Qualifies() ? "connects" : "does-not-connect"));
    }
    return console.Show(json, lines);
}

// As the phone itself would: through the service.
ExitCode SendSetting(const Arguments& arguments, const char* value, Console& console) {
    PhoneRegistry registry;
    const auto spelling = registry.SpellingOf(arguments.positional[0]);
    if (!spelling) {
        return console.Fail(registry.Failure());
    }
    const Json::Value setting = Util::Object({{"btMac", *spelling}, {"value", value}});
    const std::string text = Util::JsonUtil::JsonToString(setting);
    const std::string failure =
        SendToService(kMobileUpdateCommand, g_variant_new("(s)", text.c_str()));
    return failure.empty() ? console.Show(setting) : console.Fail(failure);
}

ExitCode SwitchOn(const Arguments& arguments, Console& console) {
    return SendSetting(arguments, "Y", console);
}

ExitCode SwitchOff(const Arguments& arguments, Console& console) {
    return SendSetting(arguments, "N", console);
}

}  // namespace

CommandGroup PhoneCommands() {
    const std::string viaService =
        "Sends the service the signal that the phone would send; the service stores the setting.\n"
        "Fails if the service does not run.\n";
    return {
        "phone",
        "the phones that are connected automatically",
        {{"add",
          "ADDRESS [--off]",
          "Registers a phone, so that it is connected",
          Add,
          "Stores the phone's setting, and its masked address in the list of those that may\n"
          "switch the TV on. A phone that is registered already keeps its place.\n",
          {{"--off", "", "with automatic connection off"}}},
         {"remove", "ADDRESS", "Forgets a phone", Remove},
         {"list", "", "Lists the phones: address, setting, whether it may switch the TV on", List,
          "A phone is connected when its setting is on and it may switch the TV on.\n"},
         {"on", "ADDRESS", "Switches a phone's automatic connection on", SwitchOn, viaService},
         {"off", "ADDRESS", "Switches a phone's automatic connection off", SwitchOff, viaService}}};
}

}  // namespace Tvctl
