// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <optional>

#include "common/CHandle.h"

namespace Platform {

// Names the turn of the main loop that this code runs in; empty outside of one.
[[nodiscard]] std::optional<std::int64_t> LoopTurn();

// Lets others see whether the main loop runs: AskMainLoop of another process, and systemd, if it
// watches this process (WatchdogSec=), twice in each interval in which it wants to hear of it. To
// be called on the main loop, before a name on the bus is asked for; a second time it does nothing.
void TellOfMainLoop();

// Asks the main loop of the process that owns the name on the bus, and waits for the answer. Null
// when it answered. Does not start a process.
[[nodiscard]] GErrorPtr AskMainLoop(GDBusConnection* bus, const char* name, int timeoutMs);

}  // namespace Platform
