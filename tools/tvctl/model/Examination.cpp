// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/DbusInterface.h"
#include "platform/device_power.h"
#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/bluez/Service.h"
#include "tools/tvctl/model/DeviceInventory.h"
#include "tools/tvctl/model/Diagnosis.h"
#include "tools/tvctl/model/PhoneRegistry.h"
#include "utility/CommonUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

ListedPhone LookAt(const std::string& address) {
    const Bluez::Mirror& mirror = Bluez::Service::Get().mirror;
    const Bluez::Device* device =
        mirror.FindDevice(mirror.DevicePath(mirror.PoweredAdapter(), address));
    return device == nullptr ? ListedPhone{address}
                             : ListedPhone{address, device->HoldsBond(), device->hasA2dpSource,
                                           device->isConnected};
}

void LookAtPhones(Examination& examination) {
    PhoneRegistry registry;
    const auto phones = registry.List();
    if (!phones) {
        examination.registryFault = registry.Failure();
        return;
    }
    examination.registered = phones->size();
    for (const Phone& phone : *phones) {
        if (phone.Qualifies()) {
            examination.phones.push_back(LookAt(Util::CommonUtil::ToCapital(phone.address)));
        }
    }
}

}  // namespace

Examination Examine() {
    Examination examination;
    examination.isServiceRunning = Platform::IsRunning(kServiceName);
    examination.isZemi = Util::SystemConfigUtil::IsZemiTV();
    examination.wakeUpReason = device_power_get_wakeup_reason();
    Util::VconfUtil::GetVconf(Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL,
                              examination.blocked);
    examination.bluetoothObstacle =
        examination.isServiceRunning ? AwaitBluetooth() : "the system bus does not answer";
    const Bluez::Mirror& mirror = Bluez::Service::Get().mirror;
    examination.adapter = mirror.PoweredAdapter();
    LookAtPhones(examination);
    examination.ambientMode = device_power_get_ambient_mode();
    examination.ambientType = device_power_get_ambient_type();
    const Bluez::Adapter* adapter = mirror.FindAdapter(examination.adapter);
    examination.hasSink = adapter != nullptr && adapter->hasA2dpSink;
    examination.isDiscovering = adapter != nullptr && adapter->isDiscovering;
    if (examination.isServiceRunning) {
        examination.isPlayerInstalled = Platform::IsInstalled(Conditions::kMediaPlayerAppId);
    }
    return examination;
}

}  // namespace Tvctl
