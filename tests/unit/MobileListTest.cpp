// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "tests/Phones.h"
#include "tests/unit/PlatformTest.h"

namespace {

constexpr int kWarn = 5;
const std::string kWrote = "W service UpdateList: db/nirvo/auto_connect_mobile_list : ";
const std::string kLow = "a0:b1:c2:d3:e4:f5";

struct Build {
    const char* name;
    std::optional<Tv::Value> settings;
    std::optional<Tv::Value> onOff;
    std::string list;    // expected, in connection order, separated by blanks
    std::string result;  // expected in the store; "(none)" when nothing is to be written
    Texts warnings;      // expected beginnings of lines at WARN and above before the result's
    std::optional<Tv::Value> mirroring = Mirroring({});
};

class MobileListTest : public PlatformTest {};

void ExpectBeginnings(const Texts& lines, const Texts& beginnings) {
    ASSERT_EQ(lines.size(), beginnings.size()) << Joined(lines, "\n");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_THAT(lines[i], StartsWith(beginnings[i]));
    }
}

std::string Packed(const Texts& phones) {
    return Joined(MaskedAll(phones), " ");
}

std::string Result(const Texts& phones) {
    return Joined(MaskedAll(phones), ",");
}

// These are registered and switch the TV.
Build Ordered(const char* name, const Texts& registered, const Texts& mirroring,
              const Texts& list) {
    return {name, Enabled(registered), Packed(registered), Joined(list, " "), Result(registered),
            {},   Mirroring(mirroring)};
}

// Settings of the wrong shape: nothing is written, what came before them stays.
Build Broken(const char* name, const std::string& settings, const std::string& error) {
    return {name, settings, Packed({kA}), "", "(none)", {"E service UpdateList: " + error}};
}

std::vector<Build> Builds() {
    const std::string none = "W service UpdateList: No device which enable bt auto connection";
    const std::string mirroring = "E service GetSoundMirroringDevices: exception : ";
    const std::string masked = "a18a5?e52m91i94i5";
    std::vector<Build> builds = {
        {"NoPhones", {}, Packed({kA}), "", "", {none}},
        {"SettingsOfAnotherType", 5, Packed({kA}), "", "", {none}},
        {"NoneSwitchesTheTv",
         Enabled({kA}),
         "",
         "",
         "",
         {"W service GetAutoOnOffDevices: No auto on/off devices",
          "W service UpdateList: AutoOnOffDevices is empty"}},
        {"OnlyPhonesThatQualifyTwice",
         Settings({{kA, "N"}, {kB, "Y"}, {kC, "Y"}, {kA, "y"}}),
         Packed({kA, kC}),
         kC,
         Result({kC}),
         {}},
        {"MaskedAsWrittenListedInUpperCase", Enabled({kLow}), masked, kA, masked, {}},
        {"AddressOfAnotherLength",
         Settings({{"A0:B1", "Y"}, {kA, "Y"}}),
         Packed({kA}),
         kA,
         Result({kA}),
         {"E service GetXorMac: input buffer size is not 17"}},
        Ordered("MirroringPhoneFirst", {kA, kB}, {kB}, {kB, kA}),
        Ordered("ExchangedNotInserted", {kA, kB, kC}, {kC, kA}, {kC, kA, kB}),
        Ordered("RestChangesItsOrder", {kA, kB, kC}, {kC}, {kC, kB, kA}),
        Ordered("StrangersAndRepeatsCount", {kA, kB}, {kC, "b0:00:00:00:00:0b", kB}, {kB, kA}),
        Broken("NotJson", "{", "exception : "),
        Broken("NestedDeeply", std::string(100000, '['), "exception : "),
        Broken("NoArray", R"({"a":5})", "Json exception : "),
        Broken("ElementsThatAreNoObjects", "[5]", "Json exception : "),
        Broken("MembersThatAreNoText", R"([{"address":{},"value":"Y"}])", "Json exception : "),
        {"BrokenAfterAGoodOne",
         R"([{"address":")" + kA + R"(","value":"Y"},[]])",
         Packed({kA}),
         kA,
         "(none)",
         {"E service UpdateList: Json exception : "}}};
    for (const char* broken :
         {R"({"devices":[{]})", R"({"devices":[{"address":[]}]})", R"({"devices":5})"}) {
        builds.push_back(Ordered("MirroringBroken", {kA}, {}, {kA}));
        builds.back().mirroring = broken;
        builds.back().warnings = {mirroring};
    }
    return builds;
}

