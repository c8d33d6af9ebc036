// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/Console.h"
#include "tools/tvctl/trace/LogReader.h"

namespace Tvctl {

// Sends the wake-up, draws what the service's log tells of it, and ends when it is over: kDone if a
// phone plays. Nothing is sent if the log cannot be read.
[[nodiscard]] ExitCode WakeAndWait(const LogSource& log, Console& console);

}  // namespace Tvctl
