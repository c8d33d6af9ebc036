// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Inspection.h"

#include "common/Source.h"
#include "platform/linux/bluez/Service.h"

namespace Bluez {

namespace {

// A daemon that runs answers at once; nobody waits longer for one that hangs.
constexpr int kAwaitMs = 5000;

}  // namespace

std::string AwaitAdapter() {
    const Mirror& mirror = Service::Get().mirror;
    bool isLate = false;
    const Timer deadline = Timer::Once(kAwaitMs, [&isLate] { isLate = true; });
    while (!mirror.IsSettled() && !isLate) {
        g_main_context_iteration(nullptr, TRUE);
    }
    if (!mirror.IsSettled()) {
        return "bluetoothd does not answer";
    }
    if (mirror.Connection() == nullptr) {
        return "the system bus cannot be reached";
    }
    if (!mirror.IsFilled()) {
        return "bluetoothd is not on the bus";
    }
    return mirror.PoweredAdapter().empty() ? "there is no powered Bluetooth adapter" : "";
}

AdapterState PoweredAdapter() {
    const Mirror& mirror = Service::Get().mirror;
    const std::string path = mirror.PoweredAdapter();
    const Adapter* adapter = mirror.FindAdapter(path);
    return adapter == nullptr ? AdapterState()
                              : AdapterState{path, adapter->hasA2dpSink, adapter->isDiscovering};
}

DeviceState StateOf(const std::string& address) {
    const Mirror& mirror = Service::Get().mirror;
    const Device* device = mirror.FindDevice(mirror.DevicePath(mirror.PoweredAdapter(), address));
    return device == nullptr ? DeviceState()
                             : DeviceState{device->HoldsBond(), device->hasA2dpSource,
                                           device->isConnected, device->name};
}

}  // namespace Bluez
