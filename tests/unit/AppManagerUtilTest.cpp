// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "tests/unit/PlatformTest.h"
#include "utility/AppManagerUtil.h"

using Util::AppManagerUtil;

namespace {

const std::string kId = "com.example.app";
// What the bus says of a launch that fails.
const std::string kFailed = "org.freedesktop.DBus.Error.Failed";
const std::string kTimeout = "org.freedesktop.DBus.Error.Timeout";
const std::string kUnknown = "org.freedesktop.DBus.Error.ServiceUnknown";
const std::string kAsync = "app_control_send_launch_request_async(com.example.app";

class AppManagerUtilTest : public PlatformTest {
protected:
    ~AppManagerUtilTest() override { EXPECT_EQ(Tv::LaunchesExpected(), 0U); }
};

TEST_F(AppManagerUtilTest, LaunchesWithExtrasInOrder) {
    EXPECT_TRUE(AppManagerUtil::LaunchApp(kId, {{"z", "1"}, {"a", ""}}, true));
    EXPECT_THAT(Recorder::Lines(), ElementsAre("D utility LaunchApp: key: z, value: 1",
                                               "D utility LaunchApp: key: a, value: ",
                                               "I utility LaunchApp: launch com.example.app"));
    EXPECT_THAT(Recorder::Calls("app_control_send"),
                ElementsAre("app_control_send_launch_request(com.example.app,z=1,a=)"));
    Recorder::ClearRecord();
    Recorder::Fail("app_control_send_launch_request", APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_FALSE(AppManagerUtil::LaunchApp(kId, true));
    EXPECT_THAT(Recorder::Story(),
                ElementsAre("I utility LaunchApp: launch com.example.app",
                            "app_control_send_launch_request(com.example.app)",
                            "E utility LaunchApp: Failed to launch com.example.app"))
        << "and no second try";
}

TEST_F(AppManagerUtilTest, RetriesAnAsynchronousLaunchOnce) {
    for (int round = 0; round < 2; ++round) {  // the counter is back at rest in between
        Recorder::ClearRecord();
        Tv::AnswerLaunches({kFailed, kTimeout});
        EXPECT_TRUE(AppManagerUtil::LaunchApp(kId, {{"k", "v"}, {"l", "w"}}, false));
        Tv::RunPending();
        EXPECT_THAT(Recorder::Story(),
                    ElementsAre("I utility LaunchApp: launch com.example.app", kAsync + ",k=v,l=w)",
                                "I utility LaunchApp: launch com.example.app", kAsync + ",k=v,l=w)",
                                "I utility OnAppControlResult: Retry(#1)",
                                "E utility OnAppControlResult: Fail to launch "
                                "com.example.app(-110)"));
    }
}

TEST_F(AppManagerUtilTest, RetryEndsWithTheFirstSuccess) {
    const std::string success = "I utility OnAppControlResult: success to launch com.example.app";
    const auto launch = [](const Texts& answers) {
        Tv::AnswerLaunches(answers);
        AppManagerUtil::LaunchApp(kId, {{"gone", "1"}, {"k", "v"}}, false);
    };
    launch({kFailed, ""});
    Tv::RunPending();
    EXPECT_EQ(Recorder::TakeStory().back(), success);
    launch({kUnknown});
    Recorder::Fail("app_control_send_launch_request_async", -1);
    Tv::RunPending();
    EXPECT_EQ(Recorder::TakeStory().back(),
              "E utility OnAppControlResult: Fail to launch com.example.app(-2)");
    launch({kFailed, kFailed});
    Recorder::Fail("app_control_get_extra_data", APP_CONTROL_ERROR_KEY_NOT_FOUND);
    while (Tv::LaunchesExpected() != 0) {
        g_main_context_iteration(nullptr, FALSE);
    }
    EXPECT_EQ(Recorder::Calls(kAsync).back(), kAsync + ",k=v)")
        << "an extra without value is left out";
    Recorder::Fail("app_control_get_app_id", -1);
    Tv::RunPending();
    EXPECT_EQ(Recorder::TakeStory().back(), "E utility OnAppControlResult: appId is null");
}

TEST_F(AppManagerUtilTest, SendsMessagesToTheUi) {
    Tv::SetState("power_state", 1);
    EXPECT_TRUE(AppManagerUtil::SendNirvoUiMessage({1, 2, "", "", "", ""}, false));
    EXPECT_EQ(Tv::State("power_state"), 1);
    EXPECT_TRUE(AppManagerUtil::SendNirvoUiMessage({3, 4, "", "", "", ""}, true));
    EXPECT_EQ(Tv::State("power_state"), 0);
    // The event wait ends the delivery, but for the lines that trace the way out.
    EXPECT_TRUE(Recorder::WaitFor("OUT << [void UiAppLaunch::SendNirvoUiMessage", 2));
    EXPECT_THAT(
        Recorder::Calls("app_control_send"),
        ElementsAre("app_control_send_launch_request(org.orlix.nirvoui,msg_no=1,msg_type=2)",
                    "app_control_send_launch_request(org.orlix.nirvoui,msg_no=3,msg_type=4)"));
    EXPECT_EQ(Recorder::Lines("utility", 4).front(),
              "I utility SendNirvoUiMessage: sendMessage via launch app");
}

TEST_F(AppManagerUtilTest, AnswersQuestions) {
    Tv::SetApplications({{kId, true}, {"org.hidden", true}, {"org.stopped", false}});
    Tv::SetKey("memory/appfw/current_fullscreen_appid", kId);
    Tv::SetKey("memory/platform/updating_package", kId);
    Tv::SetMetadata(kId, "a=1\nb=2\nc=3\n");
    EXPECT_TRUE(AppManagerUtil::IsAppForeGround(kId));
    EXPECT_FALSE(AppManagerUtil::IsAppForeGround("org.hidden"));
    EXPECT_FALSE(AppManagerUtil::IsAppForeGround("org.stopped"));
    Recorder::Fail("app_context_get_app_state", -1);
    EXPECT_FALSE(AppManagerUtil::IsAppForeGround(kId));
    EXPECT_THAT(Recorder::TakeStory(),
                ElementsAre("I utility IsAppForeGround: appName : com.example.app, state : 1",
                            "I utility IsAppForeGround: appName : org.hidden, state : 2",
                            "E utility IsAppForeGround: fail app_manager_get_app_context ",
                            "E utility IsAppForeGround: fail app_context_get_app_state ",
                            "I utility IsAppForeGround: appName : com.example.app, state : 0"));

    EXPECT_TRUE(AppManagerUtil::IsPackageInstalled(kId));
    EXPECT_FALSE(AppManagerUtil::IsPackageInstalled("org.none"));
    EXPECT_TRUE(AppManagerUtil::DoesHaveMetadata(kId, "b", "2"));
    EXPECT_FALSE(AppManagerUtil::DoesHaveMetadata(kId, "a", "2"));
    EXPECT_FALSE(AppManagerUtil::DoesHaveMetadata("org.stopped", "a", "1"));
    EXPECT_FALSE(AppManagerUtil::DoesHaveMetadata("org.none", "a", "1"));
    const std::string item = "I utility DoesHaveMetadata: ";
    EXPECT_THAT(Recorder::TakeStory(),
                ElementsAre("W utility IsPackageInstalled: com.example.app is installed",
                            "W utility IsPackageInstalled: org.none is not installed",
                            item + "a, 1", item + "b, 2", item + "a, 1", item + "b, 2",
                            item + "c, 3", "E utility DoesHaveMetadata: fail to get appInfo"));

    Recorder::Fail("app_context_get_app_id", -1);
    EXPECT_THAT(AppManagerUtil::GetVisibleAppList(), IsEmpty());
    EXPECT_THAT(AppManagerUtil::GetVisibleAppList(), ElementsAre(kId));
    EXPECT_THAT(Recorder::Story(),
                ElementsAre("I utility GetVisibleAppList: visible app : com.example.app"));
    EXPECT_TRUE(AppManagerUtil::IsUpdating(kId));
    EXPECT_FALSE(AppManagerUtil::IsUpdating("org.hidden"));
    try {
        AppManagerUtil::IsUpdating("org.none");
        ADD_FAILURE() << "nothing is known of it";
    } catch (const std::string& text) {
        EXPECT_EQ(text, "fail aul_extension_app_pkg_is_updating ");
    }
}

}  // namespace
