// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Deadline.h"

#include <utility>

#include "common/CHandle.h"
#include "common/Source.h"

namespace Bluez {

namespace {

// A bus that does not answer has nothing to tell either.
constexpr int kSignOfLifeMs = 1000;

}  // namespace

struct Deadline::Pending {
    GObjectPtr<GDBusConnection> connection;
    std::function<void()> action;
    Timer timer;
};

Deadline::Deadline(GDBusConnection* connection, int ms, std::function<void()> action)
    : m_pending(std::make_shared<Pending>()) {
    if (connection != nullptr) {
        m_pending->connection.reset(static_cast<GDBusConnection*>(g_object_ref(connection)));
    }
    m_pending->action = std::move(action);
    m_pending->timer = Timer::Once(ms, [weak = WeakPending(m_pending)] { Pass(weak); });
}

void Deadline::Pass(const WeakPending& weak) {
    // Shared for as long as the action runs: it may drop or replace the deadline.
    const std::shared_ptr<Pending> pending = weak.lock();
    if (!pending->connection) {
        pending->action();
        return;
    }
    g_dbus_connection_call(
        pending->connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus", "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, kSignOfLifeMs,
        nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) noexcept {
            const std::unique_ptr<WeakPending> owner(static_cast<WeakPending*>(data));
            const GVariantPtr reply(g_dbus_connection_call_finish(
                reinterpret_cast<GDBusConnection*>(source), result, nullptr));
            if (const std::shared_ptr<Pending> alive = owner->lock()) {
                alive->action();
            }
        },
        new WeakPending(weak));
}

}  // namespace Bluez
