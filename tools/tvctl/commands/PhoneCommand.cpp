// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/PhoneCommand.h"

#include "autoconnect/src/DbusInterface.h"
#include "tools/tvctl/model/PhoneRegistry.h"
#include "tools/tvctl/model/ServiceSignal.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

ExitCode RefuseAddress(const std::string& address, Console& console) {
    return console.Misuse("'" + address + "' is not a Bluetooth address (XX:XX:XX:XX:XX:XX)");
}

ExitCode Report(const char* change, const std::string& address, PhoneRegistry::Outcome outcome,
                Console& console) {
    if (console.IsJson()) {
        Json::Value json;
        json["address"] = Util::CommonUtil::ToCapital(address);
        json[change] = outcome == PhoneRegistry::Outcome::kDone;
        console.Print(json);
    }
    return kDone;
}

std::string SettingText(const Phone& phone) {
    if (!phone.setting) {
        return "unknown";
    }
    return *phone.setting == "Y" ? "on" : "off";
}

}  // namespace

CommandGroup PhoneCommand::Group() {
    const std::string viaService =
        "The service is told as the phone would tell it, and stores the setting. Fails when the\n"
        "service does not run.\n";
    return {"phone",
            "the phones that are connected automatically",
            {{"add",
              "ADDRESS [--off]",
              "Registers a phone, so that it is connected",
              "Writes the phone's setting and its masked address among those that may switch the\n"
              "TV on. A phone that is there keeps its place.\n",
              {{"--off", "", "with automatic connection off"}},
              1,
              1,
              Add},
             {"remove", "ADDRESS", "Forgets a phone", "", {}, 1, 1, Remove},
             {"list",
              "",
              "Lists the phones: address, setting, whether it may switch the TV on",
              "A phone is connected when its setting is on and it may switch the TV on.\n",
              {},
              0,
              0,
              List},
             {"on",
              "ADDRESS",
              "Switches a phone's automatic connection on",
              viaService,
              {},
              1,
              1,
              [](const Arguments& arguments, Console& console) {
                  return SendSetting(arguments.positional[0], "Y", console);
              }},
             {"off",
              "ADDRESS",
              "Switches a phone's automatic connection off",
              viaService,
              {},
              1,
              1,
              [](const Arguments& arguments, Console& console) {
                  return SendSetting(arguments.positional[0], "N", console);
              }}}};
}

ExitCode PhoneCommand::Add(const Arguments& arguments, Console& console) {
    const std::string& address = arguments.positional[0];
    if (!Util::CommonUtil::IsValidAddress(address)) {
        return RefuseAddress(address, console);
    }
    PhoneRegistry registry;
    const auto outcome = registry.Add(address, !arguments.Has("--off"));
    return outcome == PhoneRegistry::Outcome::kFailed ? console.Fail(registry.Failure())
                                                      : Report("added", address, outcome, console);
}

ExitCode PhoneCommand::Remove(const Arguments& arguments, Console& console) {
    const std::string& address = arguments.positional[0];
    if (!Util::CommonUtil::IsValidAddress(address)) {
        return RefuseAddress(address, console);
    }
    PhoneRegistry registry;
    const auto outcome = registry.Remove(address);
    if (outcome == PhoneRegistry::Outcome::kFailed) {
        return console.Fail(registry.Failure());
    }
    return outcome == PhoneRegistry::Outcome::kNothingToDo
               ? console.Fail(address + " is not registered")
               : Report("removed", address, outcome, console);
}

ExitCode PhoneCommand::List(const Arguments& /*arguments*/, Console& console) {
    PhoneRegistry registry;
    const auto phones = registry.List();
    if (!phones) {
        return console.Fail(registry.Failure());
    }
    Json::Value json(Json::arrayValue);
    for (const Phone& phone : *phones) {
        Json::Value item;
        item["address"] = phone.address;
        item["setting"] = SettingText(phone);
        item["power"] = phone.hasPower;
        item["qualifies"] = phone.Qualifies();
        json.append(item);
        if (!console.IsJson()) {
            console.PrintLine(phone.address + "\t" + SettingText(phone) + "\t" +
                              (phone.hasPower ? "power" : "no-power") + "\t" +
                              (phone.Qualifies() ? "connects" : "does-not-connect"));
        }
    }
    if (console.IsJson()) {
        console.Print(json);
    }
    return kDone;
}

ExitCode PhoneCommand::SendSetting(const std::string& address, const char* value,
                                   Console& console) {
    if (!Util::CommonUtil::IsValidAddress(address)) {
        return RefuseAddress(address, console);
    }
    PhoneRegistry registry;
    const auto spelling = registry.SpellingOf(address);
    if (!spelling) {
        return console.Fail(registry.Failure());
    }
    Json::Value setting;
    setting["btMac"] = *spelling;
    setting["value"] = value;
    const std::string text = Util::JsonUtil::JsonToString(setting);
    const SignalResult result =
        SendToService(kMobileUpdateCommand, g_variant_new("(s)", text.c_str()));
    if (!result.isHeard) {
        return console.Fail(result.reason);
    }
    if (console.IsJson()) {
        console.Print(setting);
    }
    return kDone;
}

}  // namespace Tvctl
