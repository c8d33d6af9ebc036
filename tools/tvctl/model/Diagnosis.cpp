// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/Diagnosis.h"

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/DbusInterface.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

Finding Check(const char* condition, bool holds, const std::string& found, const char* remedy) {
    return {condition, holds, found, holds ? "" : remedy};
}

Finding CheckService(std::optional<bool> isRunning) {
    return Check("the service runs", isRunning.value_or(false),
                 !isRunning   ? "the system bus does not answer"
                 : *isRunning ? std::string(kServiceName) + " is owned"
                              : std::string(kServiceName) + " has no owner",
                 isRunning ? "start bt-autoconnect" : "start the system bus");
}

Finding CheckProduct(bool isZemi) {
    return Check(
        "the product is a rotating TV", isZemi,
        isZemi ? "display_rotator_supported is true" : "display_rotator_supported is not true",
        "tvctl feature set com.velmora/featureconf/display_rotator_supported true");
}

Finding CheckReason(int reason) {
    return Check("the wake-up reason lets phones be connected",
                 Conditions::IsWakeUpReasonAccepted(reason),
                 "the reason is " + std::to_string(reason), "tvctl power set wakeup-reason 0");
}

Finding CheckBlock(int blocked) {
    return Check("no key forbids it", !Conditions::IsBlocked(blocked),
                 Util::VconfUtil::keys[Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL] +
                     " is " + std::to_string(blocked),
                 "tvctl conf set memory/bluetooth_nirvoui/musictvfail 0");
}

Finding CheckAdapter(const Examination& examination) {
    const std::string& obstacle = examination.bluetoothObstacle;
    return Check("Bluetooth is on", obstacle.empty(),
                 obstacle.empty() ? examination.adapter : obstacle,
                 "start bluetoothd; bluetoothctl power on");
}

Finding CheckPhones(const Examination& examination) {
    if (!examination.registryFault.empty()) {
        return Check("a phone is registered", false, examination.registryFault,
                     "tvctl conf list shows the keys; mend or unset the broken one");
    }
    return Check("a phone is registered", !examination.phones.empty(),
                 std::to_string(examination.phones.size()) + " of " +
                     std::to_string(examination.registered) + " registered phones qualify",
                 "tvctl phone add ADDRESS; tvctl phone list shows what each lacks");
}

Finding CheckAmbient(int mode, int type) {
    return Check("the ambient picture shows",
                 Conditions::IsAmbientModeAccepted(mode) && Conditions::IsAmbientTypeAccepted(type),
                 "ambient mode " + std::to_string(mode) + ", type " + std::to_string(type),
                 "tvctl power set ambient-mode 1; tvctl power set ambient-type 1");
}

Finding CheckPhone(const ListedPhone& phone) {
    Finding finding;
    finding.condition = "phone " + phone.address + " can be connected";
    if (!phone.isBonded) {
        finding.found = "it is not bonded";
        finding.remedy = "bluetoothctl pair " + phone.address;
    } else if (!phone.hasA2dpSource) {
        finding.found = "it is bonded, and offers no A2DP source";
        finding.remedy = "bluetoothctl remove " + phone.address + ", and pair it over BR/EDR";
    } else {
        finding.holds = true;
        finding.found = phone.isConnected ? "it is bonded, and connected now" : "it is bonded";
    }
    return finding;
}

Finding CheckSink(bool hasSink) {
    return Check("something renders the music", hasSink,
                 hasSink ? "an A2DP sink is registered" : "no A2DP sink is registered",
                 "start PipeWire, PulseAudio or bluez-alsa with Bluetooth");
}

// The service's own scan looks the same from here.
Finding CheckDiscovery(bool isDiscovering) {
    return Check("no other program discovers devices", !isDiscovering,
                 isDiscovering ? "one does; within 5 s of a wake-up it may be the service"
                               : "the adapter is quiet",
                 "close Bluetooth settings; 'scan off' in bluetoothctl");
}

Finding CheckPlayer(bool isInstalled) {
    return Check("the media player is installed", isInstalled,
                 std::string(Conditions::kMediaPlayerAppId) +
                     (isInstalled ? " can be started" : " cannot be started by the bus"),
                 "install its D-Bus service file");
}

}  // namespace

std::vector<Finding> Diagnose(const Examination& examination) {
    std::vector<Finding> findings = {
        CheckService(examination.isServiceRunning),
        CheckProduct(examination.isZemi),
        CheckReason(examination.wakeUpReason),
        CheckBlock(examination.blocked),
        CheckAdapter(examination),
        CheckPhones(examination),
        CheckAmbient(examination.ambientMode, examination.ambientType)};
    if (examination.bluetoothObstacle.empty()) {
        for (const ListedPhone& phone : examination.phones) {
            findings.push_back(CheckPhone(phone));
        }
        findings.push_back(CheckSink(examination.hasSink));
        findings.push_back(CheckDiscovery(examination.isDiscovering));
    }
    if (examination.isServiceRunning) {
        findings.push_back(CheckPlayer(examination.isPlayerInstalled.value_or(false)));
    }
    return findings;
}

}  // namespace Tvctl
