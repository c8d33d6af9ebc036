// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <iostream>
#include <string>
#include <vector>

#include "tests/fake_platform/FakePlatform.h"

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
    PlatformTest() { Fake::Reset(); }
    ~PlatformTest() override {
        EXPECT_THAT(Fake::Leftovers(), IsEmpty());
        if (HasFailure()) {
            std::cout << "On the platform since the record was cleared:\n";
            for (const std::string& text : Fake::Story()) {
                std::cout << "    " << text.substr(0, 200) << "\n";
            }
        }
    }
};
