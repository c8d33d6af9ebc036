// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <functional>

// The clock of a process that does not wait: CLOCK_MONOTONIC stands still while the process works,
// and goes on at once to the time when the next thing is due when the default main context would
// wait for it, or when anybody sleeps. Programs that link this have it from their start.
namespace VirtualTime {

// Since the start of the process, in milliseconds.
[[nodiscard]] gint64 NowMs();

// Takes the default main context over. `onIdle` runs when nothing will become due within half an
// hour; it must make something due.
void Begin(std::function<void()> onIdle);

}  // namespace VirtualTime
