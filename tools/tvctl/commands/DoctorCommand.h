// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// Says why a phone would not be connected, and what would help.
class DoctorCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode Examine(const Arguments& arguments, Console& console);
};

}  // namespace Tvctl
