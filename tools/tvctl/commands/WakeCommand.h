// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// Tells the service what the TV tells it around a wake-up.
class WakeCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode Wake(const Arguments& arguments, Console& console);
};

}  // namespace Tvctl
