// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/Source.h"
#include "platform/bluetooth.h"
#include "platform/linux/bluez/Deadline.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Scan.h"

namespace Bluez {

// A2DP connections in which this machine is the sink: makes them, and tells the one listener what
// becomes of them. Functions and result codes are those of the Bluetooth interface. Main loop only.
class Audio : private Listener {
public:
    Audio(Mirror& mirror, Scan& scan);
    ~Audio() override;

    void SetCallback(bt_audio_connection_state_changed_cb callback, void* userData);
    // `address` is well-formed.
    int Connect(const std::string& address);

    // Path of the device whose connection was asked for last and came about; before there was one,
    // of the device that connected last. Empty when that one has left, whoever else is still there:
    // what is meant for it is not meant for another.
    [[nodiscard]] std::string CurrentPhone() const;
    // Path of the one of those still connected that came last; empty when none.
    [[nodiscard]] std::string LastOfConnected() const;
    [[nodiscard]] std::size_t ConnectedCount() const { return m_connected.size(); }

private:
    // One bt_audio_connect that was not reported yet.
    struct Request {
        std::string device;  // object path; empty before the attempt
        Call attempt;
        Call cancellation;
        Deadline deadline;
        Timer pause;
        bool isExplained = false;  // the log says why it fails
        bool wasLinked = false;    // there was a link when the attempt began
        bool isLinkLost = false;   // a link went down during the attempt
        bool isRepeated = false;   // for that reason
    };

    // Says in the log why the request fails, unless that was said.
    void Explain(const std::string& address, const std::string& reason);
    void Begin(const std::string& address);
    void Attempt(const std::string& address);
    void OnAnswered(const std::string& address, const GError* error);
    static bool IsWorthRepeating(Request& request, int result);
    void OnDeadline(const std::string& address);
    void Cancel(const std::string& address);
    // Ends the request with its one event.
    void Report(const std::string& address, int result);

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
    void* m_userData = nullptr;                                  // not owned
    std::map<std::string, std::shared_ptr<Request>> m_requests;  // by address
    std::vector<Connection> m_connected;                         // the last one last
    std::string m_phone;                                         // CurrentPhone while it is there
};

}  // namespace Bluez
