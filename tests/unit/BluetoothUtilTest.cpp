// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/config_store.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/unit/PlatformTest.h"
#include "utility/BluetoothUtil.h"

using Util::BluetoothUtil;

namespace {

constexpr const char* kPhone = "A0:B1:C2:D3:E4:F5";

bool isBondHeld = true;

TvSim::PhonePlan Device(const std::string& address, const std::string& name, int major = 0,
                        int minor = 0) {
    TvSim::PhonePlan plan = Tv::QuietPhone(address);
    plan.name = name;
    plan.deviceClass = static_cast<std::uint32_t>(major << 8 | minor);
    return plan;
}

class BluetoothUtilTest : public PlatformTest {
protected:
    ~BluetoothUtilTest() override { isBondHeld = true; }
    static int NumberKey(const std::string& key) {
        int number = -1;
        vconf_get_int(key.c_str(), &number);
        return number;
    }
    static void Connect(const std::string& address) {
        EXPECT_TRUE(Tv::Bluez().FindPhone(address)->ConnectByItself());
        Tv::RunPending();
    }
};

TEST_F(BluetoothUtilTest, TellsWhatItKnowsOfADevice) {
    Tv::StartBluez({Device(kPhone, "Phone"), Device("B0:00:00:00:00:0B", "")});
    Connect("B0:00:00:00:00:0B");
    Recorder::ClearRecord();
    EXPECT_TRUE(BluetoothUtil::IsPairedDevice("a0:b1:c2:d3:e4:f5"));
    EXPECT_FALSE(BluetoothUtil::IsConnectedDevice("A0:B1:C2:D3:E4:F5"));
    isBondHeld = false;
    EXPECT_FALSE(BluetoothUtil::IsPairedDevice("B0:00:00:00:00:0B"));
    EXPECT_TRUE(BluetoothUtil::IsConnectedDevice("B0:00:00:00:00:0B"));
    EXPECT_THAT(Recorder::Lines(), ElementsAre("W utility IsPairedDevice: is bonded device 1",
                                               "W utility IsConnectedDevice: isConnected 0",
                                               "W utility IsPairedDevice: is bonded device 0",
                                               "W utility IsConnectedDevice: isConnected 1"));
    Recorder::ClearRecord();
    for (const char* address : {"C0:00:00:00:00:0C", "", "A0:B1:C2:D3:E4"}) {
        EXPECT_FALSE(BluetoothUtil::IsPairedDevice(address));
        EXPECT_FALSE(BluetoothUtil::IsConnectedDevice(address));
    }
    Tv::Bluez().SetAdapterPowered(TvSim::Which::kFirst, false);
    Tv::RunPending();
    EXPECT_FALSE(BluetoothUtil::IsPairedDevice("A0:B1:C2:D3:E4:F5"));
    EXPECT_THAT(Recorder::Lines(), IsEmpty());
}

TEST_F(BluetoothUtilTest, TellsTheKindOfADevice) {
    const std::string maker = "usb:v04E8p";
    const struct {
        std::string name;
        int major;
        int minor;
        std::string modalias;
        int type;
        const char* text;
    } rows[] = {
        {"Velmora Wireless Keyboard", 5, 0x80, maker + "2075", 1, "KeyBoard"},
        {"X", 5, 0x80, maker + "2075", 4, "Remocon"},
        {"X", 5, 0x40, "", 1, "KeyBoard"},
        {"X", 5, 0xC0, "", 1, "KeyBoard"},
        {"X", 5, 0x80, maker + "2076", 2, "Mouse"},
        {"X", 5, 0x08, "", 3, "GamePad"},
        {"X", 5, 0x0C, "", 0, "UNKNOWN_DEV_TYPE"},
        {"X", 4, 0x18, maker + "9000", 7, "Soundbar"},
        {"X", 4, 0x28, maker + "9010", 6, "Soundbar"},
        {"[Velmora] Bar", 4, 0x14, maker + "9001", 6, "Soundbar"},
        {"[Velmora]Bar", 4, 0x14, "", 5, "HeadPhone"},
        {"A Velmora Wireless Audio", 4, 0x04, "", 0, "UNKNOWN_DEV_TYPE"},
        {"X", 4, 0x24, maker + "9000", 0, "UNKNOWN_DEV_TYPE"},
        {"X", 2, 0x0C, "", 0, "UNKNOWN_DEV_TYPE"},
        {"", 5, 0x40, "", 0, "UNKNOWN_DEV_TYPE"},
    };
    std::vector<TvSim::PhonePlan> plans = {Device(kPhone, "Set-top", 4, 0x24)};
    const auto address = [](std::size_t i) { return "B0:00:00:00:00:" + std::to_string(10 + i); };
    for (const auto& row : rows) {
        plans.push_back(Device(address(plans.size()), row.name, row.major, row.minor));
        plans.back().modalias = row.modalias.empty() ? "" : row.modalias + "d0100";
    }
    Tv::StartBluez(plans);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(BluetoothUtil::GetDeviceType(address(i + 1)), rows[i].type) << i;
        EXPECT_EQ(BluetoothUtil::GetStringDeviceType(address(i + 1)), rows[i].text) << i;
    }
    Recorder::ClearRecord();
    BluetoothUtil::GetDeviceType(kPhone);
    EXPECT_THAT(
        Recorder::Lines(),
        ElementsAre("I utility GetDeviceType: [Set-top] does not have supported audio minor cod",
                    "D utility GetDeviceType: type : 0, EXIT()",
                    "D utility GetDeviceType: major cod is BT_MAJOR_DEVICE_CLASS_AUDIO_VIDEO. "
                    "Audio type is [0]."));
    EXPECT_TRUE(BluetoothUtil::IsVelmoraAudio("Living [AV] Speaker"));
    EXPECT_FALSE(BluetoothUtil::IsVelmoraAudio("[av]"));
}

