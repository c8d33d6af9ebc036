// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Scan.h"

#include <algorithm>
#include <utility>

#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Error.h"
#include "platform/linux/bluez/Path.h"

namespace Bluez {

namespace {

// Less than the five seconds after which the engine stops its scan, so that the log gets to say it.
constexpr int kStartTimeoutMs = 4000;
// How long a connection waits for the radio.
constexpr int kPatienceMs = 2000;

}  // namespace

Scan::Scan(Mirror& mirror) : m_mirror(mirror), m_hearing(mirror) {
    m_mirror.AddListener(this);
}

Scan::~Scan() {
    m_mirror.RemoveListener(this);
}

int Scan::Start(bt_adapter_le_scan_result_cb callback, void* userData) {
    if (callback == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    if (m_callback != nullptr) {
        return BT_ERROR_NOW_IN_PROGRESS;
    }
    const std::string adapter = m_mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    m_callback = callback;
    m_userData = userData;
    m_adapter = adapter;
    m_deadline = Deadline(m_mirror.Connection(), kStartTimeoutMs, [this] { OnStartOverdue(); });
    m_hearing.Begin(adapter);
    DiscoveryOn(adapter).SetWanted(true);
    return BT_ERROR_NONE;
}

int Scan::Stop() {
    if (m_callback == nullptr) {
        return BT_ERROR_NOT_IN_PROGRESS;
    }
    End();
    return BT_ERROR_NONE;
}

void Scan::WhenStopped(std::function<void()> action) {
    if (m_callback != nullptr || IsQuiet()) {
        action();
        return;
    }
    if (m_whenStopped.empty()) {
        m_patience = Deadline(m_mirror.Connection(), kPatienceMs, [this] { RunWhenStopped(); });
    }
    m_whenStopped.push_back(std::move(action));
}

Discovery& Scan::DiscoveryOn(const std::string& adapter) {
    return m_discoveries
        .try_emplace(
            adapter, m_mirror, adapter, [this](const GError* error) { OnDiscovery(error); },
            [this] { OnQuiet(); })
        .first->second;
}

bool Scan::IsQuiet() const {
    return std::all_of(m_discoveries.begin(), m_discoveries.end(),
                       [](const auto& entry) { return entry.second.IsQuiet(); });
}

void Scan::OnQuiet() {
    if (IsQuiet()) {
        RunWhenStopped();
    }
}

// One of them may start a scan.
void Scan::RunWhenStopped() {
    for (const std::function<void()>& action : std::exchange(m_whenStopped, {})) {
        action();
    }
}

void Scan::OnDiscovery(const GError* error) {
    m_deadline.Cancel();
    if (error != nullptr) {
        PLATFORM_WARN("LE scan on %s does not start: %s", m_adapter.c_str(),
                      Platform::DescribeError(*error).c_str());
        Fail(ErrorCode(*error));
    }
}

void Scan::OnStartOverdue() {
    PLATFORM_WARN("LE scan on %s does not start: no success within %d s", m_adapter.c_str(),
                  kStartTimeoutMs / 1000);
    Fail(BT_ERROR_TIMED_OUT);
}

void Scan::End() {
    m_callback = nullptr;
    m_deadline.Cancel();
    m_hearing.End();
    m_mirror.TrimSoon();
    const auto discovery = m_discoveries.find(m_adapter);
    if (discovery != m_discoveries.end()) {
        discovery->second.SetWanted(false);
    }
}

void Scan::Fail(int result) {
    const bt_adapter_le_scan_result_cb callback = m_callback;
    End();
    callback(result, nullptr, m_userData);
}

void Scan::OnServiceGone() {
    m_discoveries.clear();
    OnLost("bluetoothd is gone");
}

void Scan::OnAdapterLost(const std::string& path) {
    m_discoveries.erase(path);
    OnLost("the adapter is gone");
}

void Scan::OnLost(const char* reason) {
    if (m_callback != nullptr && m_discoveries.count(m_adapter) == 0) {
        PLATFORM_WARN("LE scan on %s ended, %s", m_adapter.c_str(), reason);
        Fail(BT_ERROR_NOT_ENABLED);
    }
    OnQuiet();
}

void Scan::OnAdvertisement(const std::string& path, GVariant* manufacturerData, int rssi) {
    if (m_callback == nullptr || !IsBelow(path, m_adapter)) {
        return;
    }
    for (Hearing::Packet& packet : m_hearing.Take(path, manufacturerData)) {
        // The one before may have stopped the scan.
        if (m_callback != nullptr) {
            Deliver(path, packet, rssi);
        }
    }
}

void Scan::Deliver(const std::string& path, Hearing::Packet& packet, int rssi) {
    std::string address = AddressOfPath(path);
    bt_adapter_le_device_scan_result_info_s info = {};
    info.remote_address = address.data();
    info.rssi = rssi;
    info.adv_data_len = static_cast<int>(packet.size());
    info.adv_data = reinterpret_cast<char*>(packet.data());
    m_callback(BT_ERROR_NONE, &info, m_userData);
}

}  // namespace Bluez
