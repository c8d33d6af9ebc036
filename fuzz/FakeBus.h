// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <map>

#include "common/CHandle.h"

// The system bus in memory, in place of the bus library's functions that the mirror of bluetoothd
// calls: there is one connection, and what comes over it is what the methods here are told. The
// bus's clock is the one of every timer, too. One at a time. Main thread only.
class FakeBus {
public:
    using SourcePtr = CPtr<GSource, g_source_unref>;

    FakeBus();
    // Answers the calls that nobody answered with an error.
    ~FakeBus();
    FakeBus(const FakeBus&) = delete;
    FakeBus& operator=(const FakeBus&) = delete;
    static FakeBus& Get();

    // Hands the connection to the one who asked for it.
    void Connect();
    void Appear();
    void Vanish();
    // `parameters` is of any type.
    void Signal(const char* path, const char* member, GVariant* parameters);
    // Answers the oldest call that is still waited for; nothing when there is none. Without an
    // answer it fails with the D-Bus error of that name. Signs of life are answered by the bus
    // itself.
    void Answer(GVariant* answer, const char* failure);
    // Lets the time pass until the next timer is due.
    void Wait();
    // Runs what is due.
    void Settle();

    GAsyncReadyCallback onConnection = nullptr;
    gpointer connectionData = nullptr;
    GDBusSignalCallback onSignal = nullptr;
    gpointer signalData = nullptr;
    GBusNameAppearedCallback onAppeared = nullptr;
    GBusNameVanishedCallback onVanished = nullptr;
    gpointer nameData = nullptr;
    struct Call {
        GAsyncReadyCallback done;
        gpointer data;
        GObjectPtr<GCancellable> cancellable;
    };
    void Finish(const Call& call, GVariant* answer, const char* failure);
    std::deque<Call> calls;
    std::deque<Call> signsOfLife;  // asked for
    GVariant* reply = nullptr;     // of the call that is being answered, not owned; NULL: it failed
    const char* errorName = nullptr;
    guint64 nowMs = 0;
    std::multimap<guint64, SourcePtr> timers;  // by the time when they are due
};
