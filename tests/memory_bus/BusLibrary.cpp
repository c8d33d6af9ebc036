// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "tests/memory_bus/MemoryBus.h"

// What the functions below do.
struct BusLibrary {
    static guint Subscribe(MemoryBus::Subscription subscription) {
        MemoryBus& bus = MemoryBus::Get();
        const guint id = ++bus.m_lastId;
        bus.m_subscriptions.emplace(id, std::move(subscription));
        return id;
    }
    static guint Watch(MemoryBus::Subscription watch) {
        const guint id = Subscribe(std::move(watch));
        MemoryBus::Get().TellOwner(id);
        return id;
    }
    // Static objects give theirs up when the bus is gone.
    static void Unsubscribe(guint id) {
        if (MemoryBus::IsThere()) {
            MemoryBus::Get().m_subscriptions.erase(id);
        }
    }
    static guint Own(const char* name, GBusAcquiredCallback onBus,
                     GBusNameAcquiredCallback onAcquired, gpointer data) {
        MemoryBus& bus = MemoryBus::Get();
        const guint id = ++bus.m_lastId;
        bus.m_names.emplace(id, name);
        bus.Own(id, name, onBus, onAcquired, data);
        return id;
    }
    static void Unown(guint id) {
        if (MemoryBus::IsThere()) {
            MemoryBus::Get().Disown(MemoryBus::Get().m_names.extract(id).mapped());
        }
    }
    static void GetBus(GAsyncReadyCallback callback, gpointer data) {
        MemoryBus::Get().Deliver([callback, data] { callback(nullptr, nullptr, data); });
    }
    static void Call(MemoryBus::CallInfo info, int timeoutMs, GCancellable* cancellable,
                     GAsyncReadyCallback done, gpointer data) {
        GObjectPtr<GCancellable> held(cancellable == nullptr
                                          ? nullptr
                                          : static_cast<GCancellable*>(g_object_ref(cancellable)));
        MemoryBus::Get().Begin({std::move(info), {}, done, data, std::move(held)}, timeoutMs);
    }
    static GVariant* SyncCall(const MemoryBus::CallInfo& info, GError** error) {
        const MemoryBus& bus = MemoryBus::Get();
        if (bus.onSyncCall) {
            bus.onSyncCall(info.method);
        }
        if (!bus.answerSyncCall) {
            g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT, "nobody answers");
            return nullptr;
        }
        std::string name;
        GVariantPtr reply = bus.answerSyncCall(info, name);
        if (!name.empty()) {
            g_propagate_error(error, g_dbus_error_new_for_dbus_error(name.c_str(), "no"));
            return nullptr;
        }
        return reply ? reply.release() : MemoryBus::Keep(g_variant_new("()")).release();
    }
    static GVariant* FinishCall(GError** error) {
        const MemoryBus& bus = MemoryBus::Get();
        if (bus.m_error != nullptr) {
            g_propagate_error(error, g_error_copy(bus.m_error));
            return nullptr;
        }
        return bus.m_reply != nullptr ? g_variant_ref(bus.m_reply) : g_variant_new("()");
    }
    static guint AddObject() {
        MemoryBus& bus = MemoryBus::Get();
        return *bus.m_objects.insert(++bus.m_lastId).first;
    }
    static gboolean DropObject(guint id) {
        return MemoryBus::IsThere() && MemoryBus::Get().m_objects.erase(id) != 0 ? TRUE : FALSE;
    }
    static guint AddFilter(GDBusMessageFilterFunction run, gpointer data, GDestroyNotify free) {
        MemoryBus& bus = MemoryBus::Get();
        bus.m_filters.emplace(++bus.m_lastId, MemoryBus::Filter{run, data, free});
        return bus.m_lastId;
    }
    static void RemoveFilter(guint id) {
        const auto filter = MemoryBus::Get().m_filters.extract(id);
        filter.mapped().free(filter.mapped().data);
    }
    static void Reply(GDBusMessage* message) {
        MemoryBus& bus = MemoryBus::Get();
        GErrorPtr error;
        const bool isError = g_dbus_message_to_gerror(message, Out(error)) != FALSE;
        const char* name = g_dbus_message_get_error_name(message);
        GVariant* body = g_dbus_message_get_body(message);
        const char* text = nullptr;
        if (isError && body != nullptr && g_variant_is_of_type(body, G_VARIANT_TYPE("(s)"))) {
            g_variant_get(body, "(&s)", &text);
        }
        bus.Answer(g_dbus_message_get_reply_serial(message),
                   GVariantPtr(isError || body == nullptr ? nullptr : g_variant_ref(body)),
                   isError ? name : "", text == nullptr ? "" : text);
    }
    static void Emit(const char* path, const char* interface, const char* member,
                     GVariant* parameters) {
        MemoryBus::Get().Signal(path, interface, member, parameters);
    }
};

