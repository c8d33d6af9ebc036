// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <stdexcept>
#include <thread>

#include "tests/unit/PlatformTest.h"
#include "utility/AppManagerUtil.h"
#include "utility/UiAppLaunch.h"

namespace {

nirvo_event Event(int number, const std::string& msg1 = "", const std::string& msg4 = "") {
    return {number, -2, msg1, "", "", msg4};
}

std::string Sent(const std::string& number) {
    return "app_control_send_launch_request(org.orlix.nirvoui,msg_no=" + number + ",msg_type=-2";
}

const std::string kReady = "/tmp/.nivoui_ready";
const std::string kWait = "LwipcWaitEvent(" + kReady + ",10000)";

class UiAppLaunchTest : public PlatformTest {
protected:
    std::unique_ptr<UiAppLaunch> launcher = std::make_unique<UiAppLaunch>();
};

TEST_F(UiAppLaunchTest, DeliversOneEventAfterTheOther) {
    Tv::SetRaised(kReady, false);
    launcher->Launch(Event(1, "AA", "x"));
    launcher->Launch(Event(2));
    launcher->Launch(Event(3));
    ASSERT_TRUE(Recorder::WaitFor(kWait, 1));
    EXPECT_THAT(Recorder::Calls(), ElementsAre(Sent("1") + ",msg1=AA,msg4=x)", kWait))
        << "the others wait until the application is ready";
    Tv::SetRaised(kReady, true);
    launcher.reset();
    EXPECT_THAT(Recorder::Calls(), ElementsAre(Sent("1") + ",msg1=AA,msg4=x)", kWait,
                                               Sent("2") + ")", kWait, Sent("3") + ")", kWait));
    // The caller's line and the worker's come in any order.
    EXPECT_THAT(
        Recorder::Lines(),
        testing::IsSupersetOf({"I utility Launch: request launch org.orlix.nirvoui",
                               "I utility AddEventDataTo: msg_no:1, msg_type:-2, msg1:AA, msg4:x",
                               "I utility SendNirvoUiMessage: org.orlix.nirvoui launched"}));
}

TEST_F(UiAppLaunchTest, GivesAnEventUpAfterThreeFailures) {
    Recorder::Fail("app_control_send_launch_request", APP_CONTROL_ERROR_APP_NOT_FOUND, 3);
    launcher->Launch(Event(1));
    launcher->Launch(Event(2));
    launcher.reset();
    EXPECT_THAT(Recorder::Calls(), ElementsAre(Sent("1") + ")", Sent("1") + ")", Sent("1") + ")",
                                               Sent("2") + ")", kWait));
    EXPECT_EQ(Recorder::Lines("utility", 6),
              Texts(3, "E utility SendNirvoUiMessage: Failed to launch org.orlix.nirvoui"));
}

TEST_F(UiAppLaunchTest, DeliversWhatIsQueuedBeforeItEnds) {
    Tv::SetRaised(kReady, false);
    for (int i = 0; i < 20; ++i) {
        launcher->Launch(Event(i));
    }
    UiAppLaunch* ending = launcher.get();
    std::thread destroyer([this] { launcher.reset(); });
    ASSERT_TRUE(Recorder::WaitFor("IN >> [UiAppLaunch::~UiAppLaunch()"));
    // Which is logged a moment before the launcher stops taking events.
    std::string refusal;
    int taken = 20;
    while (refusal.empty() && taken < 100000) {
        try {
            ending->Launch(Event(taken));
            ++taken;
        } catch (const std::runtime_error& e) {
            refusal = e.what();
        }
    }
    EXPECT_EQ(refusal, "thread stopped");
    Tv::SetRaised(kReady, true);
    destroyer.join();
    const Texts sent = Recorder::Calls("app_control_send");
    ASSERT_EQ(sent.size(), static_cast<std::size_t>(taken));
    EXPECT_EQ(sent.back(), Sent(std::to_string(taken - 1)) + ")");
}

TEST_F(UiAppLaunchTest, GetsWhatTheApplicationsUtilitySends) {
    Tv::SetState("power_state", 1);
    EXPECT_TRUE(Util::AppManagerUtil::SendNirvoUiMessage(Event(1), false));
    EXPECT_EQ(Tv::State("power_state"), 1);
    EXPECT_TRUE(Util::AppManagerUtil::SendNirvoUiMessage(Event(3), true));
    EXPECT_EQ(Tv::State("power_state"), 0);
    // The event wait ends the delivery, but for the lines that trace the way out.
    EXPECT_TRUE(Recorder::WaitFor("OUT << [void UiAppLaunch::SendNirvoUiMessage", 2));
    EXPECT_THAT(Recorder::Calls("app_control_send"), ElementsAre(Sent("1") + ")", Sent("3") + ")"));
    EXPECT_EQ(Recorder::Lines("utility", 4).front(),
              "I utility SendNirvoUiMessage: sendMessage via launch app");
}

}  // namespace