TEST_F(BluetoothUtilTest, CountsConnectedDevicesWithoutTheMakersAccessories) {
    Tv::StartBluez({Device("A0:00:00:00:00:01", "Swivel Mount B"),
                    Device("A0:00:00:00:00:02", "Mouse"), Device("A0:00:00:00:00:03", "Away"),
                    Device("A0:00:00:00:00:04", ""),
                    Device("A0:00:00:00:00:05", "Phone", 2, 0x0C)});
    for (const char* address :
         {"A0:00:00:00:00:01", "A0:00:00:00:00:02", "A0:00:00:00:00:04", "A0:00:00:00:00:05"}) {
        Connect(address);
    }
    MemoryBus::Get().Signal(
        "/org/bluez/hci0/dev_A0_00_00_00_00_02", "org.freedesktop.DBus.Properties",
        "PropertiesChanged",
        g_variant_new_parsed("('org.bluez.Device1', "
                             "{'UUIDs': <['00001124-0000-1000-8000-00805f9b34fb']>}, @as [])"));
    Tv::RunPending();
    Recorder::ClearRecord();
    std::vector<std::string> connected;
    EXPECT_EQ(BluetoothUtil::GetConnectedDevices(connected), 0);
    EXPECT_THAT(connected, ElementsAre("A0:00:00:00:00:02", "A0:00:00:00:00:05"));
    EXPECT_THAT(Recorder::Lines(),
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
    const std::string key = "db/low-power-support/bt-disable";
    TvSim::AdapterPlan adapter;
    adapter.name = "[TV] Living";
    Tv::StartBluez({}, adapter);
    EXPECT_TRUE(BluetoothUtil::IsAdapterNameStartsWithTVprefix());
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 1);
    Recorder::Fail("bt_adapter_get_state", BT_ERROR_NOT_INITIALIZED);
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 0);
    EXPECT_EQ(BluetoothUtil::SetAdapterDisable(), 0);
    Tv::RunPending();
    EXPECT_EQ(NumberKey(key), 1);
    EXPECT_EQ(BluetoothUtil::GetAdapterName(), "");
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 0);
    EXPECT_EQ(BluetoothUtil::SetAdapterEnable(), 0);
    Tv::RunPending();
    EXPECT_EQ(NumberKey(key), 0);
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 1);
    Tv::SetFeature("com.velmora/featureconf/bluetooth.discoverable", "false");
    Recorder::ClearRecord();
    EXPECT_EQ(BluetoothUtil::SetAdapterVisibility(BT_ADAPTER_VISIBILITY_MODE_GENERAL_DISCOVERABLE),
              0);
    EXPECT_THAT(Recorder::Calls(), Contains("bt_adapter_set_visibility(0,0)"));
    EXPECT_THAT(Recorder::Lines(),
                testing::IsSupersetOf(
                    {"W utility SetAdapterVisibility: Discoveralbe : 0",
                     "E utility SetAdapterVisibility: <Not Error> bt_adapter_set_visibility[0] , 1 "
                     "= Discoverable , 0 = Non discoverable], ret = [ERROR_NONE]"}));
}

