// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/DeviceCommand.h"

#include <optional>

#include "tools/tvctl/model/DeviceInventory.h"
#include "utility/BTDatabaseManager.h"
#include "utility/BluetoothUtil.h"
#include "utility/CommonUtil.h"

namespace Tvctl {

namespace {

using Util::BluetoothUtil;

// The address of the command line as the database and bluetoothd spell it; empty when it is none.
std::string AddressOf(const Arguments& arguments) {
    const std::string& address = arguments.positional[0];
    return Util::CommonUtil::IsValidAddress(address) ? Util::CommonUtil::ToCapital(address) : "";
}

ExitCode RefuseAddress(const Arguments& arguments, Console& console) {
    return console.Misuse("'" + arguments.positional[0] +
                          "' is not a Bluetooth address (XX:XX:XX:XX:XX:XX)");
}

// Whatever keeps Bluetooth or the database from answering; empty when both do.
std::string FindObstacle() {
    const std::string obstacle = AwaitBluetooth();
    return obstacle.empty() ? CheckDatabase() : obstacle;
}

ExitCode Report(const std::string& address, const char* what, bool value, Console& console) {
    if (console.IsJson()) {
        Json::Value json;
        json["address"] = address;
        json[what] = value;
        console.Print(json);
    }
    return kDone;
}

// Runs `action` on the device that the command line names, if it is bonded and the database can be
// used.
template <typename Action>
ExitCode WithDevice(const Arguments& arguments, Console& console, Action action) {
    const std::string address = AddressOf(arguments);
    if (address.empty()) {
        return RefuseAddress(arguments, console);
    }
    const std::string obstacle = FindObstacle();
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    const std::optional<DeviceEntry> device = FindDevice(address);
    if (!device) {
        return console.Fail(address + " is not bonded with this adapter");
    }
    return action(*device);
}

}  // namespace

CommandGroup DeviceCommand::Group() {
    return {"device",
            "the bonded devices and the device database",
            {{"list",
              "",
              "Lists the bonded devices: address, kind, link, whether it is to be used, name",
              "",
              {},
              0,
              0,
              List},
             {"show", "ADDRESS", "Shows all that is known of a device", "", {}, 1, 1, Show},
             {"type", "ADDRESS", "Tells what kind of device it is", "", {}, 1, 1, Type},
             {"use",
              "ADDRESS",
              "Flags an audio device of the TV's maker to be used",
              "",
              {},
              1,
              1,
              [](const Arguments& arguments, Console& console) {
                  return SetUse(arguments, true, console);
              }},
             {"dont-use",
              "ADDRESS",
              "Flags an audio device of the TV's maker not to be used",
              "",
              {},
              1,
              1,
              [](const Arguments& arguments, Console& console) {
                  return SetUse(arguments, false, console);
              }},
             {"forget",
              "ADDRESS",
              "Removes a device from the database; its bond stays",
              "",
              {},
              1,
              1,
              Forget},
             {"history",
              "ADDRESS [--record]",
              "Tells whether a device ever connected with absolute volume",
              "",
              {{"--record", "", "note that it did"}},
              1,
              1,
              History}}};
}

ExitCode DeviceCommand::List(const Arguments& /*arguments*/, Console& console) {
    const std::string obstacle = FindObstacle();
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    Json::Value json(Json::arrayValue);
    for (const DeviceEntry& device : ListDevices()) {
        json.append(ToJson(device));
        if (!console.IsJson()) {
            console.PrintLine(device.address + "\t" + std::to_string(device.type) + " " +
                              device.kind + "\t" + (device.isConnected ? "connected" : "away") +
                              "\t" + (device.isUsed ? "use" : "dont-use") + "\t" + device.name);
        }
    }
    if (console.IsJson()) {
        console.Print(json);
    }
    return kDone;
}

ExitCode DeviceCommand::Show(const Arguments& arguments, Console& console) {
    return WithDevice(arguments, console, [&console](const DeviceEntry& device) {
        const Json::Value json = ToJsonInFull(device);
        if (console.IsJson()) {
            console.Print(json);
            return kDone;
        }
        for (const std::string& member : json.getMemberNames()) {
            console.PrintLine(member + "\t" + json[member].asString());
        }
        return kDone;
    });
}

ExitCode DeviceCommand::Type(const Arguments& arguments, Console& console) {
    return WithDevice(arguments, console, [&console](const DeviceEntry& device) {
        Json::Value json;
        json["address"] = device.address;
        json["type"] = device.type;
        json["kind"] = device.kind;
        console.Print(json, device.kind);
        return kDone;
    });
}

ExitCode DeviceCommand::SetUse(const Arguments& arguments, bool use, Console& console) {
    return WithDevice(arguments, console, [use, &console](const DeviceEntry& device) {
        if (!BluetoothUtil::SetUseDontuse(device.name, device.address, use)) {
            return console.Fail("'" + device.name + "' is no audio device of the TV's maker");
        }
        if (BluetoothUtil::IsUseDevice(device.address) != use) {
            return console.Fail("the device database did not take the change");
        }
        return Report(device.address, "use", use, console);
    });
}

ExitCode DeviceCommand::Forget(const Arguments& arguments, Console& console) {
    const std::string address = AddressOf(arguments);
    if (address.empty()) {
        return RefuseAddress(arguments, console);
    }
    const std::string obstacle = CheckDatabase();
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    if (!IsInDatabase(address)) {
        return console.Fail("the device database has nothing about " + address);
    }
    BluetoothUtil::DeleteDeviceFromDB(address);
    if (IsInDatabase(address)) {
        return console.Fail("the device database did not take the change");
    }
    return Report(address, "forgotten", true, console);
}

ExitCode DeviceCommand::History(const Arguments& arguments, Console& console) {
    const std::string address = AddressOf(arguments);
    if (address.empty()) {
        return RefuseAddress(arguments, console);
    }
    const std::string obstacle = CheckDatabase();
    if (!obstacle.empty()) {
        return console.Fail(obstacle);
    }
    BTDatabaseManager* database = BTDatabaseManager::getInstance();
    bool hasHistory = database->getAbsVolConnectedHistory(address);
    if (arguments.Has("--record") && !hasHistory) {
        database->setAbsVolConnectedHistory(address);
        hasHistory = database->getAbsVolConnectedHistory(address);
        if (!hasHistory) {
            return console.Fail("the device database did not take the change");
        }
    }
    Json::Value json;
    json["address"] = address;
    json["absoluteVolume"] = hasHistory;
    console.Print(json, hasHistory ? "yes" : "no");
    return kDone;
}

}  // namespace Tvctl
