// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

// Makes the timeline of each wake-up out of a log of the service.
namespace Tvctl::TraceCommand {

[[nodiscard]] CommandGroup Group();

}  // namespace Tvctl::TraceCommand
