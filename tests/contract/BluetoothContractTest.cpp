// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "common/CHandle.h"
#include "tests/contract/World.h"

namespace {

const std::string& alice = kPhones[0].address;
const std::string& ben = kPhones[1].address;
const std::string& stranger = kPhones[2].address;
const std::string& dora = kPhones[3].address;

int Connect(const char* address) {
    return bt_audio_connect(address, BT_AUDIO_PROFILE_TYPE_A2DP_SINK);
}

// The manufacturer data of a packet of exactly this size; "-" when there are none.
std::string Parse(std::vector<char> packet) {
    const bt_adapter_le_device_scan_result_info_s info = {
        nullptr, 0,      static_cast<int>(packet.size()), packet.empty() ? nullptr : packet.data(),
        0,       nullptr};
    int company = -1;
    int length = -1;
    char* data = nullptr;
    const bool isFound =
        bt_adapter_le_get_scan_result_manufacturer_data(&info, BT_ADAPTER_LE_PACKET_ADVERTISING,
                                                        &company, &data, &length) == BT_ERROR_NONE;
    const MallocPtr<char> owner(data);
    EXPECT_TRUE(isFound || (company == -1 && length == -1 && data == nullptr));
    return isFound ? std::to_string(company) + ":" + std::string(data, data + length) : "-";
}

// The bonded device as the platform knows it; the code when it knows none.
std::string Known(const char* address) {
    bt_device_info_s* info = nullptr;
    const int result = bt_adapter_get_bonded_device_info(address, &info);
    const CPtr<bt_device_info_s, bt_adapter_free_device_info> record(info);
    EXPECT_EQ(result == BT_ERROR_NONE, info != nullptr && info->is_bonded);
    return info == nullptr ? std::to_string(result)
                           : info->remote_address + std::string(info->is_connected ? " up " : " ") +
                                 (info->remote_name != nullptr ? info->remote_name : "nameless");
}

class BluetoothContractTest : public ContractTest {
protected:
    BluetoothContractTest() { bt_audio_set_connection_state_changed_cb(OnConnection, &m_events); }
    ~BluetoothContractTest() override {
        bt_audio_unset_connection_state_changed_cb();
        bt_adapter_le_stop_scan();
    }

    static void OnConnection(int result, bool up, const char* address, void* texts) noexcept {
        const bool isGood = result == BT_ERROR_NONE;
        const std::string what = up ? (isGood ? "up " : "failed ") : isGood ? "down " : "given up ";
        static_cast<Texts*>(texts)->push_back(what + address);
    }
    static void OnScan(int result, bt_adapter_le_device_scan_result_info_s* info,
                       void* texts) noexcept {
        EXPECT_EQ(result == BT_ERROR_NONE, info != nullptr);
        const std::string packet(
            info != nullptr ? info->adv_data : "",
            info != nullptr ? static_cast<std::size_t>(info->adv_data_len) : 0);
        static_cast<Texts*>(texts)->push_back(Parse({packet.begin(), packet.end()}));
        if (static_cast<Texts*>(texts)->back()[2] == '!') {
            EXPECT_EQ(bt_adapter_le_stop_scan(), BT_ERROR_NONE);
        }
    }

