// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Check.h"
#include "fuzz/ScratchFile.h"
#include "tools/tv-sim/Scenario.h"

// A scenario file.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ScratchFile scratch("scenario.ini");
    std::string error;
    const auto scenario = TvSim::ReadScenario(scratch.Hold(data, size), error);
    Check(scenario.has_value() == error.empty(), "a refusal has a reason, a success none", error);
    if (!scenario) {
        return 0;
    }
    for (const TvSim::PhonePlan& phone : scenario->phones) {
        Check(phone.address.size() == 17, "a phone has an address", phone.address);
        Check(scenario->FindPhone(phone.id) != nullptr, "a phone is found by its name", phone.id);
    }
    for (const auto& named : {scenario->expect.connected, scenario->expect.playing}) {
        Check(named.value_or("").empty() || scenario->FindPhone(*named) != nullptr,
              "a phone that is expected is there");
    }
    return 0;
}
