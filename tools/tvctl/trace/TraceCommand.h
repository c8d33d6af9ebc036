// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// Makes the timeline of each wake-up out of a log of the service.
class TraceCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode Trace(const Arguments& arguments, Console& console);
};

}  // namespace Tvctl
