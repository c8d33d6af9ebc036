// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/memory_bus/MemoryBus.h"

#include <algorithm>
#include <utility>

#include "tests/memory_bus/VirtualTime.h"

namespace {

constexpr char kBusItself[] = "org.freedesktop.DBus";
constexpr int kDefaultTimeoutMs = 25000;

MemoryBus* theBus = nullptr;

GErrorPtr MakeError(GQuark domain, int code, const char* text) {
    return GErrorPtr(g_error_new_literal(domain, code, text));
}

}  // namespace

MemoryBus::MemoryBus() {
    static GSourceFuncs functions = {
        nullptr,
        nullptr,
        [](GSource* /*source*/, GSourceFunc /*callback*/, gpointer /*data*/) noexcept -> gboolean {
            Get().RunNext();
            return G_SOURCE_CONTINUE;
        },
        nullptr,
        nullptr,
        nullptr};
    m_source.reset(g_source_new(&functions, sizeof(GSource)));
    g_source_attach(m_source.get(), nullptr);
    theBus = this;
}

MemoryBus::~MemoryBus() {
    g_source_destroy(m_source.get());
    while (!m_calls.empty()) {
        Finish(m_calls.begin()->first, {}, MakeError(G_IO_ERROR, G_IO_ERROR_CLOSED, "bus is gone"));
    }
    theBus = nullptr;
}

MemoryBus& MemoryBus::Get() {
    return *theBus;
}

bool MemoryBus::IsThere() {
    return theBus != nullptr;
}

GDBusConnection* MemoryBus::Connection() {
    static auto* connection =
        static_cast<GDBusConnection*>(g_object_new(G_TYPE_DBUS_CONNECTION, nullptr));
    return connection;
}

GVariantPtr MemoryBus::Keep(GVariant* variant) {
    return GVariantPtr(variant == nullptr ? nullptr : g_variant_ref_sink(variant));
}

void MemoryBus::After(gint64 ms, Action action) {
    m_agenda.emplace(VirtualTime::NowMs() + ms, std::move(action));
    Schedule();
}

void MemoryBus::Deliver(Action action) {
    m_lastDeliveryMs = std::max(m_lastDeliveryMs, VirtualTime::NowMs() + m_latencyMs);
    m_agenda.emplace(m_lastDeliveryMs, std::move(action));
    Schedule();
}

void MemoryBus::Schedule() {
    const gint64 dueMs = m_agenda.empty() ? 0 : m_agenda.begin()->first - VirtualTime::NowMs();
    g_source_set_ready_time(
        m_source.get(),
        m_agenda.empty() ? -1 : g_get_monotonic_time() + dueMs * G_TIME_SPAN_MILLISECOND);
}

void MemoryBus::RunNext() {
    if (!m_agenda.empty() && m_agenda.begin()->first <= VirtualTime::NowMs()) {
        const auto next = m_agenda.extract(m_agenda.begin());
        next.mapped()();
    }
    Schedule();
}

void MemoryBus::Signal(const std::string& path, const std::string& interface,
                       const std::string& member, GVariant* parameters) {
    const std::shared_ptr<GVariant> held(Keep(parameters).release(), g_variant_unref);
    for (const auto& [id, subscription] : m_subscriptions) {
        if (subscription.onSignal != nullptr &&
            (subscription.interface.empty() || subscription.interface == interface) &&
            (subscription.member.empty() || subscription.member == member)) {
            Deliver([this, id = id, path, interface, member, held] {
                const auto found = m_subscriptions.find(id);
                if (found != m_subscriptions.end()) {
                    found->second.onSignal(Connection(), ":1.1", path.c_str(), interface.c_str(),
                                           member.c_str(), held.get(), found->second.data);
                }
            });
        }
    }
}

void MemoryBus::SetBluez(bool isThere) {
    if (isThere) {
        Own(0, kBluez, nullptr, nullptr, nullptr);
    } else {
        Disown(kBluez);
    }
}

void MemoryBus::AnswerBluez(GVariant* reply, const char* error) {
    const auto oldest = std::find_if(m_calls.begin(), m_calls.end(), [](const auto& entry) {
        return entry.second.info.destination == kBluez && !entry.second.isGivenUp;
    });
    if (oldest != m_calls.end()) {
        Finish(
            oldest->first, GVariantPtr(reply == nullptr ? nullptr : g_variant_ref(reply)),
            GErrorPtr(error == nullptr ? nullptr : g_dbus_error_new_for_dbus_error(error, "no")));
    }
}

void MemoryBus::Begin(Call call, int timeoutMs) {
    const guint serial = ++m_lastId;
    if (treat) {
        call.treatment = treat(call.info);
    }
    if (call.cancellable) {
        call.cancelHandler = g_cancellable_connect(
            call.cancellable.get(),
            G_CALLBACK(+[](GCancellable* /*cancellable*/, gpointer data) noexcept {
                Get().GiveUp(GPOINTER_TO_UINT(data));
            }),
            GUINT_TO_POINTER(serial), nullptr);
    }
    if (timeoutMs != G_MAXINT) {
        After(timeoutMs < 0 ? kDefaultTimeoutMs : timeoutMs, [this, serial] {
            Finish(serial, {}, MakeError(G_IO_ERROR, G_IO_ERROR_TIMED_OUT, "no answer"));
        });
    }
    const int afterMs = call.treatment.deliverAfterMs;
    m_calls.emplace(serial, std::move(call));
    if (afterMs == 0) {
        Send(serial);
    } else {
        After(afterMs, [this, serial] { Send(serial); });
    }
}