TEST_F(MobileListTest, IsBuiltFromTheStore) {
    for (const Build& c : Builds()) {
        SCOPED_TRACE(c.name);
        Tv::Reset();
        Tv::SetKey(kSettingsKey, c.settings);
        Tv::SetKey(kOnOffKey, c.onOff);
        Tv::SetKey(kMirroringKey, c.mirroring);
        const MobileList list;
        EXPECT_EQ(Joined(list.GetList(), " "), c.list);
        EXPECT_EQ(Tv::TextKey(kResultKey), c.result);
        Texts lines = c.warnings;
        if (!c.list.empty() && c.result != "(none)") {
            lines.push_back(kWrote + c.result);
        }
        ExpectBeginnings(Recorder::Lines("service", kWarn), lines);
    }
}

TEST_F(MobileListTest, ReadsPackedAddressesOfAnyLength) {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        text += static_cast<char>('0' + i);
    }
    const MobileList list;
    for (std::size_t size = 0; size <= text.size(); ++size) {
        Tv::SetKey(kOnOffKey, text.substr(0, size));
        const Texts entries = list.GetAutoOnOffDevices();
        ASSERT_EQ(entries.size(), (size + 17) / 18) << size;
        ASSERT_TRUE(size % 18 == 0 || entries.back().size() == std::min<std::size_t>(17, size % 18))
            << size;
    }
}

TEST_F(MobileListTest, FollowsItsTwoKeys) {
    Register({kA, kB});
    {
        const MobileList list;
        const std::string mask = "I service GetXorMac: org : " + kB + ", xored : " + Masked(kB);
        EXPECT_THAT(Recorder::Lines("service"), Contains(mask).Times(2));
        EXPECT_THAT(
            Recorder::Calls("vconf_notify"),
            ElementsAre("vconf_notify_key_changed(db/org.orlix.bleapp/added_mobile_keylist)",
                        "vconf_notify_key_changed(db/nirvo/musictv_paired1)"));
        Tv::RunPending();
        Tv::SetKey(kOnOffKey, Packed({kB}));
        Recorder::ClearRecord();
        Tv::RunPending();
        EXPECT_THAT(list.GetList(), ElementsAre(kB));
        EXPECT_TRUE(list.Exist(kB) && !list.Exist(kA));
        EXPECT_EQ(Tv::TextKey(kResultKey), Result({kB}));
        EXPECT_EQ(Recorder::Lines("service").front(),
                  "I service OnAutoOnOffMobileListVconfKeyChanged: +");

        Register({kA, kB});
        Tv::RunPending();
        Tv::SetKey(kMirroringKey, Mirroring({kB}));
        Recorder::ClearRecord();
        Tv::RunPending();
        EXPECT_THAT(list.GetList(), ElementsAre(kB, kA));
        EXPECT_THAT(Recorder::Calls("vconf_set"), IsEmpty()) << "a new order rewrites nothing";
        const std::string by = "D service ReorderDeviceList: ";
        const std::string mirroring = "D service GetSoundMirroringDevices: ";
        EXPECT_THAT(
            Recorder::Lines("service"),
            ElementsAre("I service OnSMDeviceListVconfKeyChanged: +",
                        mirroring + "soundmirroring device list", mirroring + "device : " + kB,
                        by + "before reorder", by + "device : " + kA, by + "device : " + kB,
                        "I service ReorderDeviceList: swap " + kA + " and " + kB,
                        by + "after reorder", by + "device : " + kB, by + "device : " + kA));
        Tv::SetKey(kOnOffKey, "");  // and not delivered before the list goes
        Recorder::ClearRecord();
    }
    EXPECT_THAT(Recorder::Calls(),
                ElementsAre("vconf_ignore_key_changed(db/org.orlix.bleapp/added_mobile_keylist)",
                            "vconf_ignore_key_changed(db/nirvo/musictv_paired1)"));
    Tv::RunPending();
    Recorder::ClearRecord();
    MobileList::OnAutoOnOffMobileListVconfKeyChanged(nullptr, nullptr);
    MobileList::OnSMDeviceListVconfKeyChanged(nullptr, nullptr);
    EXPECT_THAT(Recorder::Story(),
                ElementsAre("E service OnAutoOnOffMobileListVconfKeyChanged: DATA IS NULL",
                            "E service OnSMDeviceListVconfKeyChanged: DATA IS NULL"));
}

