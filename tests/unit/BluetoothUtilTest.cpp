// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/PlatformTest.h"
#include "utility/BluetoothUtil.h"

using Util::BluetoothUtil;

namespace {

constexpr const char* kPhone = "A0:B1:C2:D3:E4:F5";

class BluetoothUtilTest : public PlatformTest {};

TEST_F(BluetoothUtilTest, TellsWhatItKnowsOfADevice) {
    Fake::TheWorld().devices = {{"A0:B1:C2:D3:E4:F5", {true, false, "Phone"}},
                                {"B0:00:00:00:00:0B", {false, true}}};
    EXPECT_TRUE(BluetoothUtil::IsPairedDevice("a0:b1:c2:d3:e4:f5"));
    EXPECT_FALSE(BluetoothUtil::IsConnectedDevice("A0:B1:C2:D3:E4:F5"));
    EXPECT_FALSE(BluetoothUtil::IsPairedDevice("B0:00:00:00:00:0B"));
    EXPECT_TRUE(BluetoothUtil::IsConnectedDevice("B0:00:00:00:00:0B"));
    EXPECT_THAT(Fake::Lines(), ElementsAre("W utility IsPairedDevice: is bonded device 1",
                                           "W utility IsConnectedDevice: isConnected 0",
                                           "W utility IsPairedDevice: is bonded device 0",
                                           "W utility IsConnectedDevice: isConnected 1"));
    Fake::ClearRecord();
    for (const char* address : {"C0:00:00:00:00:0C", "", "A0:B1:C2:D3:E4"}) {
        EXPECT_FALSE(BluetoothUtil::IsPairedDevice(address));
        EXPECT_FALSE(BluetoothUtil::IsConnectedDevice(address));
    }
    Fake::TheWorld().adapterOn = false;
    EXPECT_FALSE(BluetoothUtil::IsPairedDevice("A0:B1:C2:D3:E4:F5"));
    EXPECT_THAT(Fake::Lines(), IsEmpty());
}

bt_class_s Class(int major, int minor) {
    return {major, minor};
}

TEST_F(BluetoothUtilTest, TellsTheKindOfADevice) {
    constexpr int kMaker = 0x04E8;
    const struct {
        Fake::Device device;
        int type;
        const char* text;
    } rows[] = {
        {{true, false, "Velmora Wireless Keyboard", Class(5, 0x80), kMaker, 0x2075}, 1, "KeyBoard"},
        {{true, false, "X", Class(5, 0x80), kMaker, 0x2075}, 4, "Remocon"},
        {{true, false, "X", Class(5, 0x40)}, 1, "KeyBoard"},
        {{true, false, "X", Class(5, 0xC0)}, 1, "KeyBoard"},
        {{true, false, "X", Class(5, 0x80), kMaker, 0x2076}, 2, "Mouse"},
        {{true, false, "X", Class(5, 0x08)}, 3, "GamePad"},
        {{true, false, "X", Class(5, 0x0C)}, 0, "UNKNOWN_DEV_TYPE"},
        {{true, false, "X", Class(4, 0x18), kMaker, 0x9000}, 7, "Soundbar"},
        {{true, false, "X", Class(4, 0x28), kMaker, 0x9010}, 6, "Soundbar"},
        {{true, false, "[Velmora] Bar", Class(4, 0x14), kMaker, 0x9001}, 6, "Soundbar"},
        {{true, false, "[Velmora]Bar", Class(4, 0x14)}, 5, "HeadPhone"},
        {{true, false, "A Velmora Wireless Audio", Class(4, 0x04)}, 0, "UNKNOWN_DEV_TYPE"},
        {{true, false, "X", Class(4, 0x24), kMaker, 0x9000}, 0, "UNKNOWN_DEV_TYPE"},
        {{true, false, "X", Class(2, 0x0C)}, 0, "UNKNOWN_DEV_TYPE"},
        {{true, false, {}, Class(5, 0x40)}, 0, "UNKNOWN_DEV_TYPE"},
    };
    for (const auto& row : rows) {
        Fake::TheWorld().devices = {{kPhone, row.device}};
        EXPECT_EQ(BluetoothUtil::GetDeviceType(kPhone), row.type);
        EXPECT_EQ(BluetoothUtil::GetStringDeviceType(kPhone), row.text);
    }
    Fake::TheWorld().devices = {{kPhone, {true, false, "Set-top", Class(4, 0x24)}}};
    Fake::ClearRecord();
    BluetoothUtil::GetDeviceType(kPhone);
    EXPECT_THAT(
        Fake::Lines(),
        ElementsAre("I utility GetDeviceType: [Set-top] does not have supported audio minor cod",
                    "D utility GetDeviceType: type : 0, EXIT()",
                    "D utility GetDeviceType: major cod is BT_MAJOR_DEVICE_CLASS_AUDIO_VIDEO. "
                    "Audio type is [0]."));
    EXPECT_TRUE(BluetoothUtil::IsVelmoraAudio("Living [AV] Speaker"));
    EXPECT_FALSE(BluetoothUtil::IsVelmoraAudio("[av]"));
}

TEST_F(BluetoothUtilTest, CountsConnectedDevicesWithoutTheMakersAccessories) {
    auto& devices = Fake::TheWorld().devices;
    devices["A0:00:00:00:00:01"] = {true, true, "Swivel Mount B"};
    devices["A0:00:00:00:00:02"] = {true, true, "Mouse"};
    devices["A0:00:00:00:00:02"].isInput = true;
    devices["A0:00:00:00:00:03"] = {true, false, "Away"};
    devices["A0:00:00:00:00:04"] = {true, true};
    devices["A0:00:00:00:00:05"] = {true, true, "Phone", Class(2, 0x0C)};
    std::vector<std::string> connected;
    EXPECT_EQ(BluetoothUtil::GetConnectedDevices(connected), 0);
    EXPECT_THAT(connected, ElementsAre("A0:00:00:00:00:02", "A0:00:00:00:00:05"));
    EXPECT_THAT(Fake::Lines(),
                ElementsAre("I utility OnForeachConnectedDevice: A0:00:00:00:00:02 is connected",
                            "E utility OnForeachConnectedDevice: deviceInfo->remote_name is NULL",
                            "I utility OnForeachConnectedDevice: A0:00:00:00:00:05 is connected"));
    EXPECT_EQ(BluetoothUtil::GetNumberOfBtdevice(), 2);
    EXPECT_EQ(BluetoothUtil::GetConnectedHidDeviceNumber(), 1);
    EXPECT_TRUE(BluetoothUtil::IsMobile("A0:00:00:00:00:05"));
    EXPECT_FALSE(BluetoothUtil::IsMobile("A0:00:00:00:00:02"));
    EXPECT_TRUE(BluetoothUtil::OnForeachConnectedDevice(nullptr, &connected));
    EXPECT_TRUE(BluetoothUtil::OnForeachConnectedDevice(nullptr, nullptr));
}

TEST_F(BluetoothUtilTest, SwitchesTheAdapterAndNotesIt) {
    auto& world = Fake::TheWorld();
    world.adapterName = "[TV] Living";
    EXPECT_TRUE(BluetoothUtil::IsAdapterNameStartsWithTVprefix());
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 1);
    Fake::Fail("bt_adapter_get_state", BT_ERROR_NOT_INITIALIZED);
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 0);
    EXPECT_EQ(BluetoothUtil::SetAdapterDisable(), 0);
    EXPECT_EQ(world.keys["db/low-power-support/bt-disable"], Fake::Value(1));
    EXPECT_EQ(BluetoothUtil::GetAdapterName(), "");
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 0);
    EXPECT_EQ(BluetoothUtil::SetAdapterEnable(), 0);
    EXPECT_EQ(world.keys["db/low-power-support/bt-disable"], Fake::Value(0));
    world.features["com.velmora/featureconf/bluetooth.discoverable"] = false;
    Fake::ClearRecord();
    EXPECT_EQ(BluetoothUtil::SetAdapterVisibility(BT_ADAPTER_VISIBILITY_MODE_GENERAL_DISCOVERABLE),
              0);
    EXPECT_THAT(Fake::Calls(), Contains("bt_adapter_set_visibility(0,0)"));
    EXPECT_THAT(Fake::Lines(),
                testing::IsSupersetOf(
                    {"W utility SetAdapterVisibility: Discoveralbe : 0",
                     "E utility SetAdapterVisibility: <Not Error> bt_adapter_set_visibility[0] , 1 "
                     "= Discoverable , 0 = Non discoverable], ret = [ERROR_NONE]"}));
}

