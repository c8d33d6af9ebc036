// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "common/CHandle.h"
#include "tests/contract/World.h"

namespace {

class DeviceContractTest : public ContractTest {
protected:
    DeviceContractTest() {
        bt_audio_set_connection_state_changed_cb([](int, bool, const char*, void*) {}, nullptr);
    }
    ~DeviceContractTest() override { bt_audio_unset_connection_state_changed_cb(); }
    static bool OnDevice(bt_device_info_s* info, void* texts) noexcept {
        auto& seen = *static_cast<Texts*>(texts);
        seen.push_back(info->remote_address + std::string(" ") +
                       std::to_string(info->bt_class.major_device_class) + "/" +
                       std::to_string(info->bt_class.minor_device_class));
        return seen.size() < 3;
    }
    // How many are connected, and which was the last.
    static std::string Connected() {
        bt_audio_connected_info_s* info = nullptr;
        EXPECT_EQ(bt_audio_get_connected_info(BT_AUDIO_PROFILE_TYPE_A2DP_SINK, &info), 0);
        const CPtr<bt_audio_connected_info_s, bt_audio_free_connected_info> record(info);
        return std::to_string(info->connected_count) + " " +
               (info->remote_address == nullptr ? "none" : info->remote_address);
    }
    bool AwaitState(bt_adapter_state_e wanted) {
        bt_adapter_state_e state = BT_ADAPTER_DISABLED;
        return m_world->Await([&] { return bt_adapter_get_state(&state) == 0 && state == wanted; });
    }
};

TEST_F(DeviceContractTest, TellsOnlyOfBondedDevices) {
    Texts seen;
    EXPECT_EQ(bt_adapter_foreach_bonded_device(nullptr, &seen), BT_ERROR_INVALID_PARAMETER);
    m_world->TurnOn();
    EXPECT_EQ(bt_adapter_foreach_bonded_device(OnDevice, &seen), 0);
    EXPECT_THAT(seen,
                testing::ElementsAre(kPhones[3].address + " 4/24", kPhones[0].address + " 4/24",
                                     kPhones[1].address + " 4/24"));
    EXPECT_EQ(bt_adapter_foreach_bonded_device(OnDevice, &seen), 0);
    EXPECT_EQ(seen.size(), 4U) << "ends when the callback says so";
    int vendor = 1;
    int product = 2;
    bool isConnected = true;
    const char* stranger = kPhones[2].address.c_str();
    EXPECT_EQ(bt_device_get_remote_vid_pid(stranger, &vendor, &product),
              BT_ERROR_REMOTE_DEVICE_NOT_BONDED);
    EXPECT_EQ(vendor + product, 3) << "untouched";
    EXPECT_EQ(bt_device_set_authorization(stranger, BT_DEVICE_AUTHORIZED),
              BT_ERROR_REMOTE_DEVICE_NOT_BONDED);
    const char* alice = "a0:00:00:00:00:0a";
    EXPECT_EQ(bt_device_get_remote_vid_pid(alice, &vendor, &product), 0);
    EXPECT_TRUE(vendor == kVendor && product == kProduct);
    EXPECT_EQ(bt_device_is_profile_connected(alice, BT_PROFILE_HID, &isConnected), 0);
    EXPECT_FALSE(isConnected);
    EXPECT_EQ(bt_device_is_profile_connected(alice, static_cast<bt_profile_e>(1), &isConnected),
              BT_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(bt_device_set_authorization(alice, BT_DEVICE_AUTHORIZED), 0);
    EXPECT_EQ(Connected(), "0 none");
    m_world->SetConnected(kPhones[0], true);
    EXPECT_TRUE(m_world->Await([] { return Connected() == "1 " + kPhones[0].address; }));
    m_world->SetConnected(kPhones[0], false);
}

TEST_F(DeviceContractTest, SwitchesTheAdapter) {
    m_world->TurnOn();
    EXPECT_EQ(bt_adapter_enable(), BT_ERROR_ALREADY_DONE);
    const auto mayBeMissing = testing::AnyOf(0, BT_ERROR_NOT_SUPPORTED);
    EXPECT_THAT(bt_adapter_set_connectable(true), mayBeMissing);
    EXPECT_THAT(bt_avrcp_target_send_cmd(0x40), mayBeMissing);
    const auto visible = BT_ADAPTER_VISIBILITY_MODE_GENERAL_DISCOVERABLE;
    EXPECT_EQ(bt_adapter_set_visibility(visible, -1), BT_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(bt_adapter_set_visibility(visible, 0), 0);
    EXPECT_EQ(bt_adapter_disable(), 0);
    EXPECT_TRUE(AwaitState(BT_ADAPTER_DISABLED));
    EXPECT_EQ(bt_adapter_disable(), BT_ERROR_ALREADY_DONE);
    EXPECT_EQ(bt_adapter_set_visibility(visible, 0), BT_ERROR_NOT_ENABLED);
    EXPECT_EQ(bt_adapter_reset(), BT_ERROR_NOT_ENABLED);
    EXPECT_EQ(bt_adapter_enable(), 0);
    EXPECT_TRUE(AwaitState(BT_ADAPTER_ENABLED));
}

}  // namespace
