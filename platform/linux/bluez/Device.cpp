// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Device.h"

#include "platform/linux/bluez/Names.h"
#include "platform/linux/bluez/Properties.h"

namespace Bluez {

namespace {

void ReadKept(const char* name, GVariant* value, Device& device) {
    if (Is(name, "Connected")) {
        Read(value, device.isConnected);
    } else if (Is(name, "Bonded")) {
        Read(value, device.isBonded);
    } else if (Is(name, "Paired")) {
        Read(value, device.isPaired);
    } else if (Is(name, "Name")) {
        Read(value, device.name);
    } else if (Is(name, "Address")) {
        Read(value, device.address);
    } else if (Is(name, "Class")) {
        Read(value, device.deviceClass);
    } else if (Is(name, "Modalias")) {
        Read(value, device.modalias);
    } else if (Is(name, "UUIDs")) {
        device.hasHid = Names(value, kHidUuid) || Names(value, kHidOverLeUuid);
        device.hasA2dpSource = Names(value, kA2dpSourceUuid);
    }
}

// Whether the property is one of an advertisement: changes of these come from an advertisement. The
// values that a device keeps from earlier ones are not told again.
bool ReadHeard(const char* name, GVariant* value, Heard& heard) {
    if (Is(name, "RSSI")) {
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_INT16)) {
            heard.rssi = g_variant_get_int16(value);
        }
    } else if (Is(name, "ManufacturerData")) {
        if (g_variant_is_of_type(value, G_VARIANT_TYPE("a{qv}"))) {
            heard.manufacturerData.reset(g_variant_ref(value));
        }
    } else if (!Is(name, "ServiceData") && !Is(name, "AdvertisingFlags")) {
        return false;
    }
    heard.isAny = true;
    return true;
}

}  // namespace

void ReadDevice(GVariant* values, Device& device, Heard& heard) {
    ForEachProperty(values, [&](const char* name, GVariant* value) {
        if (!ReadHeard(name, value, heard)) {
            ReadKept(name, value, device);
        }
    });
}

}  // namespace Bluez
