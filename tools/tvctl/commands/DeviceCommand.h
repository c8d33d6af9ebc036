// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// The bonded devices, and what the device database holds of them.
class DeviceCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode List(const Arguments& arguments, Console& console);
    static ExitCode Show(const Arguments& arguments, Console& console);
    static ExitCode Type(const Arguments& arguments, Console& console);
    static ExitCode SetUse(const Arguments& arguments, bool use, Console& console);
    static ExitCode Forget(const Arguments& arguments, Console& console);
    static ExitCode History(const Arguments& arguments, Console& console);
};

}  // namespace Tvctl
