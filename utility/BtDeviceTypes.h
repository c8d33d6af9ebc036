// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

// What the device database stores about a device. The numbers are the file's format, which the
// package's other programs share, so they never change. A file may hold other numbers than these,
// as other programs write it too.

// What kind of device it is.
enum bt_devices_type : int {
    BT_DEVICE_TYPE_UNKNOWN = 0,  // or not supported
    BT_DEVICE_TYPE_KEYBOARD = 1,
    BT_DEVICE_TYPE_MOUSE = 2,
    BT_DEVICE_TYPE_GAMEPAD = 3,
    BT_DEVICE_TYPE_REMOTE = 4,           // the maker's TV remote
    BT_DEVICE_TYPE_HEADPHONE = 5,        // headphones and speakers of other makers
    BT_DEVICE_TYPE_VELMORA_SPK_OLD = 6,  // the maker's speaker, old type
    BT_DEVICE_TYPE_VELMORA_SPK_NEW = 7   // the maker's speaker, new type
};

// Whether the TV uses the device.
enum usetype : int { BT_DEVICE_DONT_USE = 0, BT_DEVICE_USE = 1 };

// The values are set and interpreted by the package's other programs.
enum bt_connection_status : int {};

// The columns of the device table.
enum bt_db_fields_e : int {
    BT_DB_REMOTE_ADDRESS = 0,
    BT_DB_REMOTE_NAME = 1,
    BT_DB_USE_TYPE = 2,
    BT_DB_BT_STATUS = 3,
    BT_DB_PROFILE_TYPE = 4,
    BT_DB_DEVICE_TYPE = 5,
    BT_DB_SERVICE_NAME = 6,
    BT_DB_PROVIDER_NAME = 7,  // holds the model name
    BT_DB_VID = 8,
    BT_DB_PID = 9
};

// One row of the device table.
// NOLINTNEXTLINE(readability-identifier-naming): the name is fixed
struct bt_db_dev_info_s {
    std::string remote_address;
    std::string remote_name;
    usetype use_type = BT_DEVICE_DONT_USE;
    bt_connection_status bt_status = {};
    int profile_type = 0;
    bt_devices_type device_type = BT_DEVICE_TYPE_UNKNOWN;
    std::string service_name;
    std::string provider_name;
    int vid = 0;
    int pid = 0;
};