TEST_F(BluetoothUtilTest, ForgetsAccessoriesUntilOneIsGone) {
    Fake::TheWorld().headless = {"A0:00:00:00:00:01", "A0:00:00:00:00:02"};
    Fake::Fail("bt_adapter_unregister_headless_device", BT_ERROR_RESOURCE_BUSY);
    BluetoothUtil::RemoveAllHeadlessDevice();
    EXPECT_THAT(Fake::TheWorld().headless, ElementsAre("A0:00:00:00:00:01"));
    Fake::Fail("bt_adapter_foreach_headless_device_info", BT_ERROR_NOT_SUPPORTED);
    BluetoothUtil::RemoveAllHeadlessDevice();
    EXPECT_EQ(Fake::Lines().back(),
              "E utility RemoveAllHeadlessDevice: failed bt_adapter_foreach_headless_device_info "
              "with [0xffffffa1]");
}

TEST_F(BluetoothUtilTest, SplitsTheLastAudioDeviceAtItsFirstSlash) {
    std::string address;
    std::string name;
    auto& key = Fake::TheWorld().keys["db/nirvo/soundsharedevice/dev_one_addr"];
    key = "A0:B1:C2:D3:E4:F5/Kitchen/2";
    BluetoothUtil::GetLastVelmoraAudioDevice(address, name);
    EXPECT_EQ(address + "|" + name, "A0:B1:C2:D3:E4:F5|Kitchen/2");
    key = "none";
    BluetoothUtil::GetLastVelmoraAudioDevice(address, name);
    EXPECT_EQ(address + "|" + name, "none|none");
}

}  // namespace
