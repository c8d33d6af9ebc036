// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/PlatformTest.h"
#include "utility/AppManagerUtil.h"

using Util::AppManagerUtil;

namespace {

const std::string kId = "com.example.app";
const std::string kAsync = "app_control_send_launch_request_async(com.example.app";

class AppManagerUtilTest : public PlatformTest {
protected:
    ~AppManagerUtilTest() override { EXPECT_FALSE(Fake::FinishLaunch(APP_CONTROL_ERROR_NONE)); }
};

TEST_F(AppManagerUtilTest, LaunchesWithExtrasInOrder) {
    EXPECT_TRUE(AppManagerUtil::LaunchApp(kId, {{"z", "1"}, {"a", ""}}, true));
    EXPECT_THAT(Fake::Lines(), ElementsAre("D utility LaunchApp: key: z, value: 1",
                                           "D utility LaunchApp: key: a, value: ",
                                           "I utility LaunchApp: launch com.example.app"));
    EXPECT_THAT(Fake::Calls("app_control_send"),
                ElementsAre("app_control_send_launch_request(com.example.app,z=1,a=)"));
    Fake::ClearRecord();
    Fake::Fail("app_control_send_launch_request", APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_FALSE(AppManagerUtil::LaunchApp(kId, true));
    EXPECT_THAT(Fake::Story(), ElementsAre("I utility LaunchApp: launch com.example.app",
                                           "app_control_send_launch_request(com.example.app)",
                                           "E utility LaunchApp: Failed to launch com.example.app"))
        << "and no second try";
}

TEST_F(AppManagerUtilTest, RetriesAnAsynchronousLaunchOnce) {
    for (int round = 0; round < 2; ++round) {  // the counter is back at rest in between
        Fake::ClearRecord();
        EXPECT_TRUE(AppManagerUtil::LaunchApp(kId, {{"k", "v"}, {"l", "w"}}, false));
        EXPECT_TRUE(Fake::FinishLaunch(APP_CONTROL_ERROR_LAUNCH_FAILED));
        EXPECT_TRUE(Fake::FinishLaunch(APP_CONTROL_ERROR_TIMED_OUT));
        EXPECT_THAT(Fake::Story(),
                    ElementsAre("I utility LaunchApp: launch com.example.app", kAsync + ",k=v,l=w)",
                                "I utility LaunchApp: launch com.example.app", kAsync + ",k=v,l=w)",
                                "I utility OnAppControlResult: Retry(#1)",
                                "E utility OnAppControlResult: Fail to launch "
                                "com.example.app(-110)"));
    }
}

TEST_F(AppManagerUtilTest, RetryEndsWithTheFirstSuccess) {
    const std::string success = "I utility OnAppControlResult: success to launch com.example.app";
    AppManagerUtil::LaunchApp(kId, false);
    Fake::FinishLaunch(APP_CONTROL_ERROR_LAUNCH_FAILED);
    Fake::FinishLaunch(APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(Fake::TakeStory().back(), success);
    AppManagerUtil::LaunchApp(kId, false);
    Fake::FinishLaunch(APP_CONTROL_ERROR_LAUNCH_FAILED);
    Fake::Fail("app_control_get_app_id", -1);
    Fake::FinishLaunch(APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_EQ(Fake::TakeStory().back(), "E utility OnAppControlResult: appId is null");
    AppManagerUtil::LaunchApp(kId, false);
    Fake::Fail("app_control_send_launch_request_async", -1);
    Fake::FinishLaunch(APP_CONTROL_ERROR_APP_NOT_FOUND);
    EXPECT_EQ(Fake::TakeStory().back(),
              "E utility OnAppControlResult: Fail to launch com.example.app(-2)");
    AppManagerUtil::LaunchApp(kId, {{"gone", "1"}, {"k", "v"}}, false);
    Fake::Fail("app_control_get_extra_data", APP_CONTROL_ERROR_KEY_NOT_FOUND);
    Fake::FinishLaunch(APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_EQ(Fake::Calls(kAsync).back(), kAsync + ",k=v)") << "an extra without value is left out";
    Fake::FinishLaunch(APP_CONTROL_ERROR_NONE);
}

TEST_F(AppManagerUtilTest, SendsMessagesToTheUi) {
    Fake::TheWorld().powerState = 1;
    EXPECT_TRUE(AppManagerUtil::SendNirvoUiMessage({1, 2, "", "", "", ""}, false));
    EXPECT_EQ(Fake::TheWorld().powerState, 1);
    EXPECT_TRUE(AppManagerUtil::SendNirvoUiMessage({3, 4, "", "", "", ""}, true));
    EXPECT_EQ(Fake::TheWorld().powerState, 0);
    // The event wait ends the delivery, but for the lines that trace the way out.
    EXPECT_TRUE(Fake::WaitFor("OUT << [void UiAppLaunch::SendNirvoUiMessage", 2));
    EXPECT_THAT(
        Fake::Calls("app_control_send"),
        ElementsAre("app_control_send_launch_request(org.orlix.nirvoui,msg_no=1,msg_type=2)",
                    "app_control_send_launch_request(org.orlix.nirvoui,msg_no=3,msg_type=4)"));
    EXPECT_EQ(Fake::Lines("utility", 4).front(),
              "I utility SendNirvoUiMessage: sendMessage via launch app");
}

TEST_F(AppManagerUtilTest, AnswersQuestions) {
    Fake::TheWorld().applications = {
        {kId, {true, true, true, APP_STATE_FOREGROUND, {{"a", "1"}, {"b", "2"}, {"c", "3"}}}},
        {"org.hidden", {true, false, false, APP_STATE_BACKGROUND}},
        {"org.stopped", {}}};
    EXPECT_TRUE(AppManagerUtil::IsAppForeGround(kId));
    EXPECT_FALSE(AppManagerUtil::IsAppForeGround("org.hidden"));
    EXPECT_FALSE(AppManagerUtil::IsAppForeGround("org.stopped"));
    Fake::Fail("app_context_get_app_state", -1);
    EXPECT_FALSE(AppManagerUtil::IsAppForeGround(kId));
    EXPECT_THAT(Fake::TakeStory(),
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
    EXPECT_THAT(Fake::TakeStory(),
                ElementsAre("W utility IsPackageInstalled: com.example.app is installed",
                            "W utility IsPackageInstalled: org.none is not installed",
                            item + "a, 1", item + "b, 2", item + "a, 1", item + "b, 2",
                            item + "c, 3", "E utility DoesHaveMetadata: fail to get appInfo"));

    Fake::Fail("app_context_get_app_id", -1);
    EXPECT_THAT(AppManagerUtil::GetVisibleAppList(), IsEmpty());
    EXPECT_THAT(AppManagerUtil::GetVisibleAppList(), ElementsAre(kId));
    EXPECT_THAT(Fake::Story(),
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
