// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/DeviceInventory.h"

#include "platform/bluetooth.h"
#include "platform/linux/bluez/Inspection.h"
#include "utility/BluetoothUtil.h"
#include "utility/JsonUtil.h"
#include "utility/OpenedDatabase.h"

namespace Tvctl {

namespace {

using Util::BluetoothUtil;
using Util::OpenedDatabase;

bool CollectDevice(bt_device_info_s* info, void* data) noexcept {
    DeviceEntry device;
    device.address = info->remote_address;
    device.name = info->remote_name == nullptr ? "" : info->remote_name;
    device.isConnected = info->is_connected;
    static_cast<std::vector<DeviceEntry>*>(data)->push_back(std::move(device));
    return true;
}

}  // namespace

std::string CheckDatabase() {
    const OpenedDatabase database;
    // A file that is not a database opens all the same, and has no tables.
    const bool isUsable = database && database->IsTableExist("bt_device_info");
    return isUsable ? "" : "the device database cannot be used; --verbose shows why";
}

std::vector<DeviceEntry> ListDevices(std::string& obstacle) {
    std::vector<DeviceEntry> devices;
    obstacle = Bluez::AwaitAdapter();
    if (obstacle.empty()) {
        obstacle = CheckDatabase();
    }
    if (!obstacle.empty()) {
        return devices;
    }
    bt_adapter_foreach_bonded_device(CollectDevice, &devices);
    for (DeviceEntry& device : devices) {
        device.type = BluetoothUtil::GetDeviceType(device.address);
        device.kind = BluetoothUtil::IsMobile(device.address)
                          ? "Mobile"
                          : BluetoothUtil::GetStringDeviceType(device.address);
        device.isUsed = BluetoothUtil::IsUseDevice(device.address);
    }
    return devices;
}

bool IsInDatabase(const std::string& address) {
    {
        const OpenedDatabase database;
        if (database &&
            (database->IsRecordExist(address) || database->isManufacturerRecordExist(address))) {
            return true;
        }
    }
    // Opens and closes the database itself.
    return BTDatabaseManager::getInstance()->getAbsVolConnectedHistory(address);
}

Json::Value ToJson(const DeviceEntry& device) {
    return Util::Object({{"address", device.address},
                         {"name", device.name},
                         {"type", device.type},
                         {"kind", device.kind},
                         {"connected", device.isConnected},
                         {"use", device.isUsed}});
}

Json::Value ToJsonInFull(const DeviceEntry& device) {
    Json::Value json = ToJson(device);
    int vendor = 0;
    int product = 0;
    bt_device_get_remote_vid_pid(device.address.c_str(), &vendor, &product);
    json["vendorId"] = vendor;
    json["productId"] = product;
    {
        const OpenedDatabase database;
        json["inDatabase"] = database && database->IsRecordExist(device.address);
        std::string data;
        int linkType = 0;
        if (database && database->getManufacturerData(device.address, data, linkType)) {
            json["manufacturerData"] = data;
            json["linkType"] = linkType;
        }
    }
    // Opens and closes the database itself.
    json["absoluteVolume"] =
        BTDatabaseManager::getInstance()->getAbsVolConnectedHistory(device.address);
    return json;
}

}  // namespace Tvctl
