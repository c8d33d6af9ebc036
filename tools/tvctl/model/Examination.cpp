// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/DbusInterface.h"
#include "platform/device_power.h"
#include "platform/linux/application/ApplicationBus.h"
#include "platform/linux/bluez/Inspection.h"
#include "platform/linux/config/FeatureFile.h"
#include "platform/linux/config/PlatformState.h"
#include "tools/tvctl/model/Diagnosis.h"
#include "tools/tvctl/model/PhoneRegistry.h"
#include "utility/CommonUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

// Each key below memory/ is in the same file.
std::string StateFault() {
    const std::string key = Platform::StateKey("wakeup_reason");
    const Platform::ConfigLookup lookup = Platform::ConfigStore::Instance().Lookup(key);
    return IsFailure(lookup.status) ? Platform::ConfigStore::Instance().LastFailure(key) : "";
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
            const std::string address = Util::CommonUtil::ToCapital(phone.address);
            const Bluez::DeviceState state = Bluez::StateOf(address);
            examination.phones.push_back(
                {address, state.isBonded, state.hasA2dpSource, state.isConnected});
        }
    }
}

}  // namespace

Examination Examine() {
    Examination examination;
    examination.isServiceRunning = Platform::IsRunning(kServiceName);
    examination.isZemi = Util::SystemConfigUtil::IsZemiTV();
    examination.featuresFault = Platform::FeatureFile::Instance().LastFailure();
    examination.stateFault = StateFault();
    examination.wakeUpReason = device_power_get_wakeup_reason();
    Util::VconfUtil::GetVconf(Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL,
                              examination.blocked);
    examination.bluetoothObstacle =
        examination.isServiceRunning ? Bluez::AwaitAdapter() : "the system bus does not answer";
    const Bluez::AdapterState adapter = Bluez::PoweredAdapter();
    examination.adapter = adapter.path;
    examination.hasSink = adapter.hasA2dpSink;
    examination.isDiscovering = adapter.isDiscovering;
    LookAtPhones(examination);
    examination.ambientMode = device_power_get_ambient_mode();
    examination.ambientType = device_power_get_ambient_type();
    if (examination.isServiceRunning) {
        examination.isPlayerInstalled =
            Platform::IsInstalled(Conditions::kMediaPlayerAppId).value_or(false);
    }
    return examination;
}

}  // namespace Tvctl
