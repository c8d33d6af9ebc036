// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/CHandle.h"
#include "platform/linux/bluez/Names.h"

namespace Bluez {

// A method call to bluetoothd that waits for its answer on the main loop. Dropping it gives the
// answer up: the action then never runs, so an operation that was overtaken cannot act on late
// news. The daemon is never started by a call.
class Call {
public:
    // `reply` is the answer's tuple, NULL on an error; both are valid during the call.
    using Done = std::function<void(GVariant* reply, const GError* error)>;

    // A call that is not there.
    Call() = default;
    // `arguments` is a floating tuple or NULL. Without an answer within `timeoutMs` the call is
    // given up, and `done` gets G_IO_ERROR_TIMED_OUT.
    Call(GDBusConnection* connection, const std::string& path, const char* interface,
         const char* method, GVariant* arguments, int timeoutMs, Done done);

    // Forgets the answer.
    void Drop() { m_pending.reset(); }
    explicit operator bool() const { return m_pending != nullptr; }

private:
    struct Pending;
    using WeakPending = std::weak_ptr<Pending>;
    static void Finish(const WeakPending& weak, GVariant* reply, const GError* error);

    std::shared_ptr<Pending> m_pending;
};

// A call whose answer nobody waits for: a failure is logged as "`what` failed: ...", and `then`
// runs after a success. Arguments as those of Call.
void Send(GDBusConnection* connection, const std::string& path, const char* interface,
          const char* method, GVariant* arguments, const std::string& what,
          std::function<void()> then = {});

// Send to set a property; `value` is floating.
void SetProperty(GDBusConnection* connection, const std::string& path, const char* interface,
                 const char* property, GVariant* value, std::function<void()> then = {});

}  // namespace Bluez
