// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/tv-sim/Scenario.h"

namespace TvSim {

// One advertisement as the TV's radio receives it.
struct Advertisement {
    std::string address;  // upper case
    bool randomAddress = true;
    bool connectable = true;
    int rssi = -60;    // dBm
    std::string name;  // empty when it carries none
    ManufacturerData manufacturerData;
};

}  // namespace TvSim