// In place of the bus library's.
extern "C" {

void g_bus_get(GBusType /*type*/, GCancellable* /*cancellable*/, GAsyncReadyCallback callback,
               gpointer data) {
    BusLibrary::GetBus(callback, data);
}

GDBusConnection* g_bus_get_finish(GAsyncResult* /*result*/, GError** /*error*/) {
    return static_cast<GDBusConnection*>(g_object_ref(MemoryBus::Connection()));
}

GDBusConnection* g_bus_get_sync(GBusType /*type*/, GCancellable* /*cancellable*/,
                                GError** /*error*/) {
    return static_cast<GDBusConnection*>(g_object_ref(MemoryBus::Connection()));
}

guint g_dbus_connection_signal_subscribe(GDBusConnection* /*connection*/, const char* /*sender*/,
                                         const char* interface, const char* member,
                                         const char* /*path*/, const char* /*arg0*/,
                                         GDBusSignalFlags /*flags*/, GDBusSignalCallback callback,
                                         gpointer data, GDestroyNotify /*free*/) {
    return BusLibrary::Subscribe({"", interface == nullptr ? "" : interface,
                                  member == nullptr ? "" : member, callback, nullptr, nullptr,
                                  data});
}

void g_dbus_connection_signal_unsubscribe(GDBusConnection* /*connection*/, guint id) {
    BusLibrary::Unsubscribe(id);
}

guint g_bus_watch_name_on_connection(GDBusConnection* /*connection*/, const char* name,
                                     GBusNameWatcherFlags /*flags*/,
                                     GBusNameAppearedCallback appeared,
                                     GBusNameVanishedCallback vanished, gpointer data,
                                     GDestroyNotify /*free*/) {
    return BusLibrary::Watch({name, "", "", nullptr, appeared, vanished, data});
}

void g_bus_unwatch_name(guint id) {
    BusLibrary::Unsubscribe(id);
}

guint g_bus_own_name(GBusType /*type*/, const char* name, GBusNameOwnerFlags /*flags*/,
                     GBusAcquiredCallback onBus, GBusNameAcquiredCallback onAcquired,
                     GBusNameLostCallback /*onLost*/, gpointer data, GDestroyNotify /*free*/) {
    return BusLibrary::Own(name, onBus, onAcquired, data);
}

guint g_bus_own_name_on_connection(GDBusConnection* /*connection*/, const char* name,
                                   GBusNameOwnerFlags /*flags*/,
                                   GBusNameAcquiredCallback onAcquired,
                                   GBusNameLostCallback /*onLost*/, gpointer data,
                                   GDestroyNotify /*free*/) {
    return BusLibrary::Own(name, nullptr, onAcquired, data);
}

void g_bus_unown_name(guint id) {
    BusLibrary::Unown(id);
}

guint g_dbus_connection_register_object(GDBusConnection* /*connection*/, const char* /*path*/,
                                        GDBusInterfaceInfo* /*interface*/,
                                        const GDBusInterfaceVTable* /*table*/, gpointer /*data*/,
                                        GDestroyNotify /*free*/, GError** /*error*/) {
    return BusLibrary::AddObject();
}

gboolean g_dbus_connection_unregister_object(GDBusConnection* /*connection*/, guint id) {
    return BusLibrary::DropObject(id);
}

void g_dbus_connection_call(GDBusConnection* /*connection*/, const char* name, const char* path,
                            const char* interface, const char* method, GVariant* parameters,
                            const GVariantType* /*replyType*/, GDBusCallFlags /*flags*/,
                            gint timeoutMs, GCancellable* cancellable, GAsyncReadyCallback callback,
                            gpointer data) {
    BusLibrary::Call({name, path, interface, method, MemoryBus::Keep(parameters)}, timeoutMs,
                     cancellable, callback, data);
}

GVariant* g_dbus_connection_call_finish(GDBusConnection* /*connection*/, GAsyncResult* /*result*/,
                                        GError** error) {
    return BusLibrary::FinishCall(error);
}

GVariant* g_dbus_connection_call_sync(GDBusConnection* /*connection*/, const char* name,
                                      const char* path, const char* interface, const char* method,
                                      GVariant* parameters, const GVariantType* /*replyType*/,
                                      GDBusCallFlags /*flags*/, gint /*timeoutMs*/,
                                      GCancellable* /*cancellable*/, GError** error) {
    return BusLibrary::SyncCall({name, path, interface, method, MemoryBus::Keep(parameters)},
                                error);
}

guint g_dbus_connection_add_filter(GDBusConnection* /*connection*/, GDBusMessageFilterFunction run,
                                   gpointer data, GDestroyNotify free) {
    return BusLibrary::AddFilter(run, data, free);
}

void g_dbus_connection_remove_filter(GDBusConnection* /*connection*/, guint id) {
    BusLibrary::RemoveFilter(id);
}

gboolean g_dbus_connection_send_message(GDBusConnection* /*connection*/, GDBusMessage* message,
                                        GDBusSendMessageFlags /*flags*/,
                                        volatile guint32* /*serial*/, GError** /*error*/) {
    BusLibrary::Reply(message);
    return TRUE;
}

gboolean g_dbus_connection_emit_signal(GDBusConnection* /*connection*/, const char* /*destination*/,
                                       const char* path, const char* interface, const char* member,
                                       GVariant* parameters, GError** /*error*/) {
    BusLibrary::Emit(path, interface, member, parameters);
    return TRUE;
}

}  // extern "C"
