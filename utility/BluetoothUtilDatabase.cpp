// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/AutoConnectDbg.h"
#include "common/DeviceInfo.h"
#include "utility/BluetoothUtil.h"
#include "utility/BtDeviceTypes.h"
#include "utility/CommonUtil.h"
#include "utility/OpenedDatabase.h"

// What the device database says of a device.

namespace Util {

namespace {

// The other values of a new row, when only the flag of the device is known.
constexpr int kNewProfileType = 1;
constexpr auto kNewDeviceType = static_cast<bt_devices_type>(1);

}  // namespace

bool BluetoothUtil::GetDeviceName(const std::string& address, std::string& name) {
    DeviceInfoPtr info;
    const int result = bt_adapter_get_bonded_device_info(address.c_str(), Out(info));
    if (result == BT_ERROR_NONE) {
        if (!info) {
            BTLOG_ERROR("%s", "dev_info == NULL");
            return false;
        }
        if (info->remote_name == nullptr) {
            BTLOG_ERROR("device_info->remote_address == NULL");
            return false;
        }
        name = info->remote_name;
        return true;
    }
    BTLOG_ERROR("bt_audio_get_connected_info failed : %s", CommonUtil::ERR_STR(result));
    const OpenedDatabase database;
    if (!database) {
        BTLOG_WARN("fail to open DB.");
        return false;
    }
    if (!database->IsRecordExist(address)) {
        BTLOG_WARN("data is no in db");
        return false;
    }
    database->GetDataFromDB(address, BT_DB_REMOTE_NAME, name);
    BTLOG_INFO("Device name is  : %s", name.c_str());
    return true;
}

bool BluetoothUtil::IsUseDevice(const std::string& address) {
    const OpenedDatabase database;
    if (!database) {
        BTLOG_WARN("fail to open DB.");
        return false;
    }
    if (!database->IsRecordExist(address)) {
        BTLOG_WARN("data is no in db");
        return true;
    }
    int use = 0;
    database->GetDataFromDB(address, BT_DB_USE_TYPE, use);
    BTLOG_INFO("isUseDevice : %d", use);
    return use != 0;
}

bool BluetoothUtil::SetUseDontuse(const std::string& name, const std::string& address, bool use) {
    if (!IsVelmoraAudio(name)) {
        BTLOG_INFO("Not velmora audio");
        return false;
    }
    const OpenedDatabase database;
    if (!database) {
        BTLOG_WARN("fail to open DB.");
        return false;
    }
    const int flag = use ? 1 : 0;
    if (database->IsRecordExist(address)) {
        BTLOG_INFO("Set %s as %s", address.c_str(), use ? "Use" : "Dont use");
        database->UpdateDataOnDB(address, BT_DB_USE_TYPE, flag);
    } else {
        BTLOG_WARN("data is no in db");
        database->InsertData(address, name, static_cast<usetype>(flag),
                             static_cast<bt_connection_status>(flag), kNewProfileType,
                             kNewDeviceType, "", "", 0, 0);
    }
    return true;
}

void BluetoothUtil::DeleteDeviceFromDB(const std::string& address) {
    if (address.empty()) {
        BTLOG_ERROR("Wrong Input");
        return;
    }
    const OpenedDatabase database;
    if (!database) {
        BTLOG_ERROR("fail to open database");
        return;
    }
    if (database->DeleteRecord(address)) {
        BTLOG_INFO("Record deleted = %s", address.c_str());
    }
    if (database->DeleteVolInfo(address)) {
        BTLOG_INFO("Record deleted = %s", address.c_str());
    }
    if (database->deleteManufacturerRecord(address)) {
        BTLOG_INFO("Record deleted = %s", address.c_str());
    }
    database->printAllrecord();
}

}  // namespace Util
