// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "common/CHandle.h"

// The system bus in memory, in place of the bus library's functions that the service and a
// simulated bluetoothd in the same process call. What is sent to the service reaches it on the main
// loop, answers included, in the order in which it was sent, as on a bus. One at a time. Main
// thread only.
class MemoryBus {
public:
    // A call of the service.
    struct CallInfo {
        std::string destination;
        std::string path;
        std::string interface;  // empty: any
        std::string method;
        GVariantPtr arguments;
    };
    // What becomes of it.
    struct Treatment {
        bool isDelivered = true;  // it reaches whom it is for; else the answer is empty
        bool isAnswered = true;   // else the answer is lost
        int deliverAfterMs = 0;
        int answerAfterMs = 0;  // after it was answered
        std::string error;      // D-Bus error name of the answer, whatever was done
        std::string message;    // of the error
    };

    MemoryBus();
    ~MemoryBus();
    MemoryBus(const MemoryBus&) = delete;
    MemoryBus& operator=(const MemoryBus&) = delete;
    static MemoryBus& Get();
    static bool IsThere();
    // Never handed to the bus library, which would miss its socket.
    static GDBusConnection* Connection();
    // Owns what may be floating or NULL.
    static GVariantPtr Keep(GVariant* variant);

    // Asked before each call. Empty: each one is delivered, and answered as soon as it may be.
    std::function<Treatment(const CallInfo&)> treat;
    // Told of each call that is over: answered or given up.
    std::function<void(const CallInfo&)> onCallOver;
    // Told of a call that waits for its answer.
    std::function<void(const std::string& method)> onSyncCall;
    // What such a call, on any thread, is answered at once: a tuple (null: an empty one), or
    // the D-Bus error that it sets. Empty: it fails.
    std::function<GVariantPtr(const CallInfo&, std::string& error)> answerSyncCall;

    // What is sent to the service from now on takes that long.
    void SetLatency(int ms) { m_latencyMs = ms; }
    // Sends the service a signal. `parameters` may be floating.
    void Signal(const std::string& path, const std::string& interface, const std::string& member,
                GVariant* parameters);

    // For a program that is bluetoothd itself: has its name or not, and answers the oldest call to
    // it, if there is one, with any value, or with an error of that D-Bus name.
    void SetBluez(bool isThere);
    void AnswerBluez(GVariant* reply, const char* error);

    [[nodiscard]] std::size_t PendingCalls() const { return m_calls.size(); }
    // Signals and names that are listened to.
    [[nodiscard]] std::size_t Subscriptions() const { return m_subscriptions.size(); }
    // Objects and names that the service has on the bus.
    [[nodiscard]] std::size_t Objects() const { return m_objects.size(); }
    // A unique name, such as ":1.7", always has one.
    [[nodiscard]] bool HasOwner(const std::string& name) const {
        return name[0] == ':' || m_owned.count(name) != 0;
    }

private:
    // The functions in place of the bus library's.
    friend struct BusLibrary;

    static constexpr char kBluez[] = "org.bluez";
    using Action = std::function<void()>;
    struct Subscription {
        std::string name;       // whose owner is watched; empty: a signal is listened to
        std::string interface;  // empty: any
        std::string member;     // empty: any
        GDBusSignalCallback onSignal;
        GBusNameAppearedCallback onAppeared;
        GBusNameVanishedCallback onVanished;
        gpointer data;
    };
    struct Call {
        CallInfo info;
        Treatment treatment;
        GAsyncReadyCallback done;
        gpointer data;
        GObjectPtr<GCancellable> cancellable;
        gulong cancelHandler = 0;
        bool isGivenUp = false;
    };
    struct Filter {
        GDBusMessageFilterFunction run;
        gpointer data;
        GDestroyNotify free;
    };

    // Runs `action` on the main loop after that time; those of the same time in order.
    void After(gint64 ms, Action action);
    // Runs it after all that is on its way to the service.
    void Deliver(Action action);
    void Schedule();
    void RunNext();
    void Begin(Call call, int timeoutMs);
    void Send(guint serial);
    void SendToBluez(guint serial, const CallInfo& info);
    // Answers as the treatment of the call says. `reply` is NULL with an error.
    void Answer(guint serial, const GVariantPtr& reply, const std::string& error,
                const std::string& message);
    void GiveUp(guint serial);
    void Finish(guint serial, const GVariantPtr& reply, const GErrorPtr& error);
    // `id` is that of m_names, 0 for a name that nobody gives up.
    void Own(guint id, const std::string& name, GBusAcquiredCallback onBus,
             GBusNameAcquiredCallback onAcquired, gpointer data);
    void Disown(const std::string& name);
    void TellOwner(guint subscription);

    CPtr<GSource, g_source_unref> m_source;
    std::multimap<gint64, Action> m_agenda;  // by time, in ms
    gint64 m_lastDeliveryMs = 0;
    int m_latencyMs = 0;
    guint m_lastId = 0;  // of anything below
    std::map<guint, Call> m_calls;
    std::map<guint, Subscription> m_subscriptions;
    std::map<guint, Filter> m_filters;
    std::map<guint, std::string> m_names;
    std::set<std::string> m_owned;
    std::set<guint> m_objects;
    GVariant* m_reply = nullptr;      // of the call that is being answered; not owned
    const GError* m_error = nullptr;  // the same
};
