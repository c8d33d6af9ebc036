// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Audio.h"

#include <algorithm>
#include <utility>

#include "platform/linux/application/AskedPhone.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Error.h"
#include "platform/linux/bluez/Path.h"
#include "platform/linux/bluez/Properties.h"

namespace Bluez {

namespace {

// bluetoothd itself may go on for 40 s, on BR/EDR first and then on LE.
constexpr int kAttemptMs = 10000;
constexpr int kCancellationMs = 2000;
// How soon to ask again while bluetoothd or the phone is connecting already.
constexpr int kBusyPauseMs = 500;
// bluetoothd takes an idle link down after 2 s, and tries a connection of its own again after as
// long; by then both are done.
constexpr int kLostLinkPauseMs = 3000;

}  // namespace

Audio::Audio(Mirror& mirror, Scan& scan) : m_mirror(mirror), m_scan(scan) {
    m_mirror.AddListener(this);
}

Audio::~Audio() {
    m_mirror.RemoveListener(this);
}

void Audio::SetCallback(bt_audio_connection_state_changed_cb callback, void* userData) {
    m_callback = callback;
    m_userData = userData;
}

int Audio::Connect(const std::string& address) {
    const auto [entry, isNew] = m_requests.try_emplace(address);
    if (!isNew) {
        return BT_ERROR_NOW_IN_PROGRESS;
    }
    entry->second = std::make_shared<Request>();
    entry->second->deadline =
        Deadline(m_mirror.Connection(), kAttemptMs, [this, address] { OnDeadline(address); });
    // Paging while the radio scans fails more often, so the stop of the scan is waited for. The
    // request may be gone by then.
    m_scan.WhenStopped([this, weak = std::weak_ptr<Request>(entry->second), address] {
        if (!weak.expired()) {
            Begin(address);
        }
    });
    return BT_ERROR_NONE;
}

void Audio::Explain(const std::string& address, const std::string& reason) {
    const auto request = m_requests.find(address);
    if (request != m_requests.end() && !std::exchange(request->second->isExplained, true)) {
        PLATFORM_WARN("%s is not connected: %s", address.c_str(), reason.c_str());
    }
}

void Audio::Begin(const std::string& address) {
    Request& request = *m_requests[address];
    const std::string adapter = m_mirror.PoweredAdapter();
    request.device = m_mirror.DevicePath(adapter, address);
    const Device* device = m_mirror.FindDevice(request.device);
    // bluetoothd would pair with a device that it merely knows.
    if (!adapter.empty() && device != nullptr && device->HoldsBond()) {
        Attempt(address);
        return;
    }
    Explain(address, adapter.empty() ? m_mirror.WhyOff() : "it is not bonded");
    const int result = adapter.empty() ? BT_ERROR_NOT_ENABLED : BT_ERROR_REMOTE_DEVICE_NOT_BONDED;
    // Not before Connect returned.
    request.pause = Timer::Once(0, [this, address, result] { Report(address, result); });
}

void Audio::Attempt(const std::string& address) {
    Request& request = *m_requests[address];
    const Device* device = m_mirror.FindDevice(request.device);
    request.wasLinked = device != nullptr && device->isConnected;
    request.isLinkLost = false;
    request.attempt = Call(
        m_mirror.Connection(), request.device, kDeviceInterface, "ConnectProfile",
        g_variant_new("(s)", kA2dpSourceUuid), kAttemptMs + kCancellationMs,
        [this, address](GVariant* /*reply*/, const GError* error) { OnAnswered(address, error); });
}

void Audio::OnAnswered(const std::string& address, const GError* error) {
    Request& request = *m_requests[address];
    if (request.cancellation) {
        Report(address, BT_ERROR_TIMED_OUT);
        return;
    }
    // The phone may have connected by itself meanwhile, which is what was wanted.
    if (error == nullptr || m_mirror.HasTransport(request.device)) {
        Report(address, BT_ERROR_NONE);
        return;
    }
    const bool isBusy = IsInProgress(*error);
    if (isBusy || IsWorthRepeating(request, ErrorCode(*error))) {
        if (!isBusy) {
            PLATFORM_INFO("the link to %s went down under the attempt, it is asked once more",
                          address.c_str());
        }
        request.attempt.Drop();
        request.pause = Timer::Once(isBusy ? kBusyPauseMs : kLostLinkPauseMs,
                                    [this, address] { Attempt(address); });
        return;
    }
    Explain(address, WhyNotConnected(*error));
    Report(address, ErrorCode(*error));
}

// Once. A link that somebody took down under the attempt says nothing of the phone, which is in
// reach. One that refuses keeps its link for a while, one that is absent never has any.
bool Audio::IsWorthRepeating(Request& request, int result) {
    const bool wentDown = (result == BT_ERROR_OPERATION_FAILED && request.isLinkLost) ||
                          (result == BT_ERROR_CANCELLED && request.wasLinked);
    return wentDown && !std::exchange(request.isRepeated, true);
}

void Audio::OnDeadline(const std::string& address) {
    const Request& request = *m_requests[address];
    if (m_mirror.HasTransport(request.device)) {
        Report(address, BT_ERROR_NONE);
        return;
    }
    const bool isBusy = !request.attempt && !request.device.empty() && !request.isRepeated;
    Explain(address,
            std::string(isBusy ? "bluetoothd was busy with it for " : "no success within ") +
                std::to_string(kAttemptMs / 1000) + " s");
    if (request.attempt) {
        Cancel(address);
    } else {
        Report(address, isBusy ? BT_ERROR_RESOURCE_BUSY : BT_ERROR_TIMED_OUT);
    }
}

// Unless it is told to give up, bluetoothd goes on and refuses the next attempt as busy.
void Audio::Cancel(const std::string& address) {
    Request& request = *m_requests[address];
    request.cancellation =
        Call(m_mirror.Connection(), request.device, kDeviceInterface, "Disconnect", nullptr,
             kCancellationMs, [](GVariant* /*reply*/, const GError* /*error*/) {});
    request.deadline = Deadline(m_mirror.Connection(), kCancellationMs,
                                [this, address] { Report(address, BT_ERROR_TIMED_OUT); });
}

void Audio::Report(const std::string& address, int result) {
    const auto request = m_requests.extract(address);
    if (request.empty()) {
        return;
    }
    const std::string& device = request.mapped()->device;
    if (result == BT_ERROR_NONE) {
        AddConnected(device, address);
        m_phone = device;
        Platform::AskedPhone() = address;
    }
    Tell(result, true, address);
    // The phone may have connected by itself while the attempt was being cancelled.
    if (result != BT_ERROR_NONE && m_mirror.HasTransport(device)) {
        OnTransportAdded(device);
    }
}

std::vector<Audio::Connection>::iterator Audio::FindConnected(const std::string& device) {
    return std::find_if(m_connected.begin(), m_connected.end(),
                        [&](const Connection& connection) { return connection.device == device; });
}

void Audio::AddConnected(const std::string& device, const std::string& address) {
    const auto known = FindConnected(device);
    if (known != m_connected.end()) {
        m_connected.erase(known);
    }
    m_connected.push_back({device, address});
}

void Audio::RemoveConnected(const std::string& device) {
    const auto known = FindConnected(device);
    if (known != m_connected.end()) {
        const std::string address = known->address;
        m_connected.erase(known);
        Tell(BT_ERROR_NONE, false, address);
    }
}

std::string Audio::CurrentPhone() const {
    const bool isThere =
        std::any_of(m_connected.begin(), m_connected.end(),
                    [this](const Connection& connection) { return connection.device == m_phone; });
    return isThere ? m_phone : "";
}

std::string Audio::LastOfConnected() const {
    return m_connected.empty() ? "" : m_connected.back().device;
}

void Audio::Tell(int result, bool connected, const std::string& address) const {
    if (m_callback != nullptr) {
        m_callback(result, connected, address.c_str(), m_userData);
    }
}

void Audio::OnServiceGone() {
    FailAll("", "bluetoothd is gone");
}

void Audio::OnAdapterLost(const std::string& path) {
    FailAll(path, "the adapter is gone");
}

// Fails what runs on the adapter, on any when it is empty, and takes its connections for lost. The
// listener may ask for the next connection while it is told.
void Audio::FailAll(const std::string& adapter, const char* reason) {
    std::vector<std::string> addresses;
    for (const auto& [address, request] : m_requests) {
        if (adapter.empty() || IsBelow(request->device, adapter)) {
            addresses.push_back(address);
        }
    }
    std::vector<std::string> devices;
    for (const Connection& connection : m_connected) {
        if (adapter.empty() || IsBelow(connection.device, adapter)) {
            devices.push_back(connection.device);
        }
    }
    for (const std::string& device : devices) {
        RemoveConnected(device);
    }
    for (const std::string& address : addresses) {
        Explain(address, reason);
        Report(address, BT_ERROR_NOT_ENABLED);
    }
}

void Audio::OnDeviceDisconnected(const std::string& path) {
    const auto request = m_requests.find(m_mirror.AddressOf(path));
    if (request != m_requests.end() && request->second->device == path) {
        request->second->isLinkLost = true;
    }
    RemoveConnected(path);
}

void Audio::OnTransportAdded(const std::string& device) {
    const std::string address = m_mirror.AddressOf(device);
    // A request that runs reports its own end, and what another adapter does is not ours.
    if (FindConnected(device) == m_connected.end() && m_requests.count(address) == 0 &&
        IsBelow(device, m_mirror.PoweredAdapter())) {
        AddConnected(device, address);
        if (Platform::AskedPhone().empty()) {
            m_phone = device;
        }
        Tell(BT_ERROR_NONE, true, address);
    }
}

void Audio::OnTransportRemoved(const std::string& device) {
    if (!m_mirror.HasTransport(device)) {
        RemoveConnected(device);
    }
}

}  // namespace Bluez
