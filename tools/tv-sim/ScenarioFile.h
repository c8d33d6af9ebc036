// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "tools/tv-sim/Scenario.h"

namespace TvSim {

// Reads a scenario. Empty when the file cannot be read or says something unknown or malformed;
// `error` then is one line with the file's name, the section and the key.
[[nodiscard]] std::optional<Scenario> ReadScenario(const std::string& file, std::string& error);

// The format, for a person, as `--help` prints it.
extern const char kScenarioHelp[];

}  // namespace TvSim