TEST_F(MobileListTest, MasksWhatIsAsLongAsAnAddress) {
    for (const std::size_t size : {0U, 16U, 18U}) {
        EXPECT_EQ(MobileList::GetXorMac(std::string(size, '0')), "");
        EXPECT_THAT(Recorder::TakeStory(),
                    ElementsAre("E service GetXorMac: input buffer size is not 17"));
    }
}

struct Update {
    const char* name;
    std::string stored;
    std::string command;
    std::string expected;
    std::string level;  // of the second line; the first one repeats the command
    std::string line;   // its expected beginning
};

std::vector<Update> Updates() {
    const std::string stored = Enabled({kA, kB});
    const std::string added = Settings({{kA, "Y"}, {kB, "Y"}, {kC, "N"}});
    const std::string json = "Json exception : ";
    return {
        {"KnownPhone", stored, Command(kB, "N"), Settings({{kA, "Y"}, {kB, "N"}}), "I",
         "device is alreay in internal list"},
        {"NewPhone", stored, Command(kC, "N"), added, "I", "new device. add it"},
        {"CaseMakesAnother", Settings({{kLow, "Y"}}), Command(kA, "N"),
         Settings({{kLow, "Y"}, {kA, "N"}}), "I", "new device. add it"},
        {"OtherMembersGo", R"([{"x":1,"value":"Y","address":"A"}])", Command("A", "N"),
         R"([{"address":"A","value":"N"}])", "I", "device is alreay in internal list"},
        {"NoValue", stored, R"({"btMac":"A"})", stored, "W", "No object"},
        {"NoAddress", stored, R"({"value":"Y"})", stored, "W", "No object"},
        {"CommandIsNoObject", stored, "[]", stored, "E", json},
        {"CommandIsNoText", stored, R"({"btMac":[],"value":"Y"})", stored, "E", json},
        {"CommandIsNotJson", stored, "on", stored, "E", "exception : "},
        {"CommandNestsDeeply", stored, std::string(100000, '['), stored, "E", "exception : "},
        {"StoreIsNotJson", "{", Command(kA, "Y"), "{", "E", "exception : "},
        {"StoreIsEmpty", "", Command(kA, "Y"), "", "E", "exception : "},
        {"StoreHoldsNoObjects", "[5]", Command(kA, "Y"), "[5]", "E", json},
    };
}

TEST_F(MobileListTest, AppliesCommandsToTheStore) {
    for (const Update& c : Updates()) {
        SCOPED_TRACE(c.name);
        Tv::Reset();
        Tv::SetKey(kSettingsKey, c.stored);
        MobileList list;
        Recorder::ClearRecord();
        list.UpdateInternalMobileList(c.command);
        EXPECT_EQ(Tv::TextKey(kSettingsKey), c.expected);
        const std::string by = " service UpdateInternalMobileList: ";
        ExpectBeginnings(Recorder::Lines("service"),
                         {"I" + by + "cmd from mobile : " + c.command, c.level + by + c.line});
    }
}

}  // namespace
