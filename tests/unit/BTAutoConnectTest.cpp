// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"
#include "common/AdvertisingData.h"
#include "tests/unit/Phones.h"
#include "tests/unit/PlatformTest.h"

namespace {

using Bytes = std::vector<unsigned char>;

// What a phone sends: `size` bytes of manufacturer data, its address at bytes 7 to 12.
Bytes Beacon(const std::string& address, std::size_t size = 16) {
    Bytes data(size, 0xEE);
    for (std::size_t i = 0; i < 6 && 7 + i < size; ++i) {
        data[7 + i] = static_cast<unsigned char>(std::stoi(address.substr(3 * i, 2), nullptr, 16));
    }
    return MakeManufacturerPacket(0x1234, data.data(), data.size());
}

class BTAutoConnectTest : public PlatformTest {
protected:
    BTAutoConnectTest() {
        Fake::TheWorld().ambientMode = 1;
        Fake::TheWorld().ambientType = 1;
        Fake::TheWorld().devices = {{kA, {}}, {kB, {}}};
        Start({kA, kB});
    }

    // An engine that knows these phones.
    void Start(const Texts& phones) {
        Register(phones);
        engine.reset();
        engine.emplace();
        Fake::RunPending();
        Fake::ClearRecord();
    }
    void Scan() {
        engine->StartAutoConnect();
        Fake::ClearRecord();
    }
    // As the platform reports the end of an attempt to connect.
    void Connected(const std::string& address, int result = BT_ERROR_NONE) {
        engine->OnAudioSinkConnectionState(result, true, address.c_str());
    }
    Texts TakeStory() { return Fake::TakeStory("service"); }

