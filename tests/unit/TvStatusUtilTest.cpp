// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/PlatformTest.h"
#include "utility/TvStatusUtil.h"

using Util::TvStatusUtil;

namespace {

class TvStatusUtilTest : public PlatformTest {
protected:
    // The story of `action` without the lines of what it asked the TV before it acted.
    static Texts Acts(void (*action)()) {
        Recorder::ClearRecord();
        action();
        Texts story;
        for (const std::string& text : Recorder::Story()) {
            if (text.find(" Get") == std::string::npos && text.find(" Is") == std::string::npos) {
                story.push_back(text);
            }
        }
        return story;
    }
    // The TV as the lock of low-power mode needs it.
    static void EnterLowPower() {
        Tv::SetState("power_state", 4);
        Tv::SetState("ambient_mode", 2);
    }
};

TEST_F(TvStatusUtilTest, AnswersFromTheTv) {
    EXPECT_FALSE(TvStatusUtil::isWifiSpeakerConnecting());
    for (const int status : {1, 0, -1}) {
        Tv::SetKey("memory/acm/networkspeaker_status", status);
        EXPECT_EQ(TvStatusUtil::isWifiSpeakerConnecting(), status == -1);
    }
    Recorder::ClearRecord();
    for (const int state : {0, 1, 2, 4}) {
        Tv::SetState("power_state", state);
        EXPECT_EQ(TvStatusUtil::IsValidPowerState(), state < 2);
    }
    Tv::SetState("ambient_type", 5);
    EXPECT_EQ(TvStatusUtil::GetAmbientType(), 5);
    EXPECT_EQ(TvStatusUtil::GetAmbientMode(), 0);
    EXPECT_FALSE(TvStatusUtil::GetTvSpeakerMute());
    Tv::SetState("tv_speaker_mute", 1);
    EXPECT_TRUE(TvStatusUtil::GetTvSpeakerMute());
    EXPECT_THAT(Recorder::Story(),
                ElementsAre("I utility GetPowerState: Power state = 0",
                            "I utility GetPowerState: Power state = 1",
                            "I utility GetPowerState: Power state = 2",
                            "I utility GetPowerState: Power state = 4",
                            "I utility GetAmbientType: Current Ambient type : 5",
                            "I utility GetAmbientMode: Current Ambient Mode : 0"));
}

TEST_F(TvStatusUtilTest, SwitchesPower) {
    Recorder::Fail("device_power_set_state", -5);
    TvStatusUtil::SetPowerState(POWER_STATE_LOW_POWER);
    EXPECT_THAT(Recorder::TakeStory(),
                ElementsAre("device_power_set_state(4,1)",
                            "I utility SetPowerState: device_power_set_state 4, result :-5"));
    for (const int state : {0, 1, 2, 4}) {
        Tv::SetState("power_state", state);
        EXPECT_EQ(Acts([] { TvStatusUtil::PictureOn(); }),
                  state == 1 ? Texts{"device_power_set_state(0,1)"} : Texts{});
    }
}

TEST_F(TvStatusUtilTest, LocksStandby) {
    Recorder::Fail("device_power_lock_state", -16);
    Recorder::Fail("device_power_unlock_state", 5);
    TvStatusUtil::SetStandbyPowerLock(0);
    TvStatusUtil::UnSetStandbyPowerLock();
    EXPECT_THAT(
        Recorder::Story(),
        ElementsAre("device_power_lock_state(2,0)",
                    "E utility SetStandbyPowerLock: power lock state failed -> ret [RESOURCE_BUSY]",
                    "I utility SetStandbyPowerLock: standby lock(timout == 0ms) : -16",
                    "device_power_unlock_state(2)",
                    "E utility UnSetStandbyPowerLock: power lock state failed -> ret [None]",
                    "I utility UnSetStandbyPowerLock: standby unlock : 5"));
}

TEST_F(TvStatusUtilTest, HoldsLowPowerModeByItsLock) {
    const auto lock = [] { TvStatusUtil::LockLpmPowerState(30); };
    const auto unlock = [] { TvStatusUtil::UnlockLpmPowerState(); };
    const Texts refusedLock = {"E utility LockLpmPowerState: Not LPM mode"};
    EXPECT_EQ(Acts(lock), refusedLock);
    Tv::SetState("power_state", 4);
    EXPECT_EQ(Acts(lock), refusedLock) << "low power without the ambient mode";
    EXPECT_EQ(Acts(unlock), Texts({"E utility UnlockLpmPowerState: Not LPM mode"}));
    EnterLowPower();
    const Texts notHeld = {"E utility UnlockLpmPowerState: ambient lock is not called"};
    EXPECT_EQ(Acts(unlock), notHeld);
    const Texts locked = {"screen_manager_set_ambient_lock(1,30)",
                          "E utility LockLpmPowerState: <Not Error> Lock LPM"};
    Recorder::Fail("screen_manager_set_ambient_lock", -1);
    EXPECT_EQ(Acts(lock), locked);
    EXPECT_EQ(Acts(unlock), notHeld) << "the lock had failed";
    EXPECT_EQ(Acts(lock), locked);
    const Texts unlocked = {"screen_manager_set_ambient_lock(0,0)",
                            "E utility UnlockLpmPowerState: <Not Error> UnLock LPM"};
    Recorder::Fail("screen_manager_set_ambient_lock", -1);
    EXPECT_EQ(Acts(unlock), unlocked);
    EXPECT_EQ(Acts(unlock), unlocked) << "still held after a failed unlock";
    EXPECT_EQ(Acts(unlock), notHeld);
}

TEST_F(TvStatusUtilTest, SendsTheTvToSleep) {
    const auto sleep = [] { TvStatusUtil::SleepTv(); };
    EXPECT_THAT(Acts(sleep), IsEmpty());
    Tv::SetState("power_state", 2);
    EXPECT_EQ(Acts(sleep), Texts({"I utility SleepTv: Go to suspend  from BackGround Standby",
                                  "device_power_request_poweroff(4)"}));
    Tv::SetState("power_state", 4);
    EXPECT_EQ(Acts(sleep),
              Texts({"E utility SleepTv: <Not Error> Go to suspend from Low Power Mode",
                     "screen_manager_set_ambient_mode(3,2)"}));
}

TEST_F(TvStatusUtilTest, WakesTheTvAndKnowsItsArt) {
    const Texts begin = {"device_power_set_wakeup_reason(1)",
                         "E utility WakeUpTv: <Not Error> Go to Normal from Low Power Mode"};
    const auto expect = [&](bool isArt, int event, int mode) {
        Tv::SetState("power_state", 4);
        Tv::SetState("ambient_mode", mode);
        Tv::SetKey("db/nirvo/ambient_mode_full_power_off_event", event);
        Texts story = begin;
        if (isArt) {
            story.emplace_back("I utility WakeUpTv: turn on with artmode");
        }
        story.emplace_back(isArt ? "screen_manager_set_ambient_mode(1,4)"
                                 : "screen_manager_set_ambient_mode(0,0)");
        EXPECT_EQ(Acts([] { TvStatusUtil::WakeUpTv(POWER_STATE_LOW_POWER); }), story);
    };
    expect(false, 1, 2);
    EXPECT_FALSE(TvStatusUtil::IsArtAppShowing());
    EXPECT_EQ(Recorder::Story().back(), "I utility IsArtAppShowing: Not lumeo TV");

    // From here on for good: the product line is read once.
    Tv::SetFeature("com.velmora/featureconf/lumeo_tv", "true");
    expect(true, 1, 2);  // whether it is art-mode-only cannot be read
    expect(false, 2, 2);
    expect(false, 1, 1);
    Tv::SetFeature("com.velmora/featureconf/artapp.artmode_only_support", "true");
    expect(false, 1, 2);  // for good, too

    Tv::SetState("ambient_mode", 1);
    Tv::SetState("ambient_type", 4);
    EXPECT_TRUE(TvStatusUtil::IsArtAppShowing());
    Tv::SetState("ambient_type", 3);
    EXPECT_FALSE(TvStatusUtil::IsArtAppShowing());
    EXPECT_EQ(Acts([] { TvStatusUtil::WakeUpTv(POWER_STATE_BACKGROUND_STANDBY); }),
              Texts({"device_power_set_wakeup_reason(1)",
                     "I utility WakeUpTv: Go to Normal from BackGround Standby",
                     "device_power_set_state(0,1)"}));
    EXPECT_EQ(Acts([] { TvStatusUtil::WakeUpTv(POWER_STATE_PICTURE_OFF); }),
              Texts({"device_power_set_wakeup_reason(1)"}));
}

}  // namespace
