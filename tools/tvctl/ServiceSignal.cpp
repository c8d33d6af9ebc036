// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/ServiceSignal.h"

#include "autoconnect/src/DbusInterface.h"
#include "common/CHandle.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/DbusError.h"

namespace Tvctl {

SignalResult SendToService(const char* command, GVariant* parameters) {
    const GVariantPtr held(parameters != nullptr ? g_variant_ref_sink(parameters) : nullptr);
    GErrorPtr error;
    const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    if (bus == nullptr) {
        return {false, "no system bus: " + Platform::DescribeError(*error)};
    }
    const bool isSent =
        g_dbus_connection_emit_signal(bus.get(), nullptr, kObjectPath, kInterfaceName, command,
                                      parameters, Out(error)) != FALSE;
    if (isSent) {
        g_dbus_connection_flush_sync(bus.get(), nullptr, Out(error));
    }
    if (error != nullptr) {
        return {false, "the signal was not sent: " + Platform::DescribeError(*error)};
    }
    // The bus answers in order, so with this answer it has passed the signal on, too.
    const auto isThere = Platform::IsRunning(kServiceName);
    if (!isThere) {
        return {false, "the bus does not answer"};
    }
    if (!*isThere) {
        return {false, std::string("nobody heard the signal: the service is not running (") +
                           kServiceName + " has no owner)"};
    }
    return {true, ""};
}

}  // namespace Tvctl
