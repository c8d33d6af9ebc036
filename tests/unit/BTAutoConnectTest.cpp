// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"
#include "tests/Phones.h"
#include "tests/unit/PlatformTest.h"

// What the engine does, the simulation and the scenarios show. Here is what only its owner sees.

namespace {

class BTAutoConnectTest : public PlatformTest {
protected:
    BTAutoConnectTest() {
        Tv::SetState("ambient_mode", 1);
        Tv::SetState("ambient_type", 1);
        TvSim::PhonePlan phone = Tv::QuietPhone(kA);
        phone.connect.kind = TvSim::ConnectAnswer::Kind::kNever;
        Tv::StartBluez({phone});
        Register({kA});
        engine.emplace();
        Tv::RunPending();
    }

    std::optional<CBtAutoConnect> engine;
};

TEST_F(BTAutoConnectTest, IsIdleScanningOrConnecting) {
    EXPECT_EQ(engine->GetStatus(), 0);
    EXPECT_FALSE(engine->IsPortrait());
    engine->StartAutoConnect();
    EXPECT_EQ(engine->GetStatus(), 1);
    Tv::Advance(5000);
    EXPECT_EQ(engine->GetStatus(), 2);
    engine->OnAudioSinkConnectionState(BT_ERROR_NONE, true, kB.c_str());
    EXPECT_EQ(engine->GetStatus(), 0);
    engine->ConnectToDevice(kA);
    engine->OnAudioSinkConnectionState(BT_ERROR_TIMED_OUT, true, nullptr);
    engine->OnAudioSinkConnectionState(BT_ERROR_TIMED_OUT, true, nullptr);
    EXPECT_EQ(engine->GetStatus(), 0) << "the list has no other phone";
    engine->ConnectToDevice(kA);
    EXPECT_FALSE(engine->ConnectToDevice(kB)) << "it has no bond";
    EXPECT_EQ(engine->GetStatus(), 0);
    Tv::SetState("ambient_mode", 0);
    EXPECT_TRUE(engine->ConnectToDevice(kA)) << "nobody else is to be tried either";
    EXPECT_EQ(engine->GetStatus(), 0);
}

TEST_F(BTAutoConnectTest, AttemptClosesTheWindowAndTheEngineTakesItsTimersAlong) {
    EXPECT_FALSE(engine->IsWakeUpTime());
    engine->SetWakeUpTime(true);
    EXPECT_TRUE(engine->IsWakeUpTime());
    engine->StartAutoConnect();
    EXPECT_FALSE(engine->IsWakeUpTime());
    EXPECT_EQ(Recorder::TimersRunning(), 2U) << "the window's timer runs out by itself";
    engine.reset();
    EXPECT_EQ(Recorder::TimersRunning(), 0U);
}

}  // namespace
