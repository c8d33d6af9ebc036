// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// Shows and sets the product features of this host.
class FeatureCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode Get(const Arguments& arguments, Console& console);
    static ExitCode Set(const Arguments& arguments, Console& console);
    static ExitCode List(const Arguments& arguments, Console& console);
};

}  // namespace Tvctl