    std::optional<CBtAutoConnect> engine;
};

const Texts kPassBegins = {
    "I service StopLEScan: Stop Le Scan", "bt_adapter_le_stop_scan()",
    "I service OnLEScanTimeout: No found mobile. Try to connect mobiles in list sequentially",
    "I service ConnectToDeviceInList: Try to connect device",
    "I service IsValidCondition: Ambient mode"};

Texts Tries(const std::string& address) {
    return {"I service ConnectToDevice: Try to connect " + address,
            "bt_audio_connect(" + address + ",4)"};
}

Texts operator+(Texts left, const Texts& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST_F(BTAutoConnectTest, ConnectsTheRegisteredPhoneItHears) {
    engine->StartAutoConnect();
    EXPECT_EQ(
        TakeStory(),
        Texts({"I service IsValidCondition: Ambient mode",
               "I service StartAutoConnect: auto connection devices : " + kA + ", " + kB + ", ",
               "bt_adapter_le_start_scan()", "I service StartLEScan: Start LE scan : ERROR_NONE",
               "g_timeout_add(5000)"}));
    EXPECT_EQ(engine->GetStatus(), 1);
    Fake::Advance(4999);
    EXPECT_TRUE(Fake::Hear(Beacon(kC)));
    EXPECT_THAT(TakeStory(), ElementsAre("I service ByteArrayToHexString: " + kC));
    EXPECT_TRUE(Fake::Hear(Beacon(kB)));
    EXPECT_EQ(
        TakeStory(),
        Texts({"I service ByteArrayToHexString: " + kB, "I service Exist: Found " + kB + " in list",
               "I service StopLEScan: Stop Le Scan", "g_source_remove(5000)",
               "bt_adapter_le_stop_scan()", "I service IsValidCondition: Ambient mode"}) +
            Tries(kB));
    EXPECT_EQ(engine->GetStatus(), 2);

    CBtAutoConnect::OnLeScanResult(BT_ERROR_NONE, nullptr, &*engine);
    EXPECT_THAT(TakeStory(),
                ElementsAre("W service ProcessLEScanResult: Device Found Already, Ignore"));

    Connected(kB);
    EXPECT_THAT(TakeStory(),
                ElementsAre("I service OnAudioSinkConnected: result : 0, address : " + kB,
                            "g_timeout_add(3000)"));
    EXPECT_EQ(engine->GetStatus(), 0);
    Fake::Advance(3000);
}

TEST_F(BTAutoConnectTest, RefusesToStart) {
    const std::tuple<int, int, const char*> cases[] = {{1, 1, "auto connection list is empty"},
                                                       {1, 4, "Not supported condition"},
                                                       {2, 1, "Not supported condition"},
                                                       {0, 0, "Not supported condition"}};
    EXPECT_FALSE(engine->IsPortrait());
    Start({});
    for (const auto& [mode, type, reason] : cases) {
        Fake::TheWorld().ambientMode = mode;
        Fake::TheWorld().ambientType = type;
        engine->StartAutoConnect();
        EXPECT_THAT(TakeStory(), ElementsAre(std::string("W service StartAutoConnect: ") + reason));
        EXPECT_FALSE(Fake::Scanning());
        EXPECT_EQ(engine->GetStatus(), 0);
        Start({kA});
    }
}

TEST_F(BTAutoConnectTest, ReadsManufacturerDataOfFifteenBytesAndMore) {
    for (std::size_t size = 0; size <= 40; ++size) {
        Scan();
        EXPECT_TRUE(Fake::Hear(Beacon(kA, size)));
        const Texts story = TakeStory();
        if (size <= 14) {
            EXPECT_THAT(story, ElementsAre("E service ProcessLEScanResult: "
                                           "manufaturerDataLen size is small"))
                << size;
        } else {
            EXPECT_EQ(story.back(), "bt_audio_connect(" + kA + ",4)") << size;
        }
        engine->StopLEScan();
    }
}

TEST_F(BTAutoConnectTest, ScanThatDoesNotStartLeavesNoTimer) {
    Fake::TheWorld().adapterOn = false;
    engine->StartAutoConnect();
    EXPECT_EQ(TakeStory().back(),
              "E service StartLEScan: failed bt_adapter_le_start_scan: NOT_ENABLED ");
    EXPECT_EQ(Fake::TimersRunning(), 0U);
    EXPECT_EQ(engine->GetStatus(), 1);
}

TEST_F(BTAutoConnectTest, SecondWakeUpDuringAScanMakesOnePass) {
    Scan();
    Fake::Advance(2000);
    engine->StartAutoConnect();
    EXPECT_THAT(TakeStory(), Contains("I service StartLEScan: Start LE scan : TIMED_OUT"));
    Fake::Advance(20000);
    EXPECT_EQ(TakeStory(), kPassBegins + Tries(kA));
}

TEST_F(BTAutoConnectTest, BrokenScanStillLeadsToThePass) {
    Scan();
    Fake::BreakScan(BT_ERROR_NOT_ENABLED);
    CBtAutoConnect::OnLeScanResult(BT_ERROR_NONE, nullptr, nullptr);
    CBtAutoConnect::OnLEScanTimeout(nullptr);
    CBtAutoConnect::OnWakeUptimer(nullptr);
    EXPECT_THAT(TakeStory(), ElementsAre("E service OnLeScanResult: result is not BT_ERROR_NONE",
                                         "E service OnLeScanResult: user_data is NULL",
                                         "E service OnLEScanTimeout: user_data is NULL",
                                         "E service OnWakeUptimer: user_data is NULL"));
    Fake::Advance(5000);
    EXPECT_EQ(TakeStory(), kPassBegins + Tries(kA));
}

TEST_F(BTAutoConnectTest, WalksTheListWhenNoPhoneIsHeard) {
    Fake::TheWorld().devices.erase(kA);
    Start({kA, kB, kC});
    Scan();
    Fake::Advance(5000);
    const Texts skipped = {"E service ConnectToDevice: Not bonded device"};
    const Texts next = {"I service ConnectToDeviceInList: Try to connect device",
                        "I service IsValidCondition: Ambient mode"};
    EXPECT_EQ(TakeStory(), kPassBegins + skipped + next + Tries(kB));
    EXPECT_EQ(engine->GetStatus(), 2);

    Connected(kB, BT_ERROR_TIMED_OUT);
    const Texts failed = {"I service OnAudioSinkConnected: result : -1073741823, address : " + kB,
                          "E service OnAudioSinkConnected: Connect Fail"};
    const Texts end = {"W service ConnectToDeviceInList: No more device to try connect"};
    EXPECT_EQ(TakeStory(), failed + next + skipped + end);
    EXPECT_EQ(engine->GetStatus(), 0);

    Connected(kB, BT_ERROR_TIMED_OUT);
    EXPECT_EQ(TakeStory(), Texts({failed[0]})) << "nothing is being connected any more";
    Fake::Advance(60000);
    EXPECT_THAT(TakeStory(), IsEmpty());
}

TEST_F(BTAutoConnectTest, FailureAfterAMatchGoesOnWithTheList) {
    Scan();
    Fake::Hear(Beacon(kB));
    Fake::ClearRecord();
    Connected(kB, BT_ERROR_OPERATION_FAILED);
    EXPECT_EQ(TakeStory().back(), "bt_audio_connect(" + kA + ",4)");
    Connected(kA, BT_ERROR_OPERATION_FAILED);
    EXPECT_EQ(TakeStory().back(), "bt_audio_connect(" + kB + ",4)");
    Connected(kB, BT_ERROR_OPERATION_FAILED);
    EXPECT_EQ(TakeStory().back(), "W service ConnectToDeviceInList: No more device to try connect");
}

TEST_F(BTAutoConnectTest, PassEndsWhenTheTvIsInUse) {
    Scan();
    Fake::Advance(5000);
    Fake::TheWorld().ambientMode = 0;
    Fake::ClearRecord();
    Connected(kA, BT_ERROR_TIMED_OUT);
    EXPECT_EQ(TakeStory().back(), "W service ConnectToDevice: Not supported condition");
    EXPECT_EQ(engine->GetStatus(), 0);
    engine->ConnectToDeviceInList(true);
}

TEST_F(BTAutoConnectTest, ThousandsOfUnbondedPhonesAreSkipped) {
    Texts phones;
    for (int i = 0; i < 5000; ++i) {
        phones.push_back("00:00:00:00:" + std::to_string(10 + i / 90) + ":" +
                         std::to_string(10 + i % 90));
    }
    Start(phones);
    Scan();
    Fake::Advance(5000);
    EXPECT_EQ(TakeStory().back(), "W service ConnectToDeviceInList: No more device to try connect");
    EXPECT_THAT(Fake::Calls("bt_audio_connect"), IsEmpty());
}

TEST_F(BTAutoConnectTest, ConnectionThatNobodyAskedForPlaysNothing) {
    Scan();
    Fake::Hear(Beacon(kB));
    Connected(kA);
    Connected(kB);  // the first success, whichever it was, ended the attempt
    EXPECT_EQ(Fake::TimersRunning(), 0U);
    Fake::ClearRecord();
    engine->OnAudioSinkConnectionState(0, false, kB.c_str());
    EXPECT_THAT(TakeStory(),
                ElementsAre("I service OnAudioSinkDisconnected: result : 0, address : " + kB));
    engine->OnAudioSinkConnectionState(0, true, nullptr);
    EXPECT_THAT(TakeStory(), ElementsAre("I service OnAudioSinkConnected: result : 0, address : ",
                                         "g_timeout_add(3000)"))
        << "no address is the one that was asked for last";
    Fake::Advance(3000);
}

TEST_F(BTAutoConnectTest, HasThePhonePlay) {
    const char* const launch = "app_control_send_launch_request(com.velmora.tv.bmp,cmd=play)";
    const std::pair<std::optional<bt_avrcp_player_state_e>, const char*> cases[] = {
        {std::nullopt, "fail to get playing status"},
        {BT_AVRCP_PLAYER_STATE_PLAYING, "already playing"},
        {BT_AVRCP_PLAYER_STATE_PAUSED, launch},
        {BT_AVRCP_PLAYER_STATE_STOPPED, launch}};
    for (const auto& [player, end] : cases) {
        Fake::TheWorld().player = player;
        engine->ConnectToDevice(kA);
        Connected(kA);
        Fake::ClearRecord();
        Fake::Advance(2999);
        EXPECT_THAT(TakeStory(), IsEmpty());
        Fake::Advance(1);
        EXPECT_THAT(TakeStory().back(), EndsWith(end));
        Fake::Advance(10000);
        EXPECT_THAT(TakeStory(), IsEmpty()) << "once only";
    }
}

TEST_F(BTAutoConnectTest, WakeUpWindowLastsTenSecondsFromTheLastWakeUp) {
    EXPECT_FALSE(engine->IsWakeUpTime());
    engine->SetWakeUpTime(true);
    Fake::Advance(6000);
    engine->SetWakeUpTime(true);
    Fake::Advance(9999);
    Fake::ClearRecord();
    EXPECT_TRUE(engine->IsWakeUpTime());
    EXPECT_THAT(TakeStory(), ElementsAre("W service IsWakeUpTime: Turn On TV : 1"));
    Fake::Advance(1);
    EXPECT_EQ(Fake::Lines("service"), Texts({"D service SetWakeUpTime: Turn On TV : 0"}));
    EXPECT_FALSE(engine->IsWakeUpTime());
    EXPECT_EQ(Fake::TimersRunning(), 0U);

    engine->SetWakeUpTime(true);
    engine->StartAutoConnect();
    EXPECT_FALSE(engine->IsWakeUpTime()) << "an attempt closes the window";
    EXPECT_EQ(Fake::TimersRunning(), 2U) << "whose timer runs out by itself";
    engine.reset();
    EXPECT_EQ(Fake::TimersRunning(), 0U);
}

}  // namespace