void MemoryBus::Send(guint serial) {
    const auto call = m_calls.find(serial);
    if (call == m_calls.end()) {
        return;
    }
    const CallInfo& info = call->second.info;
    const Treatment& treatment = call->second.treatment;
    if (!treatment.isDelivered) {
        Answer(serial, {}, "", "");
    } else if (info.destination == kBusItself) {
        Answer(serial, Keep(g_variant_new("(s)", "0")), "", "");
    } else if (info.destination == kBluez && HasOwner(kBluez) && !m_filters.empty()) {
        SendToBluez(serial, info);
    } else {
        Answer(serial, {}, "org.freedesktop.DBus.Error.ServiceUnknown", "nobody has the name");
    }
}

void MemoryBus::SendToBluez(guint serial, const CallInfo& info) {
    GDBusMessage* message = g_dbus_message_new_method_call(
        info.destination.c_str(), info.path.c_str(), info.interface.c_str(), info.method.c_str());
    g_dbus_message_set_sender(message, ":1.7");
    g_dbus_message_set_serial(message, serial);
    if (info.arguments) {
        g_dbus_message_set_body(message, info.arguments.get());
    }
    for (const auto& [id, filter] : m_filters) {
        if (message != nullptr) {
            message = filter.run(Connection(), message, TRUE, filter.data);
        }
    }
    if (message != nullptr) {
        g_object_unref(message);
        Answer(serial, {}, "org.freedesktop.DBus.Error.UnknownObject", "nobody took it");
    }
}

void MemoryBus::Answer(guint serial, const GVariantPtr& reply, const std::string& error,
                       const std::string& message) {
    const auto call = m_calls.find(serial);
    if (call == m_calls.end() || !call->second.treatment.isAnswered) {
        return;
    }
    const Treatment& treatment = call->second.treatment;
    const bool isTurned = !treatment.error.empty();
    const std::string name = isTurned ? treatment.error : error;
    std::shared_ptr<GError> failure;
    if (!name.empty()) {
        failure.reset(g_dbus_error_new_for_dbus_error(
                          name.c_str(), isTurned ? treatment.message.c_str() : message.c_str()),
                      g_error_free);
    }
    const std::shared_ptr<GVariant> held(reply ? g_variant_ref(reply.get()) : nullptr,
                                         [](GVariant* each) {
                                             if (each != nullptr) {
                                                 g_variant_unref(each);
                                             }
                                         });
    const Action finish = [this, serial, held, failure] {
        Finish(serial, GVariantPtr(failure || !held ? nullptr : g_variant_ref(held.get())),
               GErrorPtr(failure ? g_error_copy(failure.get()) : nullptr));
    };
    if (treatment.answerAfterMs == 0) {
        Deliver(finish);
    } else {
        After(treatment.answerAfterMs, [this, finish] { Deliver(finish); });
    }
}

void MemoryBus::GiveUp(guint serial) {
    const auto call = m_calls.find(serial);
    if (onCallOver && !std::exchange(call->second.isGivenUp, true)) {
        onCallOver(call->second.info);
    }
    After(0, [this, serial] {
        Finish(serial, {}, MakeError(G_IO_ERROR, G_IO_ERROR_CANCELLED, "given up"));
    });
}

void MemoryBus::Finish(guint serial, const GVariantPtr& reply, const GErrorPtr& error) {
    const auto call = m_calls.extract(serial);
    if (call.empty()) {
        return;
    }
    const Call& ended = call.mapped();
    if (ended.cancellable) {
        g_cancellable_disconnect(ended.cancellable.get(), ended.cancelHandler);
    }
    if (onCallOver && !ended.isGivenUp) {
        onCallOver(ended.info);
    }
    m_reply = reply.get();
    m_error = error.get();
    if (ended.done != nullptr) {
        ended.done(reinterpret_cast<GObject*>(Connection()), nullptr, ended.data);
    }
}

void MemoryBus::Own(guint id, const std::string& name, GBusAcquiredCallback onBus,
                    GBusNameAcquiredCallback onAcquired, gpointer data) {
    m_owned.insert(name);
    if (onBus != nullptr) {
        Deliver([this, id, onBus, name, data] {
            if (m_names.count(id) != 0) {
                onBus(Connection(), name.c_str(), data);
            }
        });
    }
    for (const auto& [watch, subscription] : m_subscriptions) {
        if (subscription.name == name) {
            TellOwner(watch);
        }
    }
    After(0, [this, id, onAcquired, name, data] {
        if (onAcquired != nullptr && m_names.count(id) != 0) {
            onAcquired(Connection(), name.c_str(), data);
        }
    });
}

void MemoryBus::Disown(const std::string& name) {
    if (m_owned.erase(name) == 0) {
        return;
    }
    for (const auto& [serial, call] : m_calls) {
        if (call.info.destination == name) {
            Answer(serial, {}, "org.freedesktop.DBus.Error.NoReply", "it left the bus");
        }
    }
    for (const auto& [id, subscription] : m_subscriptions) {
        if (subscription.name == name) {
            TellOwner(id);
        }
    }
}

// Tells what is so now, when all that was sent before has arrived.
void MemoryBus::TellOwner(guint subscription) {
    const bool hasOwner = HasOwner(m_subscriptions.at(subscription).name);
    Deliver([this, subscription, hasOwner] {
        const auto found = m_subscriptions.find(subscription);
        if (found == m_subscriptions.end()) {
            return;
        }
        const Subscription& watch = found->second;
        const std::string name = watch.name;
        if (hasOwner && watch.onAppeared != nullptr) {
            watch.onAppeared(Connection(), name.c_str(), ":1.1", watch.data);
        } else if (!hasOwner && watch.onVanished != nullptr) {
            watch.onVanished(Connection(), name.c_str(), watch.data);
        }
    });
}
