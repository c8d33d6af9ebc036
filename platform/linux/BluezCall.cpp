// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/BluezCall.h"

#include <utility>

namespace Bluez {

Call::Call(GDBusConnection* connection, const std::string& path, const char* interface,
           const char* method, GVariant* arguments, int timeoutMs, Done done)
    : m_pending(std::make_shared<Pending>(Pending{std::move(done)})) {
    using WeakPending = std::weak_ptr<Pending>;
    g_dbus_connection_call(
        connection, kBusName, path.c_str(), interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, timeoutMs, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) noexcept {
            const std::unique_ptr<WeakPending> weak(static_cast<WeakPending*>(data));
            GErrorPtr error;
            const GVariantPtr reply(g_dbus_connection_call_finish(
                reinterpret_cast<GDBusConnection*>(source), result, Out(error)));
            // Shared for as long as the action runs: it may drop or replace the call.
            if (const std::shared_ptr<Pending> pending = weak->lock()) {
                pending->done(reply.get(), error.get());
            }
        },
        new WeakPending(m_pending));
}

}  // namespace Bluez
