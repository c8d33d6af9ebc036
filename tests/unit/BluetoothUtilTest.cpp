// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/PlatformTest.h"
#include "utility/BluetoothUtil.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Util::BluetoothUtil;

namespace {

class BluetoothUtilTest : public PlatformTest {};

TEST_F(BluetoothUtilTest, TellsTheAdapterState) {
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 1);
    Fake::TheWorld().adapterOn = false;
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 0);
    Fake::TheWorld().adapterOn = true;
    Fake::Fail("bt_adapter_get_state", BT_ERROR_NOT_INITIALIZED);
    EXPECT_EQ(BluetoothUtil::GetAdapterState(), 0);
    EXPECT_THAT(Fake::Lines(), IsEmpty());
}

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

}  // namespace
