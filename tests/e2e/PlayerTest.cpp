// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "common/CHandle.h"
#include "platform/application.h"
#include "platform/bluetooth.h"
#include "platform/linux/application/ApplicationBus.h"
#include "tests/e2e/Bench.h"

// The media player: which phone it has play, and what it says of that one.

namespace {

class Player : public Bench {
protected:
    static TvSim::Scenario AliceAndBen() {
        TvSim::Scenario scenario;
        scenario.phones = {TvSim::MakePhone("Alice", kAlice), TvSim::MakePhone("Ben", kBen)};
        return scenario;
    }
};

// One that ends as soon as it has nothing to do.
class RestlessPlayer : public Bench {
protected:
    RestlessPlayer() : Bench((setenv("TV_PLAYER_IDLE_MS", "200", 1), BIN_DIR "/media-player")) {}

    static void OnReply(GObject* bus, GAsyncResult* result, gpointer test) noexcept {
        GErrorPtr error;
        const GVariantPtr reply(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, Out(error)));
        EXPECT_TRUE(reply) << error->message;
        --static_cast<RestlessPlayer*>(test)->m_unanswered;
    }
    void Activate() {
        // The bus holds 128 for one sender; an instance that starts slowly lets that many wait.
        if (m_unanswered == 100) {
            return;
        }
        ++m_unanswered;
        g_dbus_connection_call(Connection(), "com.velmora.tv.bmp", "/com/velmora/tv/bmp",
                               Platform::kApplicationInterface, "Activate",
                               g_variant_new("(a{sv})", nullptr), nullptr, G_DBUS_CALL_FLAGS_NONE,
                               -1, nullptr, OnReply, this);
    }

    int m_unanswered = 0;
};

TEST_F(Player, AsksThePhoneOfTheLaunchWhateverAnotherOneDoesAndWhenItLeft) {
    TvSim::Scenario scenario = AliceAndBen();
    scenario.phones[0].playsOnPlay = false;
    const auto simulator = Simulate(scenario);
    TvSim::Phone& alice = *simulator->FindPhone("Alice");
    TvSim::Phone& ben = *simulator->FindPhone("Ben");

    ASSERT_TRUE(alice.ConnectByItself());
    LaunchPlay(kAlice);
    AwaitPlayer(std::string("play on ") + kAlice);
    alice.Disconnect();
    ASSERT_TRUE(ben.ConnectByItself());
    AwaitEvent("phone Ben: tells its status paused");
    AwaitPlayer(std::string("no music from ") + kAlice + ": the phone has left");

    ASSERT_TRUE(alice.ConnectByItself());
    LaunchPlay(kAlice);
    AwaitEvent("phone Alice: play asked");
    ben.SetStatus("playing");
    AwaitPlayer(std::string("no music from ") + kAlice +
                ": the phone was told to play and does "
                "not, its player says paused");
    EXPECT_EQ(CountEvents("phone Ben: play asked"), 0U);
}

TEST_F(Player, IsToldByTheServiceWhichPhoneItConnectedNotWhichCameLast) {
    TvSim::Scenario scenario = AliceAndBen();
    scenario.phones[1].advertises = false;
    scenario.phones[1].playerStatus = "playing";
    SetUpTv();
    const auto simulator = Simulate(scenario);
    StartService();
    Wake();
    AwaitLog(std::string("result : 0, address : ") + kAlice);
    ASSERT_TRUE(simulator->FindPhone("Ben")->ConnectByItself());
    AwaitEvent("phone Alice: plays");
    AwaitPlayer(std::string(kAlice) + " plays");
    EXPECT_EQ(CountEvents("phone Ben: play asked"), 0U);
}

// As bluetoothd does, which tries again by itself when a link broke.
TEST_F(Player, IsMeantForThePhoneThatWasAskedForLastAlsoWhenItComesAfterItsFailure) {
    TvSim::Scenario scenario = AliceAndBen();
    scenario.phones[0].firstConnect = TvSim::ConnectAnswer{};
    for (TvSim::PhonePlan& phone : scenario.phones) {
        phone.advertises = false;
        phone.connect = {TvSim::ConnectAnswer::Kind::kRefuse, "org.bluez.Error.Failed", "x"};
    }
    SetUpTv({kAlice, kBen});
    const auto simulator = Simulate(scenario);
    StartService();
    Wake();
    AwaitEvent("phone Alice: plays");
    simulator->FindPhone("Alice")->Disconnect();
    Wake();
    AwaitLog("No more device to try connect");
    ASSERT_TRUE(simulator->FindPhone("Ben")->ConnectByItself());
    AwaitEvent("phone Ben: plays");
}

TEST_F(Player, SaysThatThereIsNoBluetoothAndThatAnotherInstanceRuns) {
    Run("media-player", {"--version"}, "");
    Run("media-player", {"now"}, "status 2");
    LaunchPlay();
    AwaitPlayer("unknown extra c=");
    AwaitPlayer("no music: bluetoothd is not there");
    EXPECT_THAT(
        Run("media-player", {}, "status 1").back(),
        testing::HasSubstr("com.velmora.tv.bmp cannot be launched: another process has its name"));
}

TEST_F(RestlessPlayer, LosesNoLaunchThatComesWhileItEnds) {
    Run("media-player", {}, "");
    Timer launches = Timer::Every(1, [this] {
        Activate();
        g_usleep(500);
        Activate();
    });
    EXPECT_TRUE(AwaitThat([this] { return CountPlayer("Activating service") == 10; }));
    launches.Cancel();
    EXPECT_TRUE(AwaitThat([this] { return m_unanswered == 0; }));
}

TEST_F(Player, IsLaunchedWithoutAnExtraThatIsNoTextWhichTheLogSays) {
    CPtr<app_control_s, app_control_destroy> request;
    ASSERT_EQ(app_control_create(Out(request)), 0);
    testing::internal::CaptureStderr();
    app_control_add_extra_data(request.get(), "\xFF", "1");
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, testing::HasSubstr("without the extra \\xFF=1: it is not UTF-8"));
}

// Eleven, for the last stream's number is not the last in the order of texts.
TEST_F(Player, WithoutAPhoneInTheLaunchAsksTheOneThatConnectedLastWhoeverStartedWhen) {
    TvSim::Scenario scenario;
    for (int i = 0; i <= 10; ++i) {
        scenario.phones.push_back(
            TvSim::MakePhone(std::to_string(i), "A0:11:22:33:44:" + std::to_string(40 - i)));
    }
    const auto simulator = Simulate(scenario);
    for (int i = 0; i <= 10; ++i) {
        ASSERT_TRUE(simulator->FindPhone(std::to_string(i))->ConnectByItself());
    }
    LaunchPlay();
    AwaitEvent("phone 10: plays");
    AwaitPlayer("A0:11:22:33:44:30 plays");
    EXPECT_EQ(CountEvents("play asked"), 1U);

    // This process, too, comes later than all of them, and outlives the bus.
    const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    bt_audio_connected_info_s* info = nullptr;
    ASSERT_TRUE(AwaitThat([&info] {
        bt_audio_free_connected_info(std::exchange(info, nullptr));
        return bt_audio_get_connected_info(BT_AUDIO_PROFILE_TYPE_A2DP_SINK, &info) == 0 &&
               info->connected_count == 11;
    }));
    EXPECT_STREQ(info->remote_address, "A0:11:22:33:44:30");
    bt_audio_free_connected_info(info);
}

}  // namespace
