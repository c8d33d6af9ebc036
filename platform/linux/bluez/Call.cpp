// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Call.h"

#include <utility>

#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Deadline.h"

namespace Bluez {

namespace {

// What waits for an answer that only the log may need.
struct Sent {
    std::string what;
    std::function<void()> then;
};

void OnSent(GObject* source, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<Sent> sent(static_cast<Sent*>(data));
    GErrorPtr error;
    const GVariantPtr reply(g_dbus_connection_call_finish(
        reinterpret_cast<GDBusConnection*>(source), result, Out(error)));
    if (!reply) {
        PLATFORM_WARN("%s failed: %s", sent->what.c_str(), Platform::DescribeError(*error).c_str());
    } else if (sent->then) {
        sent->then();
    }
}

}  // namespace

struct Call::Pending {
    Pending() = default;
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;
    ~Pending() { g_cancellable_cancel(cancellable.get()); }

    Done done;
    Deadline deadline;
    GObjectPtr<GCancellable> cancellable{g_cancellable_new()};
};

Call::Call(GDBusConnection* connection, const std::string& path, const char* interface,
           const char* method, GVariant* arguments, int timeoutMs, Done done)
    : m_pending(std::make_shared<Pending>()) {
    m_pending->done = std::move(done);
    m_pending->deadline = Deadline(connection, timeoutMs, [weak = WeakPending(m_pending)] {
        // First, for the action may begin the next call.
        if (const std::shared_ptr<Pending> pending = weak.lock()) {
            g_cancellable_cancel(pending->cancellable.get());
        }
        const GErrorPtr error(
            g_error_new_literal(G_IO_ERROR, G_IO_ERROR_TIMED_OUT, "no answer in time"));
        Finish(weak, nullptr, error.get());
    });
    g_dbus_connection_call(
        connection, kBusName, path.c_str(), interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, G_MAXINT, m_pending->cancellable.get(),
        [](GObject* source, GAsyncResult* result, gpointer data) noexcept {
            const std::unique_ptr<WeakPending> weak(static_cast<WeakPending*>(data));
            GErrorPtr error;
            const GVariantPtr reply(g_dbus_connection_call_finish(
                reinterpret_cast<GDBusConnection*>(source), result, Out(error)));
            Finish(*weak, reply.get(), error.get());
        },
        new WeakPending(m_pending));
}

void Call::Finish(const WeakPending& weak, GVariant* reply, const GError* error) {
    // Shared for as long as the action runs: it may drop or replace the call.
    if (const std::shared_ptr<Pending> pending = weak.lock()) {
        pending->deadline.Cancel();
        if (const Done done = std::exchange(pending->done, nullptr)) {
            done(reply, error);
        }
    }
}

void Send(GDBusConnection* connection, const std::string& path, const char* interface,
          const char* method, GVariant* arguments, const std::string& what,
          std::function<void()> then) {
    g_dbus_connection_call(connection, kBusName, path.c_str(), interface, method, arguments,
                           nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, OnSent,
                           new Sent{what, std::move(then)});
}

void SetProperty(GDBusConnection* connection, const std::string& path, const char* interface,
                 const char* property, GVariant* value, std::function<void()> then) {
    Send(connection, path, kPropertiesInterface, "Set",
         g_variant_new("(ssv)", interface, property, value),
         std::string("setting ") + property + " of " + path, std::move(then));
}

}  // namespace Bluez
