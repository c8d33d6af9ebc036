// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/ServiceSignal.h"

#include "autoconnect/src/DbusInterface.h"
#include "common/CHandle.h"
#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/MainLoop.h"

namespace Tvctl {

namespace {

// The service's loop may wait for a file meanwhile.
constexpr int kAnswerMs = 5000;

// Why the service may not have heard what was just sent to it; empty when it has. The bus delivers
// in order, and by the package's policy it lets a question through where it lets a signal through.
std::string WhyUnheard(GDBusConnection* bus) {
    const GErrorPtr error = Platform::AskMainLoop(bus, kServiceName, kAnswerMs);
    if (error == nullptr) {
        return "";
    }
    if (g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED)) {
        return "the bus does not let this user speak to the service; be root, or in the service's "
               "group";
    }
    if (g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
        g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER)) {
        return std::string("nobody heard the signal: the service is not running (") + kServiceName +
               " has no owner)";
    }
    return "the service does not answer: " + Platform::DescribeError(*error);
}

}  // namespace

std::string SendToService(const char* command, GVariant* parameters) {
    const GVariantPtr held(parameters != nullptr ? g_variant_ref_sink(parameters) : nullptr);
    GErrorPtr error;
    const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    if (bus == nullptr) {
        return "no system bus: " + Platform::DescribeError(*error);
    }
    if (g_dbus_connection_emit_signal(bus.get(), nullptr, kObjectPath, kInterfaceName, command,
                                      parameters, Out(error)) == FALSE) {
        return "the signal was not sent: " + Platform::DescribeError(*error);
    }
    return WhyUnheard(bus.get());
}

}  // namespace Tvctl
