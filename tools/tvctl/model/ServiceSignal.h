// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <string>

namespace Tvctl {

// Sends the service a command, which it takes as a signal on its interface. Why the command cannot
// have had an effect; empty when it was sent and the service is there to hear it, for which some
// seconds are waited at most. `parameters` is a tuple, may be floating and may be NULL.
[[nodiscard]] std::string SendToService(const char* command, GVariant* parameters);

}  // namespace Tvctl
