// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/simulation/World.h"

// What happens around the service between two times at which all is well.
struct Step {
    int atMs;          // after the story began
    std::string what;  // for a person
    std::function<void(World&)> run;
    bool isWakeUp = false;
};

// The story with that number of that seed: always the same, its steps in the order of their time.
// Each step stands for itself, so that a story without some of its steps is one, too.
[[nodiscard]] std::vector<Step> MakeStory(std::uint64_t seed, int number);
