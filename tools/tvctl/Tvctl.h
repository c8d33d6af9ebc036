// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/tvctl/commands/Console.h"

namespace Tvctl {

// Runs one command line; `words` without the program's name.
[[nodiscard]] ExitCode Run(const std::vector<std::string>& words, std::ostream& out,
                           std::ostream& err);

}  // namespace Tvctl
