// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// The commands of tvctl, a function for each first word; its source is named like it.

// Tells the service what the TV tells it at a wake-up.
[[nodiscard]] CommandGroup WakeCommands();
// Says why a phone would not be connected, and what would help.
[[nodiscard]] CommandGroup DoctorCommands();
// Tells what became of each wake-up, from a log of the service.
[[nodiscard]] CommandGroup TraceCommands();
// The registered phones.
[[nodiscard]] CommandGroup PhoneCommands();
// Reads, writes and watches keys of the configuration store.
[[nodiscard]] CommandGroup ConfCommands();
// Reads and writes the product features.
[[nodiscard]] CommandGroup FeatureCommands();
// Shows and sets the TV's state on a host that is not a TV.
[[nodiscard]] CommandGroup PowerCommands();
// The bonded devices, and what the device database holds about them.
[[nodiscard]] CommandGroup DeviceCommands();

}  // namespace Tvctl
