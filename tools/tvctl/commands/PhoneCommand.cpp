// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/DbusInterface.h"
#include "common/Parse.h"
#include "platform/linux/bluez/Inspection.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/PhoneRegistry.h"
#include "tools/tvctl/model/PhoneWatch.h"
#include "tools/tvctl/model/ServiceSignal.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

using Outcome = PhoneRegistry::Outcome;

constexpr int kLongestWatchS = 600;

ExitCode FailUnknown(const std::string& address, Console& console) {
    return console.Fail(address + " is not registered");
}

ExitCode Add(const Arguments& arguments, Console& console) {
    const std::string& address = arguments.positional[0];
    PhoneRegistry registry;
    const Outcome outcome = registry.Add(address, !arguments.Has("--off"));
    if (outcome == Outcome::kFailed) {
        return console.Fail(registry.Failure());
    }
    const std::string shown = Util::CommonUtil::ToCapital(address);
    Json::Value json = Util::Object(
        {{"address", shown}, {"added", outcome == Outcome::kDone}, {"bonded", Json::Value()}});
    std::vector<std::string> lines;
    // Without Bluetooth nobody knows.
    if (Bluez::AwaitAdapter().empty()) {
        const bool isBonded = Bluez::StateOf(shown).isBonded;
        json["bonded"] = isBonded;
        if (!isBonded) {
            lines.push_back(shown + " is registered, but not bonded; bluetoothctl pair " + shown);
        }
    }
    return console.Show(json, lines);
}

ExitCode Remove(const Arguments& arguments, Console& console) {
    const std::string& address = arguments.positional[0];
    PhoneRegistry registry;
    switch (registry.Remove(address)) {
        case Outcome::kDone:
            return console.Show(Util::Object(
                {{"address", Util::CommonUtil::ToCapital(address)}, {"removed", true}}));
        case Outcome::kNothingToDo:
            return FailUnknown(address, console);
        default:
            return console.Fail(registry.Failure());
    }
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
    std::vector<Row> rows;
    // Without Bluetooth nobody knows the names.
    const bool hasBluetooth = !phones->empty() && Bluez::AwaitAdapter().empty();
    for (const Phone& phone : *phones) {
        const std::string name =
            hasBluetooth ? Bluez::StateOf(Util::CommonUtil::ToCapital(phone.address)).name : "";
        const bool qualifies = phone.Qualifies();
        json.append(Util::Object({{"address", phone.address},
                                  {"name", name},
                                  {"setting", SettingText(phone)},
                                  {"power", phone.hasPower},
                                  {"qualifies", qualifies}}));
        rows.push_back({{phone.address, SettingText(phone), phone.hasPower ? "power" : "no-power",
                         qualifies ? "connects" : "does-not-connect", name},
                        qualifies ? Tone::kGood : Tone::kPlain});
    }
    return console.ShowRows(json, rows, {"ADDRESS", "SETTING", "POWER", "RESULT", "NAME"});
}

// As the phone itself would: through the service.
ExitCode SendSetting(const Arguments& arguments, bool on, Console& console) {
    const std::string& address = arguments.positional[0];
    PhoneRegistry registry;
    const auto phone = registry.Find(address);
    if (!phone) {
        return registry.Failure().empty() ? FailUnknown(address, console)
                                          : console.Fail(registry.Failure());
    }
    const std::string text = Util::JsonUtil::JsonToString(
        Util::Object({{"btMac", phone->address}, {"value", on ? "Y" : "N"}}));
    const std::string failure =
        SendToService(kMobileUpdateCommand, g_variant_new("(s)", text.c_str()));
    return failure.empty() ? console.Show(Util::Object(
                                 {{"address", phone->address}, {"setting", on ? "on" : "off"}}))
                           : console.Fail(failure);
}

ExitCode SwitchOn(const Arguments& arguments, Console& console) {
    return SendSetting(arguments, true, console);
}

ExitCode SwitchOff(const Arguments& arguments, Console& console) {
    return SendSetting(arguments, false, console);
}

std::string LineOf(const Sighting& sighting) {
    char text[80];
    g_snprintf(text, sizeof(text), "%.1f s\t%s\tfrom %s\t%d dBm", sighting.atMs / 1000.0,
               sighting.address.c_str(), sighting.sender.c_str(), sighting.rssi);
    return text + std::string(sighting.isRegistered ? "" : "\tnot registered") +
           (sighting.isBonded ? "" : "\tnot bonded");
}

Json::Value ToJson(const Sighting& sighting) {
    return Util::Object({{"atMs", sighting.atMs},
                         {"address", sighting.address},
                         {"sender", sighting.sender},
                         {"rssi", sighting.rssi},
                         {"registered", sighting.isRegistered},
                         {"bonded", sighting.isBonded}});
}

ExitCode ShowWatched(const PhoneWatch& watch, Console& console) {
    Json::Value json(Json::arrayValue);
    std::vector<std::string> lines;
    bool isAnyFound = false;
    for (const Phone& phone : watch.Phones()) {
        const std::string reason = watch.WhyNot(phone);
        isAnyFound |= reason.empty();
        json.append(Util::Object(
            {{"address", phone.address}, {"recognised", reason.empty()}, {"reason", reason}}));
        lines.push_back(phone.address + "\t" + (reason.empty() ? "recognised" : reason));
    }
    lines.push_back(std::to_string(watch.OthersHeard()) + " advertisements of other devices");
    console.Show(Util::Object({{"otherAdvertisements", watch.OthersHeard()}, {"phones", json}}),
                 lines);
    return isAnyFound ? kDone : console.Fail("no phone was heard that would be connected");
}

ExitCode Watch(const Arguments& arguments, Console& console) {
    const auto seconds = ParseInt(arguments.Option("--seconds").value_or("5"));
    if (!seconds || *seconds < 1 || *seconds > kLongestWatchS) {
        return console.Misuse("--seconds needs a number, 1 to 600");
    }
    PhoneRegistry registry;
    auto phones = registry.List();
    if (!phones) {
        return console.Fail(registry.Failure());
    }
    PhoneWatch watch(std::move(*phones));
    const std::string failure = watch.Listen(*seconds, [&console](const Sighting& sighting) {
        console.Show(ToJson(sighting), {LineOf(sighting)});
    });
    return failure.empty() ? ShowWatched(watch, console) : console.Fail(failure);
}

}  // namespace

CommandGroup PhoneCommands() {
    const std::string viaService =
        "Sends the service the signal that the phone would send; the service stores the setting.\n"
        "Fails if the phone is not registered, or the service does not run.\n";
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
         {"list", "", "Lists the phones: address, setting, may switch the TV on, result, name",
          List, "A phone is connected when its setting is on and it may switch the TV on.\n"},
         {"on", "ADDRESS", "Switches a phone's automatic connection on", SwitchOn, viaService},
         {"off", "ADDRESS", "Switches a phone's automatic connection off", SwitchOff, viaService},
         {"watch",
          "[--seconds N]",
          "Listens as the service does after a wake-up, and shows which phones it would recognise",
          Watch,
          "Shows each advertisement of a registered or bonded phone, and then of each registered\n"
          "phone whether it was recognised, or why not. Nothing is connected. Fails if no phone\n"
          "was heard that would be connected.\n",
          {{"--seconds", "N",
            "1 to 600; 5 when it is not given, as long as the service listens"}}}}};
}

}  // namespace Tvctl
