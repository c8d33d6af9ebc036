// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include "tests/unit/PlatformTest.h"
#include "utility/VconfUtil.h"

using Util::VconfUtil;

namespace {

class VconfUtilTest : public PlatformTest {};

// The ids are an interface between programs, so no row may move or change.
TEST_F(VconfUtilTest, KeyTableIsFixed) {
    ASSERT_EQ(VconfUtil::keys.size(), 144U);
    std::uint64_t hash = 0xcbf29ce484222325;  // FNV-1a over the keys, one on each line
    for (const std::string& key : VconfUtil::keys) {
        for (const char c : key + "\n") {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        }
    }
    EXPECT_EQ(hash, 0x90eeaf88fd9cb7ef);
    const int ids[] = {
#define VCONF_KEY(id, key) Util::VCONF_KEY_##id,
#include "utility/VconfKeyTable.h"
#undef VCONF_KEY
    };
    for (int i = 0; i < 144; ++i) {
        EXPECT_EQ(ids[i], i);
    }
}

struct Setter {
    void (*set)(int id);
    const char* function;  // the platform's
    const char* value;
};

TEST_F(VconfUtilTest, SettersWriteTheirTypeAndLogIt) {
    const Setter setters[] = {
        {[](int id) { VconfUtil::SetVconf(id, std::string("x y")); }, "vconf_set_str", "x y"},
        {[](int id) { VconfUtil::SetVconf(id, "literal"); }, "vconf_set_str", "literal"},
        {[](int id) { VconfUtil::SetVconf(id, true); }, "vconf_set_bool", "1"},
        {[](int id) { VconfUtil::SetVconf(id, -7); }, "vconf_set_int", "-7"},
        {[](int id) { VconfUtil::SetVconfAsync(id, "x y"); }, "vconf_set_str_async", "x y"},
        {[](int id) { VconfUtil::SetVconfAsync(id, false); }, "vconf_set_bool_async", "0"},
        {[](int id) { VconfUtil::SetVconfAsync(id, 7); }, "vconf_set_int_async", "7"},
    };
    for (const Setter& s : setters) {
        const std::string function = s.function;
        const bool isAsync = function.find("async") != std::string::npos;
        const std::string by = isAsync ? " utility SetVconfAsync: " : " utility SetVconf: ";
        const std::string refusal =
            by + (function.find("bool") != std::string::npos ? "fail to set " : "fail to ");
        for (const int id : {2, 79}) {
            const std::string& key = VconfUtil::keys[static_cast<std::size_t>(id)];
            Recorder::ClearRecord();
            s.set(id);
            Texts lines;
            if (isAsync) {
                lines.push_back("E" + by + "set " + key + " to " + s.value + " async");
            }
            lines.push_back(id == 79 ? "E" + refusal + "vconfkey " + key + "[79]"
                                     : "D" + by + "key : " + key + ", value : " + s.value);
            EXPECT_EQ(Recorder::Lines(), lines);
            EXPECT_THAT(Recorder::Calls(), ElementsAre(function + "(" + key + "," + s.value + ")"));
        }
    }
}

TEST_F(VconfUtilTest, FailedReadKeepsTheValue) {
    std::string text = "before";
    int number = 11;
    bool flag = true;
    Tv::SetKey("db/nirvo/lpm_mbr", "text");
    Tv::SetKey("db/nirvo/oob_status", 1);
    VconfUtil::GetVconf(12, text);  // never written
    VconfUtil::GetVconf(9, text);   // an int
    VconfUtil::GetVconf(8, number);
    VconfUtil::GetVconf(8, flag);
    VconfUtil::GetVconf(144, text);
    VconfUtil::GetVconf(-1, number);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(number, 11);
    EXPECT_TRUE(flag);
    const Texts lines = Recorder::Lines();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], "E utility GetVconf: fail to get vconfkey db/nirvo/musictv_paired3[12]");
    EXPECT_EQ(lines[2], "E utility GetVconf: fail to get vconfkey db/nirvo/lpm_mbr[8]");
    EXPECT_EQ(lines[3], "E utility GetVconf: fail to get vconfkey db/nirvo/lpm_mbr[8]");
}

TEST_F(VconfUtilTest, ReadsAnyNumberAsAFlag) {
    int number = 0;
    bool flag = false;
    VconfUtil::SetVconf(48, 5);
    VconfUtil::GetVconf(103, number);
    EXPECT_EQ(number, 5);
    vconf_set_bool("memory/bluetooth_nirvoui/musictvfail", 5);
    VconfUtil::GetVconf(103, flag);
    EXPECT_TRUE(flag) << "any number but 0 is true";
    Recorder::ClearRecord();
    VconfUtil::GetVconf(48, flag);
    EXPECT_THAT(Recorder::Lines(),
                ElementsAre("D utility GetVconf: key : memory/bluetooth_nirvoui/musictvfail, "
                            "value : 1"));
}

TEST_F(VconfUtilTest, WatchesAKey) {
    const auto count = [](keynode_t*, void* data) { ++*static_cast<int*>(data); };
    int changes = 0;
    EXPECT_EQ(VconfUtil::AddVconfChangedCb(92, count, &changes), 0);
    Tv::SetKey("memory/wifi/frequency", 5);
    Tv::RunPending();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(VconfUtil::RemoveVconfChangedCb(92, count), 0);
    EXPECT_NE(VconfUtil::RemoveVconfChangedCb(92, count), 0);
    const std::string removed =
        "D utility RemoveVconfChangedCb: Remove vconf key callback memory/wifi/frequency[92]";
    EXPECT_THAT(Recorder::Lines(),
                ElementsAre("D utility AddVconfChangedCb: Add vconf key callback "
                            "memory/wifi/frequency[92]",
                            removed, removed));
}

}  // namespace
