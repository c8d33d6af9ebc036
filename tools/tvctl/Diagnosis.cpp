// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/Diagnosis.h"

#include <optional>

#include "autoconnect/src/DbusInterface.h"
#include "platform/device_power.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/BluezService.h"
#include "tools/tvctl/DeviceInventory.h"
#include "tools/tvctl/PhoneRegistry.h"
#include "utility/CommonUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

constexpr const char* kMediaPlayer = "com.velmora.tv.bmp";
constexpr int kRefusedReasons[] = {41, 94, 95};

Finding Check(const char* condition, bool holds, const std::string& found, const char* remedy) {
    return {condition, holds, found, holds ? "" : remedy};
}

Finding CheckProduct() {
    const bool isZemi = Util::SystemConfigUtil::IsZemiTV();
    return Check(
        "the product is a rotating TV", isZemi,
        isZemi ? "display_rotator_supported is true" : "display_rotator_supported is not true",
        "tvctl feature set com.velmora/featureconf/display_rotator_supported true");
}

Finding CheckReason() {
    const int reason = device_power_get_wakeup_reason();
    bool isRefused = false;
    for (const int refused : kRefusedReasons) {
        isRefused = isRefused || reason == refused;
    }
    return Check("the wake-up reason lets phones be connected", !isRefused,
                 "the reason is " + std::to_string(reason), "tvctl power set wakeup-reason 0");
}

Finding CheckBlock() {
    int blocked = 0;
    Util::VconfUtil::GetVconf(Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL, blocked);
    return Check("no key forbids it", blocked != 1,
                 Util::VconfUtil::keys[Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL] +
                     " is " + std::to_string(blocked),
                 "tvctl conf set memory/bluetooth_nirvoui/musictvfail 0");
}

Finding CheckAmbient() {
    const int mode = device_power_get_ambient_mode();
    const int type = device_power_get_ambient_type();
    return Check("the ambient picture shows", mode == 1 && (type & 1) != 0,
                 "ambient mode " + std::to_string(mode) + ", type " + std::to_string(type),
                 "tvctl power set ambient-mode 1; tvctl power set ambient-type 1");
}

// The phones that the service would list; the finding says how many.
Finding CheckPhones(std::vector<std::string>& qualifying) {
    PhoneRegistry registry;
    const auto phones = registry.List();
    if (!phones) {
        return Check("a phone is registered", false, registry.Failure(),
                     "tvctl conf list shows the keys; mend or unset the broken one");
    }
    for (const Phone& phone : *phones) {
        if (phone.Qualifies()) {
            qualifying.push_back(Util::CommonUtil::ToCapital(phone.address));
        }
    }
    return Check("a phone is registered", !qualifying.empty(),
                 std::to_string(qualifying.size()) + " of " + std::to_string(phones->size()) +
                     " registered phones qualify",
                 "tvctl phone add ADDRESS; tvctl phone list shows what each lacks");
}

Finding CheckService(std::optional<bool> isRunning) {
    return Check("the service runs", isRunning.value_or(false),
                 !isRunning   ? "the system bus does not answer"
                 : *isRunning ? std::string(kServiceName) + " is owned"
                              : std::string(kServiceName) + " has no owner",
                 isRunning ? "start bt-autoconnect" : "start the system bus");
}

Finding CheckAdapter(const std::string& obstacle) {
    const std::string adapter = Bluez::Service::Get().mirror.PoweredAdapter();
    return Check("Bluetooth is on", obstacle.empty(), obstacle.empty() ? adapter : obstacle,
                 "start bluetoothd; bluetoothctl power on");
}

Finding CheckSink() {
    const Bluez::Mirror& mirror = Bluez::Service::Get().mirror;
    const Bluez::Adapter* adapter = mirror.FindAdapter(mirror.PoweredAdapter());
    const bool hasSink = adapter != nullptr && adapter->hasA2dpSink;
    return Check("something renders the music", hasSink,
                 hasSink ? "an A2DP sink is registered" : "no A2DP sink is registered",
                 "start PipeWire, PulseAudio or bluez-alsa with Bluetooth");
}

Finding CheckBond(const std::string& address) {
    const Bluez::Mirror& mirror = Bluez::Service::Get().mirror;
    const Bluez::Device* device =
        mirror.FindDevice(mirror.DevicePath(mirror.PoweredAdapter(), address));
    Finding finding;
    finding.condition = "phone " + address + " can be connected";
    if (device == nullptr || !device->HoldsBond()) {
        finding.found = "it is not bonded";
        finding.remedy = "bluetoothctl pair " + address;
    } else if (!device->hasA2dpSource) {
        finding.found = "it is bonded, and offers no A2DP source";
        finding.remedy = "bluetoothctl remove " + address + ", and pair it over BR/EDR";
    } else {
        finding.holds = true;
        finding.found = device->isConnected ? "it is bonded, and connected now" : "it is bonded";
    }
    return finding;
}

Finding CheckPlayer() {
    const bool isInstalled = Platform::IsInstalled(kMediaPlayer).value_or(false);
    return Check("the media player is installed", isInstalled,
                 std::string(kMediaPlayer) +
                     (isInstalled ? " can be started" : " cannot be started by the bus"),
                 "install its D-Bus service file");
}

}  // namespace

std::vector<Finding> Diagnose() {
    std::vector<std::string> phones;
    const std::optional<bool> isRunning = Platform::IsRunning(kServiceName);
    std::vector<Finding> findings = {CheckService(isRunning), CheckProduct(), CheckReason(),
                                     CheckBlock()};
    const std::string obstacle = isRunning ? AwaitBluetooth() : "the system bus does not answer";
    findings.push_back(CheckAdapter(obstacle));
    findings.push_back(CheckPhones(phones));
    findings.push_back(CheckAmbient());
    if (obstacle.empty()) {
        for (const std::string& phone : phones) {
            findings.push_back(CheckBond(phone));
        }
        findings.push_back(CheckSink());
    }
    if (isRunning) {
        findings.push_back(CheckPlayer());
    }
    return findings;
}

}  // namespace Tvctl
