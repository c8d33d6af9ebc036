// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "platform/bluetooth.h"

// The auto-connection engine: finds a registered phone and connects it as the audio source.
//
// An attempt begins with StartAutoConnect: for five seconds it listens to LE advertisements for one
// that carries the address of a registered phone, and connects the first such phone. When none is
// heard it tries the registered phones in order; after each failed connection it tries the next
// one. Three seconds after a connection that it asked for succeeded, it makes the phone play,
// unless the phone plays already.
//
// It also keeps the wake-up window: the ten seconds after the TV woke in which the shell may start
// an attempt. Main loop's thread only. Failures are logged and not reported to the caller.
class CBtAutoConnect {
public:
    CBtAutoConnect() = default;
    ~CBtAutoConnect();
    CBtAutoConnect(const CBtAutoConnect&) = delete;
    CBtAutoConnect& operator=(const CBtAutoConnect&) = delete;

    // Begins an attempt and closes the wake-up window.
    void StartAutoConnect();
    // Whether the TV is in the state in which phones are connected: the ambient picture shows.
    [[nodiscard]] bool IsValidCondition() const;
    // Connects one phone. False when it is not bonded, so that the next one may be tried at once;
    // true when no other phone is to be tried now.
    bool ConnectToDevice(const std::string& address);
    // Tries the next phone of the list, or the first one when `reset` is set.
    void ConnectToDeviceInList(bool reset);

    // The platform's report on an A2DP connection, with the arguments of
    // bt_audio_connection_state_changed_cb. `address` may be NULL.
    void OnAudioSinkConnectionState(int result, bool connected, const char* address);
    void OnAudioSinkConnected(int result, const std::string& address);
    void OnAudioSinkDisconnected(int result, const std::string& address);

    // 0 idle, 1 scanning, 2 connecting.
    [[nodiscard]] int GetStatus() const { return m_status; }
    [[nodiscard]] bool IsPortrait() const { return false; }
    // Applies a phone's own setting; `cmd` as in MobileList::UpdateList.
    void UpdateMobileList(const std::string& cmd) { m_mobileList.UpdateList(cmd); }

    // Opens the wake-up window for ten seconds from now, or closes it.
    void SetWakeUpTime(bool on);
    [[nodiscard]] bool IsWakeUpTime() const;

    void StartLEScan();
    void StopLEScan();
    // Connects the phone if the advertisement names a registered one. `info` is not NULL.
    void ProcessLEScanResult(bt_adapter_le_device_scan_result_info_s* info);

    // Callbacks of the platform and the main loop; `user_data` is the engine.
    static void OnLeScanResult(int result, bt_adapter_le_device_scan_result_info_s* info,
                               void* user_data) noexcept;
    static int OnLEScanTimeout(void* user_data) noexcept;
    static int OnWakeUptimer(void* user_data) noexcept;

    // The text of `length` bytes from data[start] on, two upper-case hexadecimal digits each, with
    // `separator` between them. `data` holds at least start + length bytes.
    static std::string ByteArrayToHexString(const char* data, int start, int length,
                                            const std::string& separator);

private:
    MobileList m_mobileList;
    int m_scanTimeoutSec = 5;
    std::string m_connectingAddress;  // of the last bt_audio_connect; cleared by any success
    bool m_deviceFound = false;       // a registered phone was recognised in this attempt
    bool m_tryingList = false;        // the attempt walks the list
    int m_status = 0;
    unsigned int m_scanTimer = 0;
    unsigned int m_wakeUpTimer = 0;
    bool m_wakeUp = false;
};