TEST_F(BluetoothUtilTest, ForgetsAccessoriesUntilOneIsGone) {
    std::string address = "A0:00:00:00:00:01";
    bt_adapter_headless_dev_info_s info = {address.data()};
    const auto forget = [&] { return BluetoothUtil::RemoveAllHeadlessDeviceCb(&info, nullptr); };
    Recorder::Fail("bt_adapter_unregister_headless_device", BT_ERROR_RESOURCE_BUSY);
    EXPECT_TRUE(forget()) << "goes on";
    Recorder::Fail("bt_adapter_unregister_headless_device", BT_ERROR_NONE);
    EXPECT_FALSE(forget());
    EXPECT_EQ(Recorder::Calls(),
              Texts(2, "bt_adapter_unregister_headless_device(A0:00:00:00:00:01)"));
    info.remote_address = nullptr;
    EXPECT_FALSE(forget());
    Recorder::Fail("bt_adapter_foreach_headless_device_info", BT_ERROR_NONE);
    BluetoothUtil::RemoveAllHeadlessDevice();
    BluetoothUtil::RemoveAllHeadlessDevice();
    EXPECT_EQ(*(Recorder::Story().end() - 3),
              "I utility RemoveAllHeadlessDevice: bt_adapter_foreach_headless_device_info "
              ":successful");
    EXPECT_EQ(Recorder::Lines().back(),
              "E utility RemoveAllHeadlessDevice: failed bt_adapter_foreach_headless_device_info "
              "with [0xffffffa1]");
}

TEST_F(BluetoothUtilTest, SplitsTheLastAudioDeviceAtItsFirstSlash) {
    std::string address;
    std::string name;
    const std::string key = "db/nirvo/soundsharedevice/dev_one_addr";
    Tv::SetKey(key, "A0:B1:C2:D3:E4:F5/Kitchen/2");
    BluetoothUtil::GetLastVelmoraAudioDevice(address, name);
    EXPECT_EQ(address + "|" + name, "A0:B1:C2:D3:E4:F5|Kitchen/2");
    Tv::SetKey(key, "none");
    BluetoothUtil::GetLastVelmoraAudioDevice(address, name);
    EXPECT_EQ(address + "|" + name, "none|none");
}

}  // namespace

// A TV may know a device without a bond; platform/linux never does.
// NOLINTBEGIN(bugprone-reserved-identifier): the names that the linker gives
extern "C" {
int __real_bt_adapter_get_bonded_device_info(const char* address, bt_device_info_s** info);
int __wrap_bt_adapter_get_bonded_device_info(const char* address, bt_device_info_s** info) {
    const int result = __real_bt_adapter_get_bonded_device_info(address, info);
    if (result == BT_ERROR_NONE) {
        (*info)->is_bonded = isBondHeld;
    }
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
