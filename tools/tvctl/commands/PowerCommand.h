// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// Shows and sets the TV's state on a host that has no TV.
class PowerCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode Show(const Arguments& arguments, Console& console);
    static ExitCode Set(const Arguments& arguments, Console& console);
};

}  // namespace Tvctl
