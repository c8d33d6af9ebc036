// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

namespace TvSim {

// Takes what happens in the simulated world, one short sentence each: `subject` is "bus",
// "adapter", "strangers" or "phone NAME". Called on the simulator's thread.
using EventSink = std::function<void(const std::string& subject, const std::string& what)>;

}  // namespace TvSim
