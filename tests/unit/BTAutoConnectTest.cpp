// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"
#include "common/AdvertisingData.h"
#include "tests/Phones.h"
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

// One that never answers.
TvSim::PhonePlan SilentPhone(const std::string& address) {
    TvSim::PhonePlan plan = Tv::QuietPhone(address);
    plan.connect.kind = TvSim::ConnectAnswer::Kind::kNever;
    return plan;
}

class BTAutoConnectTest : public PlatformTest {
protected:
    BTAutoConnectTest() {
        Tv::SetState("ambient_mode", 1);
        Tv::SetState("ambient_type", 1);
        Tv::StartBluez({SilentPhone(kA), SilentPhone(kB)});
        Start({kA, kB});
    }

    // An engine that knows these phones.
    void Start(const Texts& phones) {
        Register(phones);
        engine.reset();
        engine.emplace();
        Tv::RunPending();
        Recorder::ClearRecord();
    }
    void Scan() {
        engine->StartAutoConnect();
        Recorder::ClearRecord();
    }
    void Hear(const Bytes& packet) { ::Hear(CBtAutoConnect::OnLeScanResult, packet, &*engine); }
    // As the platform reports the end of an attempt to connect.
    void Connected(const std::string& address, int result = BT_ERROR_NONE) {
        engine->OnAudioSinkConnectionState(result, true, address.c_str());
    }
    Texts TakeStory() { return Recorder::TakeStory("service"); }

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
    Tv::Advance(4999);
    Hear(Beacon(kC));
    EXPECT_THAT(TakeStory(), ElementsAre("I service ByteArrayToHexString: " + kC));
    Hear(Beacon(kB));
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
    Tv::Advance(3000);
}

TEST_F(BTAutoConnectTest, RefusesToStart) {
    const std::tuple<int, int, const char*> cases[] = {{1, 1, "auto connection list is empty"},
                                                       {1, 4, "Not supported condition"},
                                                       {2, 1, "Not supported condition"},
                                                       {0, 0, "Not supported condition"}};
    EXPECT_FALSE(engine->IsPortrait());
    Start({});
    for (const auto& [mode, type, reason] : cases) {
        Tv::SetState("ambient_mode", mode);
        Tv::SetState("ambient_type", type);
        engine->StartAutoConnect();
        EXPECT_THAT(TakeStory(), ElementsAre(std::string("W service StartAutoConnect: ") + reason));
        EXPECT_EQ(engine->GetStatus(), 0);
        Start({kA});
    }
}

