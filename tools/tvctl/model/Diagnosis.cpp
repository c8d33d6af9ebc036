// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/Diagnosis.h"

#include <cerrno>
#include <cstring>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/DbusInterface.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

Finding Check(const char* condition, bool holds, const std::string& found, const char* remedy) {
    return {condition, holds, found, holds ? "" : remedy};
}

// The same of something that cannot be looked at when there is a `fault`.
Finding CheckReadable(const std::string& fault, const char* condition, bool holds,
                      const std::string& found, const char* remedy) {
    if (fault.empty()) {
        return Check(condition, holds, found, remedy);
    }
    const bool isForbidden = fault.find(std::strerror(EACCES)) != std::string::npos;
    return Check(condition, false, "cannot be read: " + fault,
                 isForbidden ? "be root, or a member of the group bt-autoconnect" : remedy);
}

Finding CheckService(std::optional<bool> isRunning) {
    return Check("the service runs", isRunning.value_or(false),
                 !isRunning   ? "the system bus does not answer"
                 : *isRunning ? std::string(kServiceName) + " is owned"
                              : std::string(kServiceName) + " has no owner",
                 isRunning ? "start bt-autoconnect" : "start the system bus");
}

Finding CheckPhones(const Examination& examination) {
    const std::string& fault = examination.registryFault;
    return CheckReadable(fault, "a phone is registered", !examination.phones.empty(),
                         std::to_string(examination.phones.size()) + " of " +
                             std::to_string(examination.registered) + " registered phones qualify",
                         fault.empty()
                             ? "tvctl phone add ADDRESS; tvctl phone list shows what each lacks"
                             : "tvctl conf list shows the keys; repair or unset the broken one");
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

// What the TV and Bluetooth must be like, whichever phone it is.
std::vector<Finding> CheckSurroundings(const Examination& seen) {
    const std::string& obstacle = seen.bluetoothObstacle;
    return {
        CheckService(seen.isServiceRunning),
        CheckReadable(seen.featuresFault, "the product is a rotating TV", seen.isZemi,
                      seen.isZemi ? "display_rotator_supported is true"
                                  : "display_rotator_supported is not true",
                      "tvctl feature set display_rotator_supported true"),
        CheckReadable(seen.stateFault, "the wake-up reason lets phones be connected",
                      Conditions::IsWakeUpReasonAccepted(seen.wakeUpReason),
                      "the reason is " + std::to_string(seen.wakeUpReason),
                      "tvctl power set wakeup-reason 0"),
        CheckReadable(seen.stateFault, "no key forbids it", !Conditions::IsBlocked(seen.blocked),
                      Util::VconfUtil::keys[Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL] +
                          " is " + std::to_string(seen.blocked),
                      "tvctl conf set memory/bluetooth_nirvoui/musictvfail 0"),
        Check("Bluetooth is on", obstacle.empty(), obstacle.empty() ? seen.adapter : obstacle,
              "start bluetoothd; bluetoothctl power on"),
        CheckPhones(seen),
        CheckReadable(seen.stateFault, "the ambient picture shows",
                      Conditions::IsAmbientModeAccepted(seen.ambientMode) &&
                          Conditions::IsAmbientTypeAccepted(seen.ambientType),
                      "ambient mode " + std::to_string(seen.ambientMode) + ", type " +
                          std::to_string(seen.ambientType),
                      "tvctl power set ambient-mode 1; tvctl power set ambient-type 1")};
}

void CheckAudio(const Examination& seen, std::vector<Finding>& findings) {
    for (const ListedPhone& phone : seen.phones) {
        findings.push_back(CheckPhone(phone));
    }
    findings.push_back(
        Check("something renders the music", seen.hasSink,
              seen.hasSink ? "an A2DP sink is registered" : "no A2DP sink is registered",
              "start bluez-alsa, PipeWire or PulseAudio with Bluetooth; when nobody is logged in: "
              "'Sound without a login' in operating.md"));
    // The service's own scan looks the same from here.
    findings.push_back(Check("no other program discovers devices", !seen.isDiscovering,
                             seen.isDiscovering
                                 ? "one does; within 5 s of a wake-up it may be the service"
                                 : "the adapter is quiet",
                             "close Bluetooth settings; 'scan off' in bluetoothctl"));
}

}  // namespace

std::vector<Finding> Diagnose(const Examination& examination) {
    std::vector<Finding> findings = CheckSurroundings(examination);
    if (examination.bluetoothObstacle.empty()) {
        CheckAudio(examination, findings);
    }
    if (examination.isServiceRunning) {
        const bool isInstalled = examination.isPlayerInstalled;
        findings.push_back(
            Check("the media player is installed", isInstalled,
                  std::string(Conditions::kMediaPlayerAppId) +
                      (isInstalled ? " can be started" : " cannot be started by the bus"),
                  "install its D-Bus service file"));
    }
    return findings;
}

}  // namespace Tvctl
