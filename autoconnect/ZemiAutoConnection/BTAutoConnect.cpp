// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"

#include <glib.h>

#include <cstdint>
#include <vector>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/AutoConnectDbg.h"
#include "common/AdvertisingData.h"
#include "common/CHandle.h"
#include "utility/AppManagerUtil.h"
#include "utility/BluetoothUtil.h"
#include "utility/CommonUtil.h"
#include "utility/TvStatusUtil.h"

namespace {

enum Status { kIdle = 0, kScanning = 1, kConnecting = 2 };

constexpr int kMsPerSec = 1000;
// The phone's player shows up over AVRCP some time after the audio connection.
constexpr unsigned int kPlaybackCheckDelayMs = 3000;

int CheckPlayback(void* /*user_data*/) noexcept {
    bt_avrcp_player_state_e state = BT_AVRCP_PLAYER_STATE_STOPPED;
    if (bt_avrcp_control_get_play_status(&state) != BT_ERROR_NONE) {
        BTLOG_ERROR("fail to get playing status");
    } else if (state == BT_AVRCP_PLAYER_STATE_PLAYING) {
        BTLOG_INFO("already playing");
    } else {
        BTLOG_INFO("send play cmd to bmplayer");
        Util::AppManagerUtil::LaunchApp(Conditions::kMediaPlayerAppId, {{"cmd", "play"}}, true);
    }
    return G_SOURCE_REMOVE;
}

}  // namespace

CBtAutoConnect::~CBtAutoConnect() {
    Util::CommonUtil::RemoveTimer(&m_scanTimer);
    Util::CommonUtil::RemoveTimer(&m_wakeUpTimer);
}

void CBtAutoConnect::StartAutoConnect() {
    m_deviceFound = false;
    m_tryingList = false;
    m_status = kIdle;
    m_wakeUp = false;
    m_connectingAddress.clear();
    const std::vector<std::string> devices = m_mobileList.GetList();
    if (devices.empty()) {
        BTLOG_WARN("auto connection list is empty");
        return;
    }
    if (!IsValidCondition()) {
        BTLOG_WARN("Not supported condition");
        return;
    }
    std::string text;
    for (const std::string& device : devices) {
        text += device + ", ";
    }
    BTLOG_INFO("auto connection devices : %s", text.c_str());
    StartLEScan();
}

bool CBtAutoConnect::IsValidCondition() const {
    if (!Conditions::IsAmbientModeAccepted(Util::TvStatusUtil::GetAmbientMode()) ||
        !Conditions::IsAmbientTypeAccepted(Util::TvStatusUtil::GetAmbientType())) {
        return false;
    }
    BTLOG_INFO("Ambient mode");
    return true;
}

bool CBtAutoConnect::ConnectToDevice(const std::string& address) {
    if (!IsValidCondition()) {
        m_status = kIdle;
        BTLOG_WARN("Not supported condition");
        return true;
    }
    if (!Util::BluetoothUtil::IsPairedDevice(address)) {
        BTLOG_ERROR("Not bonded device");
        m_status = kIdle;
        return false;
    }
    m_status = kConnecting;
    m_connectingAddress = address;
    BTLOG_INFO("Try to connect %s", address.c_str());
    bt_audio_connect(address.c_str(), BT_AUDIO_PROFILE_TYPE_A2DP_SINK);
    return true;
}

void CBtAutoConnect::ConnectToDeviceInList(bool reset) {
    static unsigned int position = 0;
    if (reset) {
        position = 0;
    }
    // A loop, not a recursion: the list may hold many phones that are not bonded.
    const std::vector<std::string> devices = m_mobileList.GetList();
    while (position < devices.size()) {
        BTLOG_INFO("Try to connect device");
        const std::string& address = devices[position];
        ++position;
        m_tryingList = true;
        if (ConnectToDevice(address)) {
            return;
        }
    }
    m_tryingList = false;
    BTLOG_WARN("No more device to try connect");
    m_status = kIdle;
    position = 0;
}

void CBtAutoConnect::OnAudioSinkConnectionState(int result, bool connected, const char* address) {
    const std::string text = address == nullptr ? "" : address;
    if (connected) {
        OnAudioSinkConnected(result, text);
    } else {
        OnAudioSinkDisconnected(result, text);
    }
}

void CBtAutoConnect::OnAudioSinkConnected(int result, const std::string& address) {
    BTLOG_INFO("result : %d, address : %s", result, address.c_str());
    if (result == BT_ERROR_NONE) {
        m_tryingList = false;
        m_status = kIdle;
        if (address == m_connectingAddress) {
            g_timeout_add(kPlaybackCheckDelayMs, CheckPlayback, nullptr);
        }
        m_connectingAddress.clear();
        return;
    }
    if (m_status == kConnecting) {
        BTLOG_ERROR("Connect Fail");
        ConnectToDeviceInList(false);
    }
}

