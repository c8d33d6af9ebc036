// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/bluetooth.h"
#include "platform/linux/bluez/Deadline.h"
#include "platform/linux/bluez/Discovery.h"
#include "platform/linux/bluez/Hearing.h"
#include "platform/linux/bluez/Mirror.h"

namespace Bluez {

// The LE scan of this process: somebody who listens, and the discovery session that makes the radio
// hear. Functions and result codes are those of the Bluetooth interface. Main loop only.
class Scan : private Listener {
public:
    explicit Scan(Mirror& mirror);
    ~Scan() override;

    int Start(bt_adapter_le_scan_result_cb callback, void* userData);
    int Stop();

    // Runs `action` once the radio is done with scans that were stopped: now, or when bluetoothd
    // has answered, or after 2 s.
    void WhenStopped(std::function<void()> action);

private:
    Discovery& DiscoveryOn(const std::string& adapter);
    [[nodiscard]] bool IsQuiet() const;
    void OnQuiet();
    void RunWhenStopped();
    void OnDiscovery(const GError* error);
    void OnStartOverdue();
    // Nobody listens any more.
    void End();
    // Ends the scan and tells the one who started it.
    void Fail(int result);

    void OnServiceGone() override;
    void OnAdapterLost(const std::string& path) override;
    void OnLost(const char* reason);
    void OnAdvertisement(const std::string& path, GVariant* manufacturerData, int rssi) override;
    void Deliver(const std::string& path, Hearing::Packet& packet, int rssi);

    Mirror& m_mirror;
    Hearing m_hearing;
    std::map<std::string, Discovery> m_discoveries;     // by adapter
    bt_adapter_le_scan_result_cb m_callback = nullptr;  // of the listener; NULL when there is none
    void* m_userData = nullptr;                         // not owned
    std::string m_adapter;                              // of the scan
    Deadline m_deadline;                                // of its start
    std::vector<std::function<void()>> m_whenStopped;
    Deadline m_patience;  // of those who wait for that
};

}  // namespace Bluez
