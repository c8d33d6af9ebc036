// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/bluetooth.h"
#include "platform/linux/bluez/ConnectRequest.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Scan.h"

namespace Bluez {

// A2DP connections in which this machine is the sink: makes them, one at a time, and tells the one
// listener what becomes of them. Functions and result codes are those of the Bluetooth interface.
// Main loop only.
class Audio : private Listener {
public:
    Audio(Mirror& mirror, Scan& scan);
    ~Audio() override;

    void SetCallback(bt_audio_connection_state_changed_cb callback, void* userData);
    // `address` is well-formed.
    int Connect(const std::string& address);

    // Path of the device whose connection was asked for last and came about, also when it came
    // later than it was waited for; before there was one, of the device that connected last. Empty
    // when that one has left, also when others are still there: what is meant for it is not meant
    // for another.
    [[nodiscard]] std::string CurrentPhone() const;
    // Path of the one of those still connected that came last; empty when none.
    [[nodiscard]] std::string LastOfConnected() const;
    [[nodiscard]] std::size_t ConnectedCount() const { return m_connected.size(); }

private:
    void StartFirst();
    void OnRequestEnded(const ConnectRequest& request, int result);
    [[nodiscard]] bool HasRequest(const std::string& address) const;
    void SetPhone(const std::string& device, const std::string& address);

    struct Connection {
        std::string device;  // object path
        std::string address;
    };
    std::vector<Connection>::iterator FindConnected(const std::string& device);
    void AddConnected(const std::string& device, const std::string& address);
    void RemoveConnected(const std::string& device);
    void FailAll(const std::string& adapter, const char* reason);
    void Tell(int result, bool connected, const std::string& address) const;

    void OnServiceGone() override;
    void OnAdapterLost(const std::string& path) override;
    void OnDeviceDisconnected(const std::string& path) override;
    void OnTransportAdded(const std::string& device) override;
    void OnTransportRemoved(const std::string& device) override;

    Mirror& m_mirror;
    Scan& m_scan;
    bt_audio_connection_state_changed_cb m_callback = nullptr;
    void* m_userData = nullptr;  // not owned
    // As they were asked for. The first one has the radio; all but the last are being given up.
    std::vector<std::shared_ptr<ConnectRequest>> m_requests;
    bool m_isFirstStarted = false;
    std::string m_asked;                  // address of the last request
    std::vector<Connection> m_connected;  // the last one last
    std::string m_phone;                  // CurrentPhone while it is there
};

}  // namespace Bluez
