// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "platform/config_store.h"
#include "tests/e2e/Bench.h"

// What goes wrong around the service: each fault has its line in the log, costs nothing else, and
// the next good input works without a restart.

namespace {

namespace fs = std::filesystem;

constexpr const char* kSettingsKey = "db/nirvo/musictv_paired3";
constexpr const char* kAutoOnOffKey = "db/org.orlix.bleapp/added_mobile_keylist";

void Overwrite(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::trunc) << content;
}

GVariant* Text(const std::string& text) {
    return g_variant_new("(s)", text.c_str());
}

class Signals : public Bench {};
class Keys : public Bench {};
class Files : public Bench {};
class Daemon : public Bench {};
class BrokenPlayer : public Bench {
protected:
    BrokenPlayer() : Bench("/bin/false") {}
};

TEST_F(Signals, AStormOfWrongOnesIsAnsweredLineByLineAndTheNextGoodOneWorks) {
    StartSimulator(kAlicePhone);
    SetUpTv();
    StartService();
    constexpr int kStorm = 1000;
    for (int i = 0; i < kStorm; ++i) {
        Emit("AutoConMobileUpdate", i % 2 == 0 ? nullptr : g_variant_new("(su)", "x", 1U));
        Emit("Anything", Text("x"), "/some/other/path");
        Emit("Anything", Text("x"), "/com/velmora/tv/bt/autoconnect", "some.other.Interface");
    }
    Emit("AutoConMobileUpdate", Text("{\"btMac\":"));
    Emit("AutoConMobileUpdate", Text("[1, 2]"));
    Emit("AutoConMobileUpdate", Text(R"({"btMac":"A0:11:22:33:44:02","value":"Y"})"));
    AwaitLog("new device. add it");
    EXPECT_EQ(CountLog("AutoConMobileUpdate takes (s), not "), kStorm);
    EXPECT_EQ(CountLog("Anything"), 0U);
    Wake();
    AwaitEvent("phone Alice: plays");
}

TEST_F(Signals, AnUnknownNameEndsTheServiceInOrder) {
    StartService();
    for (const char* line :
         {"D BT_AUTO_CONNECT: AutoConnectDbg.h: ApiTracker(90) > IN >> [void "
          "AutoConnectApp::InitDbus()(59)]",
          "D BT_AUTO_CONNECT: AutoConnectDbg.h: ~ApiTracker(94) > OUT << [void "
          "AutoConnectApp::InitDbus()(59)]",
          "OnBusAcquired(77) > pThis->m_IntrospectionData:0x",
          "> pThis->m_IntrospectionData->interfaces[0]:com.velmora.tv.bt.autoconnect"}) {
        EXPECT_EQ(CountLog(line), 1U) << line;
    }
    // Commands are signals: a call is answered by the bus library and reaches nobody.
    EXPECT_THAT(Call("PrePareAndDoAutoConnect"), testing::HasSubstr("UnknownMethod"));
    EXPECT_EQ(CountLog("methodName"), 0U);
    Emit("UpdateList");
    Emit("AnotherUnknownOne");
    EXPECT_EQ(AwaitEnd(), "");
    AwaitLog("IN >> [void AutoConnectApp::DeInitDbus()");
    AwaitLog("IN >> [void AutoConnectApp::CloseMainLoop()");
    AwaitLog("IN >> [AutoConnectApp::~AutoConnectApp()(30)]");
    AwaitLog("OUT << [UiAppLaunch::~UiAppLaunch()");
}

TEST_F(Keys, WhateverTheyHoldTheServiceStartsAndFollowsTheNextGoodValue) {
    StartSimulator(kAlicePhone);
    SetUpTv();
    char* const settings = vconf_get_str(kSettingsKey);
    const std::string good = settings;
    free(settings);
    StartService();
    const std::pair<std::string, const char*> bad[] = {
        {"[{\"address\":", "exception : "},
        {std::string(100000, '['), "exception : "},
        {"{\"address\":\"A0:11:22:33:44:01\"}", "Json exception : "},
        {R"([{"address":{},"value":"Y"}])", "Json exception : "},
        {R"([7])", "Json exception : "},
        {std::string(1 << 20, 'x'), "exception : "},
    };
    for (const auto& [value, line] : bad) {
        ASSERT_EQ(vconf_set_str(kSettingsKey, value.c_str()), 0);
        // The packed list is the watched one; its length is anybody's.
        ASSERT_EQ(vconf_set_str(kAutoOnOffKey, std::string(value.size() % 40, 'z').c_str()), 0);
        AwaitLog(line);
    }
    ASSERT_EQ(vconf_set_int(kSettingsKey, 5), 0);
    ASSERT_EQ(vconf_set_bool(kAutoOnOffKey, 1), 0);
    AwaitLog("No device which enable bt auto connection");
    ASSERT_EQ(vconf_set_str(kSettingsKey, good.c_str()), 0);
    Tvctl({"conf", "unset", kAutoOnOffKey});
    AwaitLog("AutoOnOffDevices is empty");
    Tvctl({"phone", "add", kAlice});
    AwaitLog("enable auto on/off and bt auto connection");
    Wake();
    AwaitEvent("phone Alice: plays");
}

