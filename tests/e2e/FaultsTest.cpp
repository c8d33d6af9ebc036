// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "platform/config_store.h"
#include "tests/e2e/Bench.h"

// What goes wrong around the service: each fault has its line in the log, costs nothing else, and
// the next good input works without a restart.

namespace {

constexpr const char* kSettingsKey = "db/nirvo/musictv_paired3";
constexpr const char* kAutoOnOffKey = "db/org.orlix.bleapp/added_mobile_keylist";

GVariant* Text(const std::string& text) {
    return g_variant_new("(s)", text.c_str());
}

class Signals : public Bench {};
class Keys : public Bench {
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
class WakeUp : public Bench {};
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

TEST_F(WakeUp, IsAskedForOnceMoreWhenTheAdapterComesBack) {
    SetUpTv();
    EXPECT_THAT(TvctlFailure({"wake", "--retry", "1"}),
                testing::HasSubstr("the service is not running"));
    StartSimulator("[adapter]\npresent=false\n");
    StartService();
    EXPECT_THAT(TvctlFailure({"wake", "--retry", "1"}),
                testing::HasSubstr("no Bluetooth adapter was ready"));
    KillSimulator();
    AwaitLog("bluetoothd left the bus");
    StartSimulator("[adapter]\npresent=false\nappears-after-ms=2000\n" + std::string(kAlicePhone));
    Tvctl({"wake", "--retry", "5"});
    AwaitEvent("phone Alice: plays");
    // One signal for each time that there was none, and one that found it.
    EXPECT_EQ(CountLog("PrePareAndDoAutoConnect recieved"), CountLog("Bluetooth is off: ") + 1);
    EXPECT_GE(CountLog("Bluetooth is off: there is no adapter"), 1U);
}

}  // namespace
