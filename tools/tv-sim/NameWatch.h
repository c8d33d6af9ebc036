// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <utility>

namespace TvSim {

// Watches a name on a bus; it may be dropped from within its own callbacks.
class NameWatch {
public:
    NameWatch() = default;
    // Either callback may be null; both run on the thread's default main context.
    NameWatch(GDBusConnection* connection, const char* name, GBusNameAppearedCallback appeared,
              GBusNameVanishedCallback vanished, void* userData)
        : m_id(g_bus_watch_name_on_connection(connection, name, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                              appeared, vanished, userData, nullptr)) {}
    NameWatch(NameWatch&& other) noexcept : m_id(std::exchange(other.m_id, 0)) {}
    NameWatch& operator=(NameWatch&& other) noexcept {
        std::swap(m_id, other.m_id);
        return *this;
    }
    ~NameWatch() {
        if (m_id != 0) {
            g_bus_unwatch_name(m_id);
        }
    }

private:
    guint m_id = 0;
};

}  // namespace TvSim