TEST_F(Files, AConfigurationThatIsNoDatabaseIsReportedOnceAndItsReplacementIsRead) {
    StartSimulator(kAlicePhone);
    SetUpTv();
    const fs::path database = Root() + "/var/lib/tv-platform/config.db";
    const fs::path kept = Root() + "/kept.db";
    fs::rename(database, kept);
    Overwrite(database, std::string(8192, 'x'));
    StartService();
    EXPECT_EQ(CountLog("file is not a database"), 1U);
    EXPECT_GE(CountLog("fail to get vconfkey"), 1U);
    fs::rename(kept, database);
    // Any write tells the service to look again.
    Tvctl({"phone", "add", kBen});
    AwaitLog("enable auto on/off and bt auto connection");
    Wake();
    AwaitEvent("phone Alice: plays");
}

TEST_F(Files, AConfigurationThatAnotherProcessHoldsIsReadOnceItIsFree) {
    StartSimulator(kAlicePhone);
    SetUpTv();
    StartService();
    SqlitePtr holder;
    ASSERT_EQ(sqlite3_open((Root() + "/var/lib/tv-platform/config.db").c_str(), Out(holder)), 0);
    ASSERT_EQ(sqlite3_exec(holder.get(), "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), 0);
    Emit("AutoConMobileUpdate", Text("{}"));
    AwaitLog("No device which enable bt auto connection");
    ASSERT_EQ(sqlite3_exec(holder.get(), "COMMIT", nullptr, nullptr, nullptr), 0);
    AwaitLog("enable auto on/off and bt auto connection");
    Wake();
    AwaitEvent("phone Alice: plays");
}

TEST_F(Files, FeaturesThatCannotBeReadMakeItAnotherTvUntilTheyAreMended) {
    StartSimulator(kAlicePhone);
    SetUpTv();
    const fs::path features = Root() + "/etc/tv-platform/features.conf";
    const fs::path kept = Root() + "/kept.conf";
    fs::copy_file(features, kept);
    StartService();
    for (const char* content :
         {"", "[com.velmora/featureconf]\ndisplay_rotator_supported=perhaps\n",
          "no key file at all\n"}) {
        Overwrite(features, content);
        Wake();
        AwaitLog("Failed to get com.velmora/featureconf/display_rotator_supported");
        AwaitLog("Not the zemi tv");
    }
    fs::remove(features);
    fs::create_directory(features);
    Wake();
    AwaitLog("Not the zemi tv");
    fs::remove(features);
    fs::rename(kept, features);
    Wake();
    AwaitEvent("phone Alice: plays");
}

TEST_F(Daemon, MayComeLateAndWithoutAnAdapterAtFirst) {
    SetUpTv();
    StartService();
    Wake();
    AwaitLog("SetWakupTime for btautoconnect");
    StartSimulator(std::string("[adapter]\npresent=false\nappears-after-ms=300\npowered=false\n"
                               "powers-on-after-ms=300\n") +
                   kAlicePhone);
    AwaitLog("bluetoothd is there, no powered adapter");
    AwaitLog("adapter /org/bluez/hci0 is on");
    EXPECT_EQ(CountLog("Start ZEMI bluetooth auto connection"), 0U);
    Wake();
    AwaitEvent("phone Alice: plays");
}

TEST_F(Daemon, KilledInMidScanAndInMidConnectIsBackForTheNextWakeUp) {
    SetUpTv();
    StartSimulator(std::string(kAlicePhone) + "advertises=false\n");
    StartService();
    Wake();
    AwaitEvent("discovery started");
    KillSimulator();
    AwaitLog("bluetoothd left the bus");
    AwaitLog("result is not BT_ERROR_NONE");
    AwaitLog("Not bonded device");
    AwaitLog("No more device to try connect");

    StartSimulator(std::string(kAlicePhone) + "connect=never\n");
    AwaitLog("adapter /org/bluez/hci0 is on");
    Wake();
    AwaitEvent("connection asked");
    KillSimulator();
    AwaitLog("Connect Fail");
    AwaitLog("No more device to try connect");

    StartSimulator(kAlicePhone);
    AwaitLog("adapter /org/bluez/hci0 is on");
    Wake();
    AwaitEvent("phone Alice: plays");
    EXPECT_EQ(CountLog("result : 0, address : "), 1U);
}

TEST_F(Daemon, ThatNeverAnswersTheConnectionLeadsToTheNextPhone) {
    SetUpTv({kAlice, kBen});
    StartSimulator(std::string(kAlicePhone) + "connect=never\n[phone Ben]\naddress=" + kBen +
                   "\nadvertises=false\n");
    StartService();
    Wake();
    AwaitLog(std::string(kAlice) + " is not connected: no success within 10 s");
    AwaitLog("Connect Fail");
    AwaitEvent("phone Ben: plays");
}

TEST_F(Daemon, TellsOfAPhoneThatConnectsByItselfAndOfItsLeave) {
    SetUpTv();
    StartSimulator(std::string(kAlicePhone) +
                   "connects-by-itself-after-ms=500\ndisconnects-after-ms=500\n");
    StartService();
    AwaitLog(std::string("OnAudioSinkConnected("));
    AwaitLog(std::string("result : 0, address : ") + kAlice);
    EXPECT_EQ(CountLog(std::string("result : 0, address : ") + kAlice), 2U);
    EXPECT_EQ(CountLog("OnAudioSinkDisconnected("), 1U);
    EXPECT_EQ(CountLog("bmplayer"), 0U);
}

TEST_F(BrokenPlayer, CostsTheMusicAndNothingElse) {
    SetUpTv();
    StartSimulator(kAlicePhone);
    StartService();
    for (int i = 0; i < 2; ++i) {
        Wake();
        AwaitLog("send play cmd to bmplayer");
        AwaitLog("launch of com.velmora.tv.bmp failed: org.freedesktop.DBus.Error.Spawn");
    }
}

}  // namespace
