// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

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
class Files : public Bench {
protected:
    // Another program at work on a configuration file; the connection stays until the next one.
    void Sql(const std::string& sql, const std::string& folder = "/var/lib") {
        ASSERT_EQ(sqlite3_open((Root() + folder + "/tv-platform/config.db").c_str(), Out(m_other)),
                  SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(m_other.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_other.get());
    }

    SqlitePtr m_other;
};
class Keys : public Files {};
class Daemon : public Bench {};
class Air : public Bench {};
class BrokenPlayer : public Bench {
protected:
    BrokenPlayer() : Bench("/bin/false") {}
};

TEST_F(Signals, AStormOfWrongOnesIsAnsweredLineByLineAndTheNextGoodOneWorks) {
    StartAll();
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
    ExpectMusic();
    Emit("AutoConMobileUpdate", Text(R"({"btMac":"A0:11:22:33:44:01","value":"N"})"));
    Wake();
    AwaitLog("auto connection list is empty");
}

TEST_F(Signals, AnUnknownNameEndsTheServiceInOrder) {
    StartService();
    for (const char* line :
         {"D BT_AUTO_CONNECT: AutoConnectDbg.h: ApiTracker(90) > IN >> [void "
          "AutoConnectApp::InitDbus()(59)]",
          "D BT_AUTO_CONNECT: AutoConnectDbg.h: ~ApiTracker(94) > OUT << [void "
          "AutoConnectApp::InitDbus()(59)]",
          "> pThis->m_IntrospectionData:0x",
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

TEST_F(Signals, AreCarriedOutWithoutTheNameWhichComesWhenItIsFree) {
    constexpr const char* kCarriedOut = "AutoConMobileUpdate takes (s), not ";
    Own("com.velmora.tv.bt.autoconnect");
    const Timer first = Timer::Every(10, [this] {
        if (CountLog(kCarriedOut) > 0) {
            Own("com.velmora.tv.bt.autoconnect", false);
        } else if (CountLog("OnNameLost") > 0) {
            Emit("AutoConMobileUpdate");
        }
    });
    StartService();
    EXPECT_GT(CountLog(kCarriedOut), 0U);
}

TEST_F(Keys, WhateverTheyHoldTheServiceStartsAndFollowsTheNextGoodValue) {
    StartAll();
    const std::string good = MallocPtr<char>(vconf_get_str(kSettingsKey)).get();
    const std::pair<std::string, const char*> bad[] = {
        {R"([7])", "Json exception : "},
        {std::string(100000, '['), "exception : "},
        {std::string(1 << 19, 'x'), "exception : "},
    };
    for (const auto& [value, line] : bad) {
        ASSERT_EQ(vconf_set_str(kSettingsKey, value.c_str()), 0);
        // The packed list is the watched one, and of any length.
        ASSERT_EQ(vconf_set_str(kAutoOnOffKey, std::string(value.size() % 40, 'z').c_str()), 0);
        AwaitLog(line);
    }
    ASSERT_EQ(vconf_set_int(kSettingsKey, 5), 0);
    ASSERT_EQ(vconf_set_bool(kAutoOnOffKey, 1), 0);
    AwaitLog("No device which enable bt auto connection");
    EXPECT_LT(vconf_set_str(kSettingsKey, std::string(1 << 20, ' ').c_str()), 0);
    Sql("UPDATE entries SET type = 'string', value = printf('%2000000d', 1) WHERE key = '" +
        std::string(kSettingsKey) + "'; UPDATE sequence SET revision = 9223372036854775806");
    for (const char* text : {"a", "b", "c"}) {
        ASSERT_EQ(vconf_set_str(kAutoOnOffKey, text), 0);
        AwaitLog(std::string(kSettingsKey) + " has more than 1 MiB");
    }
    ASSERT_EQ(vconf_set_str(kSettingsKey, good.c_str()), 0);
    Tvctl({"conf", "unset", kAutoOnOffKey});
    AwaitLog("AutoOnOffDevices is empty");
    Tvctl({"phone", "add", kAlice});
    AwaitLog("enable auto on/off and bt auto connection");
    ExpectMusic();
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
    // Its keys have the revisions that they had, and no event tells that it is back.
    fs::rename(kept, database);
    AwaitLog("enable auto on/off and bt auto connection");
    ExpectMusic();
    // Another one takes the place of the one in use.
    fs::rename(database, kept);
    Tvctl({"phone", "add", kBen});
    AwaitLog(std::string(kBen) + " enable auto on/off");
    // Another folder takes the place of the one whose files are in use; then it is made again.
    fs::rename(Root() + "/var", Root() + "/old");
    Tvctl({"phone", "add", kAlice});
    AwaitLog(std::string(kAlice) + " enable auto on/off");
    fs::remove_all(Root() + "/var");
    Tvctl({"phone", "add", kBen});
    AwaitLog(std::string(kBen) + " enable auto on/off");
}

TEST_F(Files, AConfigurationThatAnotherProcessHoldsIsReadOnceItIsFree) {
    StartAll();
    Sql("BEGIN EXCLUSIVE");
    Emit("AutoConMobileUpdate", Text("{}"));
    AwaitLog("No device which enable bt auto connection");
    m_other.reset();
    AwaitLog("enable auto on/off and bt auto connection");
    ExpectMusic();
}

TEST_F(Files, AWakeUpReasonThatCannotBeReadStartsNothing) {
    StartSimulator(kAlicePhone);
    SetUpTv();
    Tvctl({"power", "set", "wakeup-reason", "94"});
    StartService();
    Sql("BEGIN EXCLUSIVE", "/run");
    Wake();
    // Free again just before the ambient state is read, which would let the attempt begin.
    AwaitLog("Start ZEMI bluetooth auto connection");
    m_other.reset();
    AwaitLog("Not supported condition");
    Wake();
    AwaitLog("Not support power reason");
    EXPECT_EQ(CountLog("Start LE scan"), 0U);
}

TEST_F(Files, FeaturesThatCannotBeReadMakeItAnotherTvUntilTheyAreGoodAgain) {
    StartAll();
    const fs::path features = Root() + "/etc/tv-platform/features.conf";
    std::stringstream good;
    good << std::ifstream(features).rdbuf();
    for (const char* content :
         {"", "[com.velmora/featureconf]\ndisplay_rotator_supported=perhaps\n",
          "no key file at all\n"}) {
        Overwrite(features, content);
        Wake();
        AwaitLog("Failed to get com.velmora/featureconf/display_rotator_supported");
        AwaitLog("Not the zemi tv");
    }
    // As long and as old as the good one.
    Overwrite(features, good.str());
    const auto time = fs::last_write_time(features);
    Wake();
    AwaitLog("Start ZEMI bluetooth auto connection");
    Overwrite(features, std::regex_replace(good.str(), std::regex("=true"), "=fals"));
    fs::last_write_time(features, time);
    Wake();
    AwaitLog("Not the zemi tv");
    fs::remove(features);
    fs::create_directory(features);
    Wake();
    AwaitLog("Not the zemi tv");
    fs::remove(features);
    Overwrite(features, good.str());
    ExpectMusic();
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
    ExpectMusic();
}

TEST_F(Daemon, ThatDidNotTellItsObjectsIsAskedAgainAtTheNextWakeUp) {
    SetUpTv();
    StartService();
    StartSimulator(std::string("[adapter]\nrefused-once=GetManagedObjects:a.b.Error\n") +
                   kAlicePhone);
    AwaitLog("bluetoothd does not tell its objects");
    Wake();
    AwaitLog("bluetoothd is there, adapter /org/bluez/hci0");
    ExpectMusic();
}

TEST_F(Daemon, KilledInMidScanAndInMidConnectIsBackForTheNextWakeUp) {
    StartAll("advertises=false\n");
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
    AwaitLog(std::string(kAlice) + " is not connected: bluetoothd is gone");
    AwaitLog("Try to connect device");  // the list from its beginning, though it was at its end
    AwaitLog("No more device to try connect");

    StartSimulator(kAlicePhone);
    AwaitLog("adapter /org/bluez/hci0 is on");
    ExpectMusic();
    EXPECT_EQ(CountLog("result : 0, address : "), 1U);
}

TEST_F(Daemon, ThatAnswersTheStartLateServesTheNextWakeUpAndIsToldToStop) {
    StartAll("advertise-after-ms=10\n[adapter]\ndiscovery-takes-ms=6000\n");
    Wake();
    AwaitLog("LE scan on /org/bluez/hci0 does not start");
    Wake();
    AwaitLog(std::string("Found ") + kAlice + " in list");
    AwaitEvent("adapter: discovery stopped");
}

TEST_F(Daemon, WhoseAnswersWaitWhileTheServiceIsStoppedIsBelieved) {
    StartAll("connect-after-ms=500\n[adapter]\ndiscovery-takes-ms=500\n");
    Wake();
    AwaitEvent("discovery started");
    Stall(4200);
    AwaitEvent("phone Alice: connection asked");
    Stall(10200);
    AwaitEvent("phone Alice: plays");
    EXPECT_EQ(CountLog("does not start"), 0U);
    EXPECT_EQ(CountLog("is not connected"), 0U);
}

TEST_F(Daemon, MayTellOfAStreamWhileTheAdapterIsOffWhichIsNoConnection) {
    StartService();
    Own("org.bluez");
    AwaitLog("bluetoothd does not tell its objects");
    const auto add = [this](const char* object) {
        Emit("InterfacesAdded", g_variant_new_parsed(object), "/",
             "org.freedesktop.DBus.ObjectManager");
    };
    for (const char* adapter :
         {"(objectpath '/org/bluez/hci0', {'org.bluez.Adapter1': {'Powered': <false>}})",
          "(objectpath '/org/bluez/hci0', {'org.bluez.Adapter1': {'Powered': <true>}})"}) {
        add(adapter);
        add("(objectpath '/org/bluez/hci0/dev_A0_11_22_33_44_01/fd0', "
            "{'org.bluez.MediaTransport1': "
            "{'Device': <objectpath '/org/bluez/hci0/dev_A0_11_22_33_44_01'>, "
            "'UUID': <'0000110b-0000-1000-8000-00805f9b34fb'>}})");
    }
    AwaitLog("adapter /org/bluez/hci0 is on");
    AwaitLog("result : 0, address : A0:11:22:33:44:01");
}

TEST_F(Daemon, ReportsAPhoneThoughAnotherProgramLooksForSomethingElse) {
    constexpr const char* kOther = "another program discovers there already";
    StartAll();
    ExpectMusic();
    EXPECT_EQ(CountLog(kOther), 0U);
    Discover("nobody's name");
    EXPECT_THAT(TvctlFailure({"doctor"}), testing::HasSubstr("FAIL  no other program discovers"));
    Wake();
    AwaitLog(kOther);
    AwaitLog(std::string("Found ") + kAlice);
}

TEST_F(Daemon, MayBeTooOldForAPatternInAFilter) {
    StartAll("[adapter]\nknows-pattern=false\n");
    Wake();
    AwaitLog(std::string("Found ") + kAlice);
}

// What the log says of results: too short for a phone's, and long enough.
TEST_F(Air, APacketFullOfShortEntriesIsOneResultInAScan) {
    std::string entries;
    for (int company = 0; company < 63; ++company) {
        entries += std::to_string(company) + ":00;";
    }
    StartAll("[phone Many]\nbonded=false\naddress=" + std::string(kBen) +
             "\nadvertise-after-ms=10\nadvertise-every-ms=20\nmanufacturer-data=" + entries);
    ExpectMusic();
    EXPECT_EQ(CountLog("manufaturerDataLen size is small"), 1U);
}

TEST_F(Air, AFloodFromEverNewAddressesNeitherFillsTheLogNorHidesThePhone) {
    StartAll("advertise-count=1\n[strangers]\ncount=200\nevery-ms=100\nrotate-address-every=1\n");
    Wake();
    AwaitLog(std::string("Found ") + kAlice + " in list");
    // In each of the at most six seconds that a scan touches.
    EXPECT_LE(CountLog("manufaturerDataLen size is small"), 6 * 20U);
    EXPECT_LE(CountLog("ByteArrayToHexString"), 6 * 101U);
    EXPECT_EQ(CountLog("a flood of advertisements"), 1U);
}

TEST_F(BrokenPlayer, CostsTheMusicAndNothingElse) {
    StartAll();
    for (int i = 0; i < 2; ++i) {
        Wake();
        AwaitLog("send play cmd to bmplayer");
        AwaitLog("launch of com.velmora.tv.bmp failed: org.freedesktop.DBus.Error.Spawn");
    }
}

}  // namespace
