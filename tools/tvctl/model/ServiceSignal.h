// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <string>

namespace Tvctl {

// The outcome of sending a signal; `reason` says why it cannot have had an effect.
struct SignalResult {
    bool isHeard;  // it was sent and the service is there to hear it
    std::string reason;
};

// Sends the service a command, which it takes as a signal on its interface, and waits until the bus
// has it. `parameters` is a tuple, may be floating and may be NULL.
[[nodiscard]] SignalResult SendToService(const char* command, GVariant* parameters);

}  // namespace Tvctl
