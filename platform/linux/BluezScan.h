// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "common/Timer.h"
#include "platform/bluetooth.h"
#include "platform/linux/BluezMirror.h"

namespace Bluez {

// The LE scan of this process: one discovery session of bluetoothd, which belongs to the bus
// connection. Functions and result codes are those of the Bluetooth interface. Main loop only.
class Scan : private Listener {
public:
    explicit Scan(Mirror& mirror);
    ~Scan() override;

    int Start(bt_adapter_le_scan_result_cb callback, void* userData);
    int Stop();

    // Runs `action` once no stop is under way: now, or when bluetoothd answered, or when it failed
    // to for 2 s.
    void WhenStopped(std::function<void()> action);

private:
    enum class State {
        kIdle,
        kPreparing,         // nothing that would have to be stopped yet
        kStarting,          // the start was not answered yet
        kScanning,          //
        kStoppingTheStart,  // to be stopped once the start was answered
        kStopping           // the stop was not answered yet
    };

    void Begin(const std::string& adapter);
    void SetFilter();
    void StartDiscovery(bool mayRetry);
    void OnStartAnswered(const GError* error, bool mayRetry);
    void OnStartOverdue();
    void StartAnew();
    void OnStartFailed(const GError& error);
    void StopDiscovery();
    // Nothing runs any more: does what waited for that.
    void Finish();
    // Ends the scan and tells the one who started it.
    void Fail(int result);

    void OnServiceGone() override;
    void OnAdapterLost(const std::string& path) override;
    void OnLost(const char* reason);
    void OnAdvertisement(const std::string& path, GVariant* manufacturerData, int rssi) override;
    void Deliver(const std::string& path, guint16 company, GVariant* content, int rssi);

    Mirror& m_mirror;
    State m_state = State::kIdle;
    bool m_isHearing = false;  // what comes now was received during the scan
    bool m_restart = false;    // to be started again once it is stopped
    std::string m_adapter;
    bt_adapter_le_scan_result_cb m_callback = nullptr;
    void* m_userData = nullptr;  // not owned
    std::vector<std::function<void()>> m_whenStopped;
    Call m_call;
    Call m_start;      // waited for even when the scan was given up, for then it must be stopped
    Timer m_deadline;  // of the start, the filter and a second try included
    Timer m_timer;
};

}  // namespace Bluez
