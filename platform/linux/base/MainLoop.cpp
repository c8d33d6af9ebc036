// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/MainLoop.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

#include "common/Source.h"
#include "platform/linux/base/Datagram.h"
#include "platform/linux/base/PlatformLog.h"

namespace Platform {

namespace {

// An object of each process on the system bus, with an interface that is empty: its main loop
// answers org.freedesktop.DBus.Properties.GetAll. Other questions, org.freedesktop.DBus.Peer and
// introspection, are answered by the bus library on a thread of its own, also while the loop hangs.
constexpr char kMainLoopPath[] = "/com/velmora/tv/platform";
constexpr char kMainLoopInterface[] = "com.velmora.tv.platform.MainLoop";

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Where the unit has a watchdog, the variables are those of sd_notify(3) and
// sd_watchdog_enabled(3).
Timer Beat() {
    const std::string socket = Variable("NOTIFY_SOCKET");
    const std::string process = Variable("WATCHDOG_PID");
    const guint64 intervalUs = g_ascii_strtoull(Variable("WATCHDOG_USEC").c_str(), nullptr, 10);
    if (socket.empty() || intervalUs == 0 ||
        (!process.empty() && process != std::to_string(getpid()))) {
        return {};
    }
    return Timer::Every(static_cast<int>(intervalUs / 2000 + 1),
                        [socket] { SendDatagram(socket, "WATCHDOG=1"); });
}

void OnBus(GObject* /*source*/, GAsyncResult* result, gpointer /*data*/) noexcept {
    // Without a table the bus library would not pass questions on to the loop.
    static const GDBusInterfaceVTable kNoHandlers = {nullptr, nullptr, nullptr, {}};
    static GDBusInterfaceInfo interface = {
        -1, const_cast<char*>(kMainLoopInterface), nullptr, nullptr, nullptr, nullptr};
    const GObjectPtr<GDBusConnection> bus(g_bus_get_finish(result, nullptr));
    GErrorPtr error;
    // Whoever needs the bus says that there is none.
    if (bus != nullptr &&
        g_dbus_connection_register_object(bus.get(), kMainLoopPath, &interface, &kNoHandlers,
                                          nullptr, nullptr, Out(error)) == 0) {
        PLATFORM_WARN("%s is not on the bus: %s", kMainLoopPath, error->message);
    }
}

}  // namespace

std::optional<std::int64_t> LoopTurn() {
    GSource* const source = g_main_current_source();
    return source == nullptr ? std::nullopt : std::optional(g_source_get_time(source));
}

void TellOfMainLoop() {
    static const Timer beat = [] {
        g_bus_get(G_BUS_TYPE_SYSTEM, nullptr, OnBus, nullptr);
        return Beat();
    }();
}

GErrorPtr AskMainLoop(GDBusConnection* bus, const char* name, int timeoutMs) {
    GErrorPtr error;
    const GVariantPtr reply(g_dbus_connection_call_sync(
        bus, name, kMainLoopPath, "org.freedesktop.DBus.Properties", "GetAll",
        g_variant_new("(s)", kMainLoopInterface), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
        timeoutMs, nullptr, Out(error)));
    return error;
}

}  // namespace Platform
