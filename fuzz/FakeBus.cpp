// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/FakeBus.h"

namespace {

FakeBus* theBus = nullptr;

// Never handed to the bus library, which would miss its socket.
GDBusConnection* TheConnection() {
    static auto* connection =
        static_cast<GDBusConnection*>(g_object_new(G_TYPE_DBUS_CONNECTION, nullptr));
    return connection;
}

}  // namespace

FakeBus::FakeBus() {
    theBus = this;
}

FakeBus::~FakeBus() {
    while (!calls.empty()) {
        Answer(nullptr, "org.freedesktop.DBus.Error.NoReply");
    }
    theBus = nullptr;
}

FakeBus& FakeBus::Get() {
    return *theBus;
}

void FakeBus::Connect() {
    onConnection(nullptr, nullptr, connectionData);
}

void FakeBus::Appear() {
    onAppeared(TheConnection(), "org.bluez", ":1.1", nameData);
}

void FakeBus::Vanish() {
    onVanished(TheConnection(), "org.bluez", nameData);
}

void FakeBus::Signal(const char* path, const char* member, GVariant* parameters) {
    onSignal(TheConnection(), ":1.1", path, "", member, parameters, signalData);
}

void FakeBus::Answer(GVariant* answer, const char* failure) {
    bool isAnswered = false;
    while (!calls.empty() && !isAnswered) {
        const Call call = std::move(calls.front());
        calls.pop_front();
        isAnswered = g_cancellable_is_cancelled(call.cancellable.get()) == FALSE;
        Finish(call, isAnswered ? answer : nullptr, isAnswered ? failure : "a.b.Cancelled");
    }
}

void FakeBus::Finish(const Call& call, GVariant* answer, const char* failure) {
    reply = answer;
    errorName = failure;
    call.done(reinterpret_cast<GObject*>(TheConnection()), nullptr, call.data);
}

void FakeBus::Wait() {
    while (!timers.empty()) {
        const auto next = timers.extract(timers.begin());
        if (g_source_is_destroyed(next.mapped().get()) == FALSE) {
            nowMs = next.key();
            g_source_set_ready_time(next.mapped().get(), 0);
            return;
        }
    }
}

void FakeBus::Settle() {
    while (!timers.empty() && timers.begin()->first <= nowMs) {
        Wait();
    }
    while (g_main_context_iteration(nullptr, FALSE) != FALSE || !signsOfLife.empty()) {
        for (const Call& call : std::exchange(signsOfLife, {})) {
            Finish(call, nullptr, "a.b.Alive");
        }
    }
}

// In place of the bus library's.
extern "C" {

void g_bus_get(GBusType /*type*/, GCancellable* /*cancellable*/, GAsyncReadyCallback callback,
               gpointer data) {
    FakeBus::Get().onConnection = callback;
    FakeBus::Get().connectionData = data;
}

GDBusConnection* g_bus_get_finish(GAsyncResult* /*result*/, GError** /*error*/) {
    return static_cast<GDBusConnection*>(g_object_ref(TheConnection()));
}

guint g_dbus_connection_signal_subscribe(GDBusConnection* /*connection*/, const char* /*sender*/,
                                         const char* /*interface*/, const char* /*member*/,
                                         const char* /*path*/, const char* /*arg0*/,
                                         GDBusSignalFlags /*flags*/, GDBusSignalCallback callback,
                                         gpointer data, GDestroyNotify /*free*/) {
    FakeBus::Get().onSignal = callback;
    FakeBus::Get().signalData = data;
    return 1;
}

void g_dbus_connection_signal_unsubscribe(GDBusConnection* /*connection*/, guint /*id*/) {}

guint g_bus_watch_name_on_connection(GDBusConnection* /*connection*/, const char* /*name*/,
                                     GBusNameWatcherFlags /*flags*/,
                                     GBusNameAppearedCallback appeared,
                                     GBusNameVanishedCallback vanished, gpointer data,
                                     GDestroyNotify /*free*/) {
    FakeBus::Get().onAppeared = appeared;
    FakeBus::Get().onVanished = vanished;
    FakeBus::Get().nameData = data;
    return 1;
}

void g_bus_unwatch_name(guint /*id*/) {}

void g_dbus_connection_call(GDBusConnection* /*connection*/, const char* /*name*/,
                            const char* /*path*/, const char* /*interface*/, const char* method,
                            GVariant* parameters, const GVariantType* /*replyType*/,
                            GDBusCallFlags /*flags*/, gint /*timeout*/, GCancellable* cancellable,
                            GAsyncReadyCallback callback, gpointer data) {
    if (parameters != nullptr) {
        const GVariantPtr sunk(g_variant_ref_sink(parameters));
    }
    GObjectPtr<GCancellable> cancel(
        cancellable == nullptr ? nullptr : static_cast<GCancellable*>(g_object_ref(cancellable)));
    FakeBus::Call call{callback, data, std::move(cancel)};
    if (g_strcmp0(method, "GetId") == 0) {
        FakeBus::Get().signsOfLife.push_back(std::move(call));
    } else {
        FakeBus::Get().calls.push_back(std::move(call));
    }
}

GVariant* g_dbus_connection_call_finish(GDBusConnection* /*connection*/, GAsyncResult* /*result*/,
                                        GError** error) {
    const FakeBus& bus = FakeBus::Get();
    if (bus.reply != nullptr) {
        return g_variant_ref(bus.reply);
    }
    g_propagate_error(error, g_dbus_error_new_for_dbus_error(bus.errorName, "no"));
    return nullptr;
}

GSource* g_timeout_source_new(guint interval) {
    static GSourceFuncs functions = {
        nullptr,
        nullptr,
        [](GSource* source, GSourceFunc callback, gpointer data) -> gboolean {
            g_source_set_ready_time(source, -1);
            return callback(data);
        },
        nullptr,
        nullptr,
        nullptr};
    GSource* source = g_source_new(&functions, sizeof(GSource));
    FakeBus& bus = FakeBus::Get();
    bus.timers.emplace(bus.nowMs + interval, g_source_ref(source));
    return source;
}

}  // extern "C"