TEST_F(BTAutoConnectTest, ReadsManufacturerDataOfFifteenBytesAndMore) {
    for (std::size_t size = 0; size <= 40; ++size) {
        Scan();
        Hear(Beacon(kA, size));
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
    Tv::Bluez().SetAdapterPowered(TvSim::Which::kFirst, false);
    Tv::RunPending();
    engine->StartAutoConnect();
    EXPECT_EQ(TakeStory().back(),
              "E service StartLEScan: failed bt_adapter_le_start_scan: NOT_ENABLED ");
    EXPECT_EQ(Recorder::TimersRunning(), 0U);
    EXPECT_EQ(engine->GetStatus(), 1);
}

TEST_F(BTAutoConnectTest, SecondWakeUpDuringAScanMakesOnePass) {
    Scan();
    Tv::Advance(2000);
    engine->StartAutoConnect();
    EXPECT_THAT(TakeStory(), Contains("I service StartLEScan: Start LE scan : TIMED_OUT"));
    Tv::Advance(20000);
    EXPECT_EQ(TakeStory(), kPassBegins + Tries(kA));
}

TEST_F(BTAutoConnectTest, BrokenScanStillLeadsToThePass) {
    Scan();
    CBtAutoConnect::OnLeScanResult(BT_ERROR_NOT_ENABLED, nullptr, &*engine);
    CBtAutoConnect::OnLeScanResult(BT_ERROR_NONE, nullptr, nullptr);
    CBtAutoConnect::OnLEScanTimeout(nullptr);
    CBtAutoConnect::OnWakeUptimer(nullptr);
    EXPECT_THAT(TakeStory(), ElementsAre("E service OnLeScanResult: result is not BT_ERROR_NONE",
                                         "E service OnLeScanResult: user_data is NULL",
                                         "E service OnLEScanTimeout: user_data is NULL",
                                         "E service OnWakeUptimer: user_data is NULL"));
    Tv::Advance(5000);
    EXPECT_EQ(TakeStory(), kPassBegins + Tries(kA));
}

TEST_F(BTAutoConnectTest, WalksTheListWhenNoPhoneIsHeard) {
    Tv::StartBluez({SilentPhone(kB)});
    Start({kA, kB, kC});
    Scan();
    Tv::Advance(5000);
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
    Tv::Advance(60000);
    EXPECT_THAT(TakeStory(), IsEmpty());
}

TEST_F(BTAutoConnectTest, FailureAfterAMatchGoesOnWithTheList) {
    Scan();
    Hear(Beacon(kB));
    Recorder::ClearRecord();
    Connected(kB, BT_ERROR_OPERATION_FAILED);
    EXPECT_EQ(TakeStory().back(), "bt_audio_connect(" + kA + ",4)");
    Connected(kA, BT_ERROR_OPERATION_FAILED);
    EXPECT_EQ(TakeStory().back(), "bt_audio_connect(" + kB + ",4)");
    Connected(kB, BT_ERROR_OPERATION_FAILED);
    EXPECT_EQ(TakeStory().back(), "W service ConnectToDeviceInList: No more device to try connect");
}

TEST_F(BTAutoConnectTest, PassEndsWhenTheTvIsInUse) {
    Scan();
    Tv::Advance(5000);
    Tv::SetState("ambient_mode", 0);
    Recorder::ClearRecord();
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
    Tv::Advance(5000);
    EXPECT_EQ(TakeStory().back(), "W service ConnectToDeviceInList: No more device to try connect");
    EXPECT_THAT(Recorder::Calls("bt_audio_connect"), IsEmpty());
}

TEST_F(BTAutoConnectTest, TakesAnEventWithoutAnAddress) {
    engine->OnAudioSinkConnectionState(0, false, kB.c_str());
    EXPECT_THAT(TakeStory(),
                ElementsAre("I service OnAudioSinkDisconnected: result : 0, address : " + kB));
    engine->OnAudioSinkConnectionState(0, true, nullptr);
    EXPECT_THAT(TakeStory(), ElementsAre("I service OnAudioSinkConnected: result : 0, address : ",
                                         "g_timeout_add(3000)"))
        << "no address is the one that was asked for last";
    Tv::Advance(3000);
}

TEST_F(BTAutoConnectTest, HasThePhonePlay) {
    const char* const launch = "app_control_send_launch_request(com.velmora.tv.bmp,cmd=play)";
    const std::pair<const char*, const char*> cases[] = {{"none", "fail to get playing status"},
                                                         {"playing", "already playing"},
                                                         {"paused", launch},
                                                         {"stopped", launch}};
    for (const auto& [player, end] : cases) {
        TvSim::PhonePlan phone = Tv::QuietPhone(kA);
        phone.playerStatus = player;
        Tv::StartBluez({phone});
        engine->ConnectToDevice(kA);
        Tv::Advance(1000);
        Connected(kA);
        Recorder::ClearRecord();
        Tv::Advance(2999);
        EXPECT_THAT(TakeStory(), IsEmpty());
        Tv::Advance(1);
        EXPECT_THAT(TakeStory().back(), EndsWith(end));
        Tv::Advance(10000);
        EXPECT_THAT(TakeStory(), IsEmpty()) << "once only";
    }
}

TEST_F(BTAutoConnectTest, WakeUpWindowLastsTenSecondsFromTheLastWakeUp) {
    EXPECT_FALSE(engine->IsWakeUpTime());
    engine->SetWakeUpTime(true);
    Tv::Advance(6000);
    engine->SetWakeUpTime(true);
    Tv::Advance(9999);
    Recorder::ClearRecord();
    EXPECT_TRUE(engine->IsWakeUpTime());
    EXPECT_THAT(TakeStory(), ElementsAre("W service IsWakeUpTime: Turn On TV : 1"));
    Tv::Advance(1);
    EXPECT_EQ(Recorder::Lines("service"), Texts({"D service SetWakeUpTime: Turn On TV : 0"}));
    EXPECT_FALSE(engine->IsWakeUpTime());
    EXPECT_EQ(Recorder::TimersRunning(), 0U);

    engine->SetWakeUpTime(true);
    engine->StartAutoConnect();
    EXPECT_FALSE(engine->IsWakeUpTime()) << "an attempt closes the window";
    EXPECT_EQ(Recorder::TimersRunning(), 2U) << "whose timer runs out by itself";
    engine.reset();
    EXPECT_EQ(Recorder::TimersRunning(), 0U);
}

}  // namespace
