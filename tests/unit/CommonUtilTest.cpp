// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <stdexcept>

#include "tests/unit/PlatformTest.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"

using Util::CommonUtil;
using Util::JsonUtil;

namespace {

class CommonUtilTest : public PlatformTest {};

TEST_F(CommonUtilTest, AcceptsAddressesOnly) {
    const std::pair<const char*, Texts> cases[] = {
        {"", {"a0:b1:c2:d3:e4:f5", "A0:B1:C2:D3:E4:F5"}},
        {"Invalid format",
         {"A0-B1-C2-D3-E4-F5", "G0:B1:C2:D3:E4:F5", "A0:B1:C2:D3:E4:F\n", ":A0:B1:C2:D3:E4:F"}},
        {"size is not 17", {"A0:B1:C2:D3:E4:F", "A0:B1:C2:D3:E4:F5 ", ""}}};
    for (const auto& [refusal, addresses] : cases) {
        const bool valid = *refusal == '\0';
        for (const std::string& address : addresses) {
            EXPECT_EQ(CommonUtil::IsValidAddress(address), valid) << address;
        }
        const std::string line = std::string("E utility IsValidAddress: ") + refusal;
        EXPECT_EQ(Recorder::TakeStory(), Texts(valid ? 0 : addresses.size(), line));
    }
    EXPECT_FALSE(CommonUtil::IsValidAddress(std::string(1 << 20, 'A')));
    EXPECT_FALSE(CommonUtil::IsValidAddress(std::string("A0:B1:C2:D3:E4:F\0", 17)));
}

TEST_F(CommonUtilTest, ReadsHexadecimalNumbers) {
    const std::pair<const char*, unsigned int> cases[] = {
        {"FFFFFFFF", 4294967295U}, {"", 0}, {"zz", 0}, {"1g", 1}, {" a", 10}, {"00000010", 16}};
    for (const auto& [text, number] : cases) {
        EXPECT_EQ(CommonUtil::convertToUIntFromHexString(text), number) << text;
    }
    try {
        CommonUtil::convertToUIntFromHexString("123456789");
        ADD_FAILURE() << "nine digits";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "hex string size is greater than 4 byte");
    }
}

TEST_F(CommonUtilTest, HandlesText) {
    EXPECT_TRUE(CommonUtil::StartsWith("[TV] Living", "[TV]"));
    EXPECT_FALSE(CommonUtil::StartsWith("[TV", "[TV]"));
    EXPECT_FALSE(CommonUtil::StartsWith("[tv] Living", "[TV]"));
    EXPECT_TRUE(CommonUtil::StartsWith("", ""));
    EXPECT_EQ(CommonUtil::ToCapital("a0:z\xe4"), "A0:Z\xe4");
    EXPECT_EQ(CommonUtil::RemoveColon(":A0:B1::C2:"), "A0B1C2");
    Texts pieces = {"kept"};
    CommonUtil::StrSplit("a,,b,", ",", &pieces);
    EXPECT_THAT(pieces, ElementsAre("kept", "a", "", "b", ""));
    EXPECT_THAT(Recorder::Lines(), ElementsAre("D utility StrSplit: string : a,,b,"));
    pieces.clear();
    CommonUtil::StrSplit("a;b,c", ",;", &pieces);
    CommonUtil::StrSplit("", ",", &pieces);
    EXPECT_THAT(pieces, ElementsAre("a", "b", "c", ""));
}

TEST_F(CommonUtilTest, TellsMissingFiles) {
    EXPECT_TRUE(CommonUtil::CheckExist("/proc/self"));
    EXPECT_FALSE(CommonUtil::CheckExist("/proc/self/no such file"));
    EXPECT_THAT(Recorder::Lines(),
                ElementsAre("E utility CheckExist: /proc/self/no such file does not exist"));
}

TEST_F(CommonUtilTest, RemovesATimerOnce) {
    unsigned int timer = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    Tv::Advance(35);
    Recorder::ClearRecord();
    CommonUtil::RemoveTimer(&timer);
    EXPECT_EQ(timer, 0U);
    CommonUtil::RemoveTimer(&timer);
    EXPECT_THAT(Recorder::Calls(), ElementsAre("g_source_remove(10)"));
    EXPECT_EQ(Recorder::Printed().size(), 4U) << "both calls traced";
}

TEST_F(CommonUtilTest, NamesBluetoothErrors) {
    // -115 has two names, of which the first counts.
    const std::map<int, const char*> names = {{0, "ERROR_NONE"},
                                              {-125, "CANCELLED"},
                                              {-1073741823, "TIMED_OUT"},
                                              {-115, "TIMED_OUT"},
                                              {1, "None"},
                                              {-1, "None"},
                                              {-29359866, "REMOTE_DEVICE_NOT_BONDED"}};
    for (const auto& [code, name] : names) {
        EXPECT_STREQ(CommonUtil::ERR_STR(code), name) << code;
    }
}

TEST_F(CommonUtilTest, ConvertsJson) {
    const Json::Value value = JsonUtil::StringToJson(R"( {"b": [1, {"a": "x"}]})");
    EXPECT_EQ(JsonUtil::JsonToString(value), R"({"b":[1,{"a":"x"}]})");
    EXPECT_THAT(Recorder::Story(),
                ElementsAre(R"(I utility StringToJson:  {"b": [1, {"a": "x"}]})"));
    for (const std::string& text : {std::string("{"), std::string(), std::string(50000, '[')}) {
        Recorder::ClearRecord();
        EXPECT_THROW(JsonUtil::StringToJson(text), std::runtime_error);
        EXPECT_EQ(Recorder::Printed().size(), 3U) << "the trace ends on the way out too";
    }
}

}  // namespace
