// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <future>

#include "platform/device_power.h"
#include "platform/event_wait.h"
#include "platform/screen_manager.h"
#include "platform/sound_manager.h"
#include "platform/system_info.h"
#include "tests/contract/World.h"

namespace {

using StateContractTest = ContractTest;

TEST_F(StateContractTest, FeatureIsReadOnlyInItsType) {
    for (const std::string key : {"tv/flag", "tv/number", "tv/text", "tv/none"}) {
        bool flag = false;
        int number = 0;
        EXPECT_EQ(system_info_get_custom_bool(key.c_str(), &flag) == 0, key == "tv/flag");
        EXPECT_EQ(system_info_get_custom_int(key.c_str(), &number) == 0, key == "tv/number");
        EXPECT_TRUE(flag == (key == "tv/flag") && number == (key == "tv/number" ? 7 : 0)) << key;
    }
}

TEST_F(StateContractTest, WhatIsSetIsVisibleAgain) {
    for (const int i : {1, 2}) {
        bool muted = i == 2;
        device_power_set_wakeup_reason(i);
        device_power_set_state(static_cast<power_state_e>(i), 0);
        screen_manager_set_ambient_mode(i, i + 3);
        sound_manager_set_device_mute(SOUND_DEVICE_TV_SPEAKER, i == 1);
        sound_manager_set_tv_master_mute(i == 2);
        EXPECT_EQ(sound_manager_get_device_mute(SOUND_DEVICE_TV_SPEAKER, &muted), 0);
        EXPECT_TRUE(muted == (i == 1) && device_power_get_wakeup_reason() == i);
        EXPECT_TRUE(device_power_get_state() == i && device_power_get_ambient_mode() == i);
        EXPECT_EQ(device_power_get_ambient_type(), i + 3);
    }
}

TEST_F(StateContractTest, RaisedEventEndsEveryWaitUntilItIsWithdrawn) {
    const auto wait = [](int timeoutMs) {
        return std::async(std::launch::async, LwipcWaitEvent, "/ready", timeoutMs);
    };
    EXPECT_LT(wait(20).get(), 0);
    std::future<int> waiting = wait(60000);
    m_world->SetRaised("/ready", true);
    EXPECT_EQ(waiting.get(), 0);
    EXPECT_EQ(wait(0).get(), 0);
    EXPECT_EQ(wait(0).get(), 0);
    m_world->SetRaised("/ready", false);
    EXPECT_LT(wait(0).get(), 0);
}

}  // namespace
