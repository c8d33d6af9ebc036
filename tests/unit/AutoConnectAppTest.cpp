// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>

#include "autoconnect/src/AutoConnectApp.h"
#include "autoconnect/src/DbusInterface.h"
#include "common/CHandle.h"
#include "tests/Phones.h"
#include "tests/unit/PlatformTest.h"
#include "tools/tvctl/model/Diagnosis.h"

namespace {

const std::string kBlockKey = "memory/bluetooth_nirvoui/musictvfail";
const std::string kRotates = "com.velmora/featureconf/display_rotator_supported";
const std::string kPlus = "I service OnPrePareAndDoAutoConnect: +";
const std::string kWindow = "I service PrepareZemiAutoConnection: SetWakupTime for btautoconnect";

// The one instance of the process lives from the first of these tests to the end.
class AutoConnectAppTest : public ::testing::Test {
protected:
    AutoConnectAppTest() {
        Tv::Reset();
        Tv::SetFeature(kRotates, "true");
        Tv::SetState("ambient_mode", 1);
        Tv::SetState("ambient_type", 1);
        TvSim::PhonePlan phone = Tv::QuietPhone(kA);
        phone.connect.kind = TvSim::ConnectAnswer::Kind::kNever;
        Tv::StartBluez({phone});
        Register({kA});
        Send(kMobileUpdateCommand, g_variant_new("(s)", Command(kA, "Y").c_str()));
        Tv::RunPending();
        Recorder::ClearRecord();
    }
    ~AutoConnectAppTest() override {
        Tv::Advance(60000);
        EXPECT_THAT(Recorder::Leftovers(), Each(StartsWith("watch on ")));
    }

    void Send(const std::string& name, GVariant* parameters = g_variant_new("()")) {
        const GVariantPtr owned(g_variant_ref_sink(parameters));
        app.HandleDbusMessage(name, owned.get());
    }

    static void SetAdapter(bool on) {
        Tv::Bluez().SetAdapterPowered(TvSim::Which::kFirst, on);
        Tv::RunPending();
    }

    // The TV as the doctor finds it.
    static void Make(const Tvctl::Examination& examination) {
        Tv::SetFeature(kRotates, examination.isZemi ? "true" : "false");
        Tv::SetState("wakeup_reason", examination.wakeUpReason);
        Tv::SetKey(kBlockKey, examination.blocked);
        Tv::SetState("ambient_mode", examination.ambientMode);
        Tv::SetState("ambient_type", examination.ambientType);
        const bool isListed = !examination.phones.empty();
        const bool isBonded = isListed && examination.phones[0].isBonded;
        TvSim::Phone* phone = Tv::Bluez().FindPhone(kA);
        isBonded ? phone->Pair() : phone->LoseBond();
        if (Tv::TextKey(kOnOffKey).empty() == isListed) {
            Register(isListed ? Texts({kA}) : Texts());
        }
        SetAdapter(examination.bluetoothObstacle.empty());
    }