    Texts m_events;
    Texts m_results;
};

TEST_F(BluetoothContractTest, WithoutAdapterScansBreakAndNothingBegins) {
    for (int round = 0; round < 3; ++round) {
        if (round > 0) {
            m_world->TurnOn();
            EXPECT_EQ(bt_adapter_le_start_scan(OnScan, &m_results), BT_ERROR_NONE);
            EXPECT_TRUE(m_world->Await([&] { return round == 1 || m_world->Advertise({}); }));
            m_world->TurnOff();
            Expect(m_results, {"-"});
        }
        bt_adapter_state_e state = BT_ADAPTER_ENABLED;
        EXPECT_EQ(bt_adapter_get_state(&state), BT_ERROR_NONE);
        EXPECT_EQ(state, BT_ADAPTER_DISABLED);
        EXPECT_EQ(Known(alice.c_str()), std::to_string(BT_ERROR_NOT_ENABLED));
        EXPECT_EQ(bt_adapter_le_start_scan(OnScan, &m_results), BT_ERROR_NOT_ENABLED);
        EXPECT_EQ(bt_adapter_le_stop_scan(), BT_ERROR_NOT_IN_PROGRESS);
        EXPECT_EQ(Connect(alice.c_str()), BT_ERROR_NONE);
        EXPECT_TRUE(m_events.empty());
        Expect(m_events, {"failed " + alice});
    }
}

TEST_F(BluetoothContractTest, ResultsComeOnlyDuringTheScan) {
    // As long as what names a phone.
    const auto bytes = [](unsigned char c) { return std::vector(15, c); };
    const auto text = [](char c) { return ":" + std::string(15, c); };
    m_world->TurnOn();
    for (const bool isStoppedByResult : {true, false}) {
        EXPECT_EQ(bt_adapter_le_start_scan(OnScan, &m_results), BT_ERROR_NONE);
        EXPECT_EQ(bt_adapter_le_start_scan(OnScan, nullptr), BT_ERROR_NOW_IN_PROGRESS);
        EXPECT_TRUE(m_world->Await([&] { return m_world->Advertise({{1, bytes('a')}}); }));
        Expect(m_results, {"1" + text('a')});
        m_world->Advertise({{1, bytes('b')}, {0xFFEE, bytes('c')}});
        Expect(m_results, {"1" + text('b'), "65518" + text('c')});
        // The radio has heard it, the loop has not.
        m_world->Advertise({{7, bytes(isStoppedByResult ? '!' : '?')}, {8, bytes('d')}});
        if (isStoppedByResult) {
            Expect(m_results, {"7" + text('!')});
        } else {
            EXPECT_EQ(bt_adapter_le_stop_scan(), BT_ERROR_NONE);
            m_results.clear();
        }
        EXPECT_EQ(bt_adapter_le_stop_scan(), BT_ERROR_NOT_IN_PROGRESS);
        EXPECT_TRUE(m_world->Await([&] { return !m_world->Advertise({{9, bytes('e')}}); }));
        Expect(m_results, {});
    }
}

// Dora's other advertisements of the same second, and those of a phone without a bond, say nothing.
TEST_F(BluetoothContractTest, BondedPhoneThatIsRecognisedNamesItself) {
    const std::string named = ":" + std::string(7, '\0') + "\x90" + std::string(4, '\0') + "\r";
    m_world->TurnOn();
    for (int scan = 0; scan < 2; ++scan) {
        EXPECT_EQ(bt_adapter_le_start_scan(OnScan, &m_results), BT_ERROR_NONE);
        EXPECT_TRUE(m_world->Await([&] { return m_world->Advertise({}); }));
        if (!m_world->AdvertiseIdentity(kPhones[3])) {
            return;
        }
        m_world->AdvertiseIdentity(kPhones[3]);
        m_world->AdvertiseIdentity(kPhones[2]);
        Expect(m_results, {"65535" + named + std::string(2, '\0')});
        EXPECT_EQ(bt_adapter_le_stop_scan(), BT_ERROR_NONE);
        EXPECT_TRUE(m_world->Await([&] { return !m_world->AdvertiseIdentity(kPhones[3]); }));
        Expect(m_results, {});
    }
}

// A structure of each length in a packet of each size, after another one or not.
TEST_F(BluetoothContractTest, ParserTakesWhatLiesWholeInThePacket) {
    for (std::size_t i = 0; i < std::size_t{256} * 256; ++i) {
        const std::size_t size = i % 256;
        const std::size_t length = i / 256;
        std::vector<char> packet = {static_cast<char>(length), '\xFF'};
        packet.resize(size, 'x');
        const bool isWhole = length >= 3 && length < size;
        const std::string expected = isWhole ? "30840:" + std::string(length - 3, 'x') : "-";
        EXPECT_EQ(Parse(packet), expected);
        packet.insert(packet.begin(), {2, 1, 6});
        EXPECT_EQ(Parse(packet), expected);
    }
}

TEST_F(BluetoothContractTest, EachRequestEndsInOneEventOfItsAddress) {
    m_world->TurnOn();
    for (const std::string state : {" ", " up "}) {
        EXPECT_EQ(Known("a0:00:00:00:00:0a"), alice + state + "Alice");
        EXPECT_EQ(Known(stranger.c_str()), std::to_string(BT_ERROR_REMOTE_DEVICE_NOT_BONDED));
        EXPECT_EQ(Connect("a0:00:00:00:00:0a"), BT_ERROR_NONE);
        EXPECT_EQ(Connect(alice.c_str()), BT_ERROR_NOW_IN_PROGRESS);
        EXPECT_TRUE(m_events.empty());
        Expect(m_events, {"up " + alice});
        // One attempt at a time: the last one that is asked for.
        EXPECT_EQ(Connect(alice.c_str()), BT_ERROR_NONE);
        EXPECT_EQ(Connect(ben.c_str()), BT_ERROR_NONE);
        EXPECT_EQ(Connect(stranger.c_str()), BT_ERROR_NONE);
        EXPECT_TRUE(m_events.empty());
        Expect(m_events, {"given up " + alice, "given up " + ben, "failed " + stranger});
        EXPECT_EQ(Connect(ben.c_str()), BT_ERROR_NONE);
        Expect(m_events, {"failed " + ben});
    }
    for (const char* address : {"", "A0:00:00:00:00", "A0:00:00:00:00-0A", "A0:00:00:00:00:0G"}) {
        EXPECT_EQ(Connect(address), BT_ERROR_INVALID_PARAMETER) << address;
        EXPECT_EQ(Known(address), std::to_string(BT_ERROR_INVALID_PARAMETER)) << address;
    }
}

TEST_F(BluetoothContractTest, PhoneComesAndGoesByItself) {
    bt_avrcp_player_state_e player = BT_AVRCP_PLAYER_STATE_PAUSED;
    Texts replacement;
    m_world->TurnOn();
    for (Texts* heard : {&m_events, &replacement}) {
        EXPECT_EQ(bt_audio_set_connection_state_changed_cb(OnConnection, heard), BT_ERROR_NONE);
        m_world->SetConnected(kPhones[1], true);
        Expect(*heard, {"up " + ben});
        EXPECT_EQ(Known(ben.c_str()), ben + " up nameless");
        m_world->SetConnected(kPhones[1], false);
        Expect(*heard, {"down " + ben});
        EXPECT_EQ(Known(ben.c_str()), ben + " nameless");
        EXPECT_EQ(bt_avrcp_control_get_play_status(&player), BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED);
    }
    EXPECT_TRUE(m_events.empty());
}

TEST_F(BluetoothContractTest, PhoneThatWasAskedForIsMeantAlsoWhenAnotherComesAndItLeaves) {
    bt_avrcp_player_state_e player = BT_AVRCP_PLAYER_STATE_PAUSED;
    m_world->TurnOn();
    EXPECT_EQ(Connect(alice.c_str()), BT_ERROR_NONE);
    Expect(m_events, {"up " + alice});
    m_world->SetConnected(kPhones[1], true);
    m_world->SetConnected(kPhones[0], false);
    Expect(m_events, {"up " + ben, "down " + alice});
    EXPECT_EQ(bt_avrcp_control_get_play_status(&player), BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED);
}

// The answer comes with the phone's own connection: one event for the request, one for that.
TEST_F(BluetoothContractTest, AnswerThatComesTooLateIsNoSecondEvent) {
    m_world->TurnOn();
    EXPECT_EQ(Connect(dora.c_str()), BT_ERROR_NONE);
    Expect(m_events, {"failed " + dora});
    m_world->SetConnected(kPhones[3], true);
    Expect(m_events, {"up " + dora});
}

TEST_F(BluetoothContractTest, WhatIsAnotherAdaptersCountsWhenThatOneTakesOver) {
    char* name = nullptr;
    Texts bonded;
    const auto onDevice = [](bt_device_info_s* info, void* texts) {
        static_cast<Texts*>(texts)->emplace_back(info->remote_address);
        return true;
    };
    m_world->TurnOn();
    EXPECT_EQ(bt_adapter_le_start_scan(OnScan, &m_results), BT_ERROR_NONE);
    EXPECT_TRUE(m_world->Await([&] { return m_world->Advertise({}); }));
    if (!m_world->AddAdapter()) {
        return;
    }
    Expect(m_results, {});
    EXPECT_EQ(bt_adapter_foreach_bonded_device(onDevice, &bonded), BT_ERROR_NONE);
    EXPECT_THAT(bonded, testing::ElementsAre(dora, alice, ben));
    EXPECT_EQ(Known(stranger.c_str()), std::to_string(BT_ERROR_REMOTE_DEVICE_NOT_BONDED));
    EXPECT_EQ(Connect(stranger.c_str()), BT_ERROR_NONE);
    Expect(m_events, {"failed " + stranger});
    m_world->TurnOff();
    Expect(m_results, {"-"});
    EXPECT_EQ(Known(stranger.c_str()), stranger + " up nameless");
    EXPECT_EQ(Known(alice.c_str()), std::to_string(BT_ERROR_REMOTE_DEVICE_NOT_BONDED));
    EXPECT_EQ(bt_adapter_get_name(&name), BT_ERROR_OPERATION_FAILED);
}

}  // namespace
