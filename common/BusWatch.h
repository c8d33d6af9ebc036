// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <memory>

#include "common/CHandle.h"

// Watches a bus: a name that appears and vanishes, or signals. It ends when its owner drops or
// replaces it, which its own callbacks may do too. Callbacks run on the thread's default main
// context.
class BusWatch {
public:
    BusWatch() = default;

    // Either callback may be NULL.
    [[nodiscard]] static BusWatch OnName(GDBusConnection* bus, const char* name,
                                         GBusNameAppearedCallback appeared,
                                         GBusNameVanishedCallback vanished, void* userData) {
        return {bus,
                g_bus_watch_name_on_connection(bus, name, G_BUS_NAME_WATCHER_FLAGS_NONE, appeared,
                                               vanished, userData, nullptr),
                [](GDBusConnection*, guint id) { g_bus_unwatch_name(id); }};
    }

    // Signals of `sender`, from any object. When `sender` is a name, the bus library passes on only
    // what the name's owner sent.
    [[nodiscard]] static BusWatch OnSignal(GDBusConnection* bus, const char* sender,
                                           const char* interface, const char* member,
                                           GDBusSignalCallback callback, void* userData) {
        return {bus,
                g_dbus_connection_signal_subscribe(bus, sender, interface, member, nullptr, nullptr,
                                                   G_DBUS_SIGNAL_FLAGS_NONE, callback, userData,
                                                   nullptr),
                g_dbus_connection_signal_unsubscribe};
    }

private:
    using End = void (*)(GDBusConnection* bus, guint id);
    struct Watch {
        GObjectPtr<GDBusConnection> bus;
        guint id;
        End end;
        ~Watch() { end(bus.get(), id); }
    };

    BusWatch(GDBusConnection* bus, guint id, End end)
        : m_watch(new Watch{GObjectPtr<GDBusConnection>(G_DBUS_CONNECTION(g_object_ref(bus))), id,
                            end}) {}

    std::unique_ptr<Watch> m_watch;
};
