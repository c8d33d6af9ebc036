// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>

namespace Bluez {

// A deadline for something that comes over the bus. When this process was stopped for a while, what
// it waits for may lie in its queue by then: so the bus is asked for a sign of life first, whose
// answer comes after all that was sent before, and the deadline passes with that. It is cancelled
// when its owner drops or replaces it. Main loop only.
class Deadline {
public:
    Deadline() = default;
    // Runs `action` once after `ms` milliseconds. `connection` may be NULL: nothing can come then.
    Deadline(GDBusConnection* connection, int ms, std::function<void()> action);

    void Cancel() { m_pending.reset(); }

private:
    struct Pending;
    using WeakPending = std::weak_ptr<Pending>;
    static void Pass(const WeakPending& weak);

    std::shared_ptr<Pending> m_pending;
};

}  // namespace Bluez