void CBtAutoConnect::OnAudioSinkDisconnected(int result, const std::string& address) {
    BTLOG_INFO("result : %d, address : %s", result, address.c_str());
}

void CBtAutoConnect::SetWakeUpTime(bool on) {
    m_wakeUp = on;
    BTLOG_DEBUG("Turn On TV : %d", on);
    if (on) {
        Util::CommonUtil::RemoveTimer(&m_wakeUpTimer);
        m_wakeUpTimer = g_timeout_add(Conditions::kWakeUpWindowMs, OnWakeUptimer, this);
    }
}

bool CBtAutoConnect::IsWakeUpTime() const {
    BTLOG_WARN("Turn On TV : %d", m_wakeUp);
    return m_wakeUp;
}

int CBtAutoConnect::OnWakeUptimer(void* user_data) noexcept {
    if (user_data == nullptr) {
        BTLOG_ERROR("user_data is NULL");
        return G_SOURCE_REMOVE;
    }
    auto* self = static_cast<CBtAutoConnect*>(user_data);
    self->m_wakeUpTimer = 0;
    self->SetWakeUpTime(false);
    return G_SOURCE_REMOVE;
}

void CBtAutoConnect::StartLEScan() {
    m_status = kScanning;
    // At a second wake-up the first one's timer still runs. Two timers would walk the list twice,
    // and the old one would walk it without a scan if the start below fails.
    if (m_scanTimer != 0) {
        Util::CommonUtil::RemoveTimer(&m_scanTimer);
    }
    const int result = bt_adapter_le_start_scan(OnLeScanResult, this);
    if (result != BT_ERROR_NONE && result != BT_ERROR_NOW_IN_PROGRESS) {
        BTLOG_ERROR("failed bt_adapter_le_start_scan: %s ", Util::CommonUtil::ERR_STR(result));
        return;
    }
    BTLOG_INFO("Start LE scan : %s", Util::CommonUtil::ERR_STR(result));
    m_scanTimer = g_timeout_add(static_cast<unsigned int>(m_scanTimeoutSec * kMsPerSec),
                                OnLEScanTimeout, this);
}

void CBtAutoConnect::StopLEScan() {
    BTLOG_INFO("Stop Le Scan");
    Util::CommonUtil::RemoveTimer(&m_scanTimer);
    bt_adapter_le_stop_scan();
}

void CBtAutoConnect::OnLeScanResult(int result, bt_adapter_le_device_scan_result_info_s* info,
                                    void* user_data) noexcept {
    if (user_data == nullptr) {
        BTLOG_ERROR("user_data is NULL");
        return;
    }
    if (result != BT_ERROR_NONE) {
        BTLOG_ERROR("result is not BT_ERROR_NONE");
        return;
    }
    static_cast<CBtAutoConnect*>(user_data)->ProcessLEScanResult(info);
}

void CBtAutoConnect::ProcessLEScanResult(bt_adapter_le_device_scan_result_info_s* info) {
    if (m_deviceFound) {
        BTLOG_WARN("Device Found Already, Ignore");
        return;
    }
    int manufacturerId = 0;
    int size = 0;
    MallocPtr<char> data;
    const int result = bt_adapter_le_get_scan_result_manufacturer_data(
        info, BT_ADAPTER_LE_PACKET_ADVERTISING, &manufacturerId, Out(data), &size);
    if (result != BT_ERROR_NONE) {
        BTLOG_ERROR("fail to get manufacturer data");
        return;
    }
    if (size < static_cast<int>(kPhoneDataSize)) {
        BTLOG_ERROR("manufaturerDataLen size is small");
        return;
    }
    const std::string address =
        ByteArrayToHexString(data.get(), kPhoneAddressStart, kPhoneAddressSize, ":");
    if (m_mobileList.Exist(address)) {
        m_deviceFound = true;
        StopLEScan();
        ConnectToDevice(address);
    }
}

int CBtAutoConnect::OnLEScanTimeout(void* user_data) noexcept {
    if (user_data == nullptr) {
        BTLOG_ERROR("user_data is NULL");
        return G_SOURCE_REMOVE;
    }
    auto* self = static_cast<CBtAutoConnect*>(user_data);
    self->m_scanTimer = 0;
    self->StopLEScan();
    if (!self->m_deviceFound) {
        BTLOG_INFO("No found mobile. Try to connect mobiles in list sequentially");
        self->ConnectToDeviceInList(true);
    }
    return G_SOURCE_REMOVE;
}

std::string CBtAutoConnect::ByteArrayToHexString(const char* data, int start, int length,
                                                 const std::string& separator) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string text;
    for (int i = start; i < start + length; ++i) {
        const auto byte = static_cast<std::uint8_t>(data[i]);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
        if (i + 1 < start + length) {
            text += separator;
        }
    }
    BTLOG_INFO("%s", text.c_str());
    return text;
}
