// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <iostream>
#include <string>
#include <vector>

#include "tests/recorder/Recorder.h"
#include "tests/recorder/Tv.h"

using Texts = std::vector<std::string>;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// A test on a fresh platform. What it leaves there, once its own members are gone, fails it.
class PlatformTest : public ::testing::Test {
protected:
    PlatformTest() { Tv::Reset(); }
    ~PlatformTest() override {
        // What is on its way ends, or it would count as a leak.
        Tv::RunPending();
        EXPECT_THAT(Recorder::Leftovers(), IsEmpty());
        if (HasFailure()) {
            std::cout << "On the platform since the record was cleared:\n";
            for (const std::string& text : Recorder::Story()) {
                std::cout << "    " << text.substr(0, 200) << "\n";
            }
        }
    }
};