    AutoConnectApp& app = AutoConnectApp::GetInstance();
};

TEST_F(AutoConnectAppTest, WakeUpStartsAnAttempt) {
    Send(kPrepareCommand, g_variant_new("(i)", 5));
    EXPECT_THAT(
        Recorder::TakeStory("service"),
        ElementsAre(kPlus, kWindow, "g_timeout_add(10000)",
                    "W service IsWakeUpTime: Turn On TV : 1",
                    "I service DoZemiAutoConnection: Start ZEMI bluetooth auto connection",
                    "I service IsValidCondition: Ambient mode",
                    "I service StartAutoConnect: auto connection devices : " + kA + ", ",
                    "bt_adapter_le_start_scan()",
                    "I service StartLEScan: Start LE scan : ERROR_NONE", "g_timeout_add(5000)"));
    Tv::Advance(60000);
    SetAdapter(false);
    Recorder::ClearRecord();
    Send(kPrepareCommand);
    EXPECT_THAT(Recorder::Story("service"), ElementsAre(kPlus, kWindow, "g_timeout_add(10000)"));
}

// Which reasons and blocks are accepted, the doctor's table below shows.
TEST_F(AutoConnectAppTest, RefusesOtherWakeUps) {
    const std::string reason = "W service CheckZemiAutoConnectCondition: Not support power reason";
    const std::string prepare = "I service PrepareZemiAutoConnection: ";
    const std::string start = "I service DoZemiAutoConnection: ";
    const std::string refusal = "This is not zemi auto connect condition";
    for (const bool isZemi : {false, true}) {
        Tv::SetFeature(kRotates, isZemi ? "true" : "false");
        Tv::SetState("wakeup_reason", 41);
        Texts lines = isZemi ? Texts{reason, prepare + refusal, reason, start + refusal}
                             : Texts{prepare + "Not the zemi tv", start + "Not the zemi tv"};
        lines.insert(lines.begin(), kPlus);
        Send(kPrepareCommand);
        EXPECT_EQ(Recorder::TakeStory("service"), lines);
        SetAdapter(false);
        lines.resize(lines.size() / 2 + 1);
        Send(kPrepareCommand);
        EXPECT_EQ(Recorder::TakeStory("service"), lines) << "without an adapter nothing is started";
        SetAdapter(true);
    }
    Tv::SetState("wakeup_reason", 0);
    Tv::SetKey(kBlockKey, std::string("1"));
    Send(kPrepareCommand);
    EXPECT_THAT(Recorder::Calls(), Contains("bt_adapter_le_start_scan()"))
        << "a block of another type is not read";
}

// What keeps the service from trying the phone is what the doctor names, and nothing else.
TEST_F(AutoConnectAppTest, DoesWhatTheDoctorSays) {
    const auto agree = [&](const Tvctl::Examination& examination) {
        Make(examination);
        Recorder::ClearRecord();
        Send(kPrepareCommand);
        Tv::Advance(60000);
        const auto findings = Tvctl::Diagnose(examination);
        const auto broken = std::find_if(findings.begin(), findings.end(),
                                         [](const auto& finding) { return !finding.holds; });
        const bool isTried = !Recorder::Calls("bt_audio_connect").empty();
        EXPECT_EQ(isTried, broken == findings.end())
            << (isTried ? broken->condition : "the doctor finds nothing") << "\n"
            << Joined(Recorder::Story("service"), "\n");
        return isTried;
    };
    Tvctl::Examination examination;
    examination.isServiceRunning = true;
    examination.isPlayerInstalled = true;
    examination.hasSink = true;
    for (examination.wakeUpReason = 0; examination.wakeUpReason < 100; ++examination.wakeUpReason) {
        for (examination.blocked = 0; examination.blocked < 3; ++examination.blocked) {
            examination.isZemi = true;
            examination.phones = {{kA, true, true, false}};
            examination.ambientMode = examination.ambientType = 1;
            const int reason = examination.wakeUpReason;
            EXPECT_EQ(agree(examination),
                      reason != 41 && reason != 94 && reason != 95 && examination.blocked != 1);
        }
    }
    int attempts = 0;
    examination.wakeUpReason = examination.blocked = 0;
    for (int state = 0; state < 1 << 8; ++state) {
        examination.isZemi = (state & 1) != 0;
        examination.bluetoothObstacle = (state & 2) != 0 ? "" : "off";
        examination.phones = {{kA, (state & 8) != 0, true, false}};
        examination.phones.resize((state & 4) != 0 ? 1 : 0);
        examination.ambientMode = (state >> 4) % 4;
        examination.ambientType = (state >> 6) % 4;
        attempts += agree(examination) ? 1 : 0;
    }
    EXPECT_EQ(attempts, 2) << "the types 1 and 3";
}

TEST_F(AutoConnectAppTest, MobileUpdateReachesTheList) {
    Send(kMobileUpdateCommand, g_variant_new("(s)", Command(kA, "N").c_str()));
    EXPECT_EQ(Tv::TextKey(kSettingsKey), Settings({{kA, "N"}}));
    EXPECT_EQ(Tv::TextKey(kResultKey), "") << "at once";
    EXPECT_EQ(Recorder::TakeStory("service").front(), "I service OnAutoConMobileUpdate: +");
    Tv::SetFeature("", std::nullopt);
    Send(kMobileUpdateCommand, g_variant_new("(s)", Command(kA, "Y").c_str()));
    EXPECT_THAT(Recorder::TakeStory("service"), ElementsAre("I service OnAutoConMobileUpdate: +"));
}

TEST_F(AutoConnectAppTest, StopBeforeTheStartDoesNothing) {
    app.CloseMainLoop();
    Send("Unknown");
    Send("prepareanddoautoconnect");
    EXPECT_THAT(Recorder::Story(), ElementsAre());
    EXPECT_TRUE(Recorder::WaitFor("IN >> [void AutoConnectApp::CloseMainLoop()", 3));
}

// Reads the record after the end of the instance, in a process that does nothing else.
TEST(AutoConnectAppDeathTest, TracesItsEnd) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            std::atexit([] {
                std::fprintf(stderr, "%zu\n", Recorder::Calls("vconf_ignore").size());
                for (const std::string& line : Recorder::Printed()) {
                    std::fprintf(stderr, "%s\n", line.c_str());
                }
            });
            AutoConnectApp::GetInstance();
            std::exit(0);
        },
        ::testing::ExitedWithCode(0),
        "^2\n(.*\n)*3 BT_AUTO_CONNECT .* IN >> .AutoConnectApp::~AutoConnectApp...30..\n"
        "(.*\n)*3 BT_AUTO_CONNECT .* OUT << .AutoConnectApp::~AutoConnectApp...30..\n");
}

}  // namespace
