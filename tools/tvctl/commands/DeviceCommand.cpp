// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/DeviceInventory.h"
#include "utility/BTDatabaseManager.h"
#include "utility/BluetoothUtil.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

using Util::BluetoothUtil;

constexpr char kNotStored[] = "could not store the change";

// The address of the command line as the database and bluetoothd spell it.
std::string AddressOf(const Arguments& arguments) {
    return Util::CommonUtil::ToCapital(arguments.positional[0]);
}

ExitCode List(const Arguments& /*arguments*/, Console& console) {
    std::string obstacle;
    const auto devices = ListDevices(obstacle);
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    Json::Value json(Json::arrayValue);
    std::vector<Row> rows;
    for (const DeviceEntry& device : devices) {
        json.append(ToJson(device));
        rows.push_back({{device.address, std::to_string(device.type) + " " + device.kind,
                         device.isConnected ? "connected" : "away",
                         device.isUsed ? "use" : "dont-use", device.name},
                        device.isConnected ? Tone::kGood : Tone::kPlain});
    }
    return console.ShowRows(json, rows, {"ADDRESS", "KIND", "LINK", "USE", "NAME"});
}

// Runs `action` on the device that the command line names, if it is bonded and the database can be
// used.
template <typename Action>
ExitCode WithDevice(const Arguments& arguments, Console& console, Action action) {
    std::string obstacle;
    for (const DeviceEntry& device : ListDevices(obstacle)) {
        if (device.address == AddressOf(arguments)) {
            return action(device);
        }
    }
    return console.Fail(obstacle.empty() ? AddressOf(arguments) + " is not bonded with this adapter"
                                         : obstacle);
}

ExitCode Show(const Arguments& arguments, Console& console) {
    return WithDevice(arguments, console, [&console](const DeviceEntry& device) {
        const Json::Value json = ToJsonInFull(device);
        std::vector<std::string> lines;
        for (const std::string& member : json.getMemberNames()) {
            lines.push_back(member + "\t" + json[member].asString());
        }
        return console.Show(json, lines);
    });
}

ExitCode Type(const Arguments& arguments, Console& console) {
    return WithDevice(arguments, console, [&console](const DeviceEntry& device) {
        const Json::Value json = Util::Object(
            {{"address", device.address}, {"type", device.type}, {"kind", device.kind}});
        return console.Show(json, {device.kind});
    });
}

ExitCode SetUse(const Arguments& arguments, bool use, Console& console) {
    return WithDevice(arguments, console, [use, &console](const DeviceEntry& device) {
        if (!BluetoothUtil::SetUseDontuse(device.name, device.address, use)) {
            return console.Fail("'" + device.name + "' is not an audio device of the TV's maker");
        }
        return BluetoothUtil::IsUseDevice(device.address) == use
                   ? console.Show(Util::Object({{"address", device.address}, {"use", use}}))
                   : console.Fail(kNotStored);
    });
}

ExitCode Use(const Arguments& arguments, Console& console) {
    return SetUse(arguments, true, console);
}

ExitCode DontUse(const Arguments& arguments, Console& console) {
    return SetUse(arguments, false, console);
}

ExitCode Forget(const Arguments& arguments, Console& console) {
    const std::string obstacle = CheckDatabase();
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    const std::string address = AddressOf(arguments);
    if (!IsInDatabase(address)) {
        return console.Fail("the device database has nothing about " + address);
    }
    BluetoothUtil::DeleteDeviceFromDB(address);
    return IsInDatabase(address)
               ? console.Fail(kNotStored)
               : console.Show(Util::Object({{"address", address}, {"forgotten", true}}));
}

ExitCode History(const Arguments& arguments, Console& console) {
    const std::string obstacle = CheckDatabase();
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    const std::string address = AddressOf(arguments);
    BTDatabaseManager* database = BTDatabaseManager::getInstance();
    bool hasHistory = database->getAbsVolConnectedHistory(address);
    if (arguments.Has("--record") && !hasHistory) {
        database->setAbsVolConnectedHistory(address);
        hasHistory = database->getAbsVolConnectedHistory(address);
        if (!hasHistory) {
            return console.Fail(kNotStored);
        }
    }
    return console.Show(Util::Object({{"address", address}, {"absoluteVolume", hasHistory}}),
                        {hasHistory ? "yes" : "no"});
}

}  // namespace

CommandGroup DeviceCommands() {
    return {
        "device",
        "the bonded devices and the device database",
        {{"list", "",
          "Lists the bonded devices: address, kind, link, whether it is to be used, name", List},
         {"show", "ADDRESS", "Shows all that is known about a device", Show},
         {"type", "ADDRESS", "Shows what kind of device it is", Type},
         {"use", "ADDRESS", "Marks an audio device of the TV's maker as to be used", Use},
         {"dont-use", "ADDRESS", "Marks an audio device of the TV's maker as not to be used",
          DontUse},
         {"forget", "ADDRESS", "Removes a device from the database; it stays bonded", Forget},
         {"history",
          "ADDRESS [--record]",
          "Shows whether a device ever connected with absolute volume",
          History,
          "",
          {{"--record", "", "record that it did"}}}}};
}

}  // namespace Tvctl
