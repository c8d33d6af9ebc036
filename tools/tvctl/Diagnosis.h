// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace Tvctl {

// One condition between a wake-up and music.
struct Finding {
    std::string condition;
    bool holds = false;
    std::string found;   // what is there instead, or that makes it hold
    std::string remedy;  // what would make it hold; empty when it does
};

// Looks at every condition in the order in which the service meets them. Waits some seconds for
// bluetoothd at most. A condition that cannot be looked at because an earlier one does not hold is
// left out.
[[nodiscard]] std::vector<Finding> Diagnose();

}  // namespace Tvctl
