// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "tools/tv-sim/Adapter.h"

namespace TvSim {

// A crowd that advertises while the TV scans, each member at its interval. The adapter must outlive
// it.
[[nodiscard]] std::unique_ptr<Neighbour> MakeStrangers(const StrangersPlan& plan, Adapter& adapter);

// Has all the addresses that no phone has: nobody answers when the TV pages them, so that a
// connection request fails after the page timeout.
[[nodiscard]] std::unique_ptr<Neighbour> MakeNobody();

}  // namespace TvSim
