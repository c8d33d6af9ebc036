// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Audio.h"

#include <algorithm>
#include <utility>

#include "platform/linux/application/AskedPhone.h"
#include "platform/linux/bluez/Path.h"

namespace Bluez {

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
    if (!m_requests.empty() && m_requests.back()->Address() == address) {
        return BT_ERROR_NOW_IN_PROGRESS;
    }
    m_asked = address;
    for (const auto& request : m_requests) {
        request->Overtake();
    }
    m_requests.push_back(std::make_shared<ConnectRequest>(
        m_mirror, address,
        [this](const ConnectRequest& request, int result) { OnRequestEnded(request, result); }));
    StartFirst();
    return BT_ERROR_NONE;
}

void Audio::StartFirst() {
    if (!m_requests.empty() && !std::exchange(m_isFirstStarted, true)) {
        m_requests.front()->Start(m_scan);
    }
}

void Audio::OnRequestEnded(const ConnectRequest& request, int result) {
    const auto ended =
        std::find_if(m_requests.begin(), m_requests.end(),
                     [&request](const auto& entry) { return entry.get() == &request; });
    const std::shared_ptr<ConnectRequest> held = *ended;
    m_isFirstStarted = m_isFirstStarted && ended != m_requests.begin();
    m_requests.erase(ended);
    const std::string& device = request.Path();
    if (result == BT_ERROR_NONE) {
        AddConnected(device, request.Address());
        SetPhone(device, request.Address());
    }
    Tell(result, !request.IsOvertaken(), request.Address());
    // The phone may have connected by itself while the attempt was being cancelled.
    if (result != BT_ERROR_NONE && m_mirror.HasTransport(device)) {
        OnTransportAdded(device);
    }
    StartFirst();
}

bool Audio::HasRequest(const std::string& address) const {
    return std::any_of(m_requests.begin(), m_requests.end(),
                       [&address](const auto& request) { return request->Address() == address; });
}

void Audio::SetPhone(const std::string& device, const std::string& address) {
    m_phone = device;
    Platform::AskedPhone() = address;
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
    std::vector<std::shared_ptr<ConnectRequest>> requests;
    for (const auto& request : m_requests) {
        if (adapter.empty() || IsBelow(request->Path(), adapter)) {
            requests.push_back(request);
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
    for (const auto& request : requests) {
        request->Fail(BT_ERROR_NOT_ENABLED, reason);
    }
}

void Audio::OnDeviceDisconnected(const std::string& path) {
    for (const auto& request : m_requests) {
        if (request->Path() == path) {
            request->OnLinkLost();
        }
    }
    RemoveConnected(path);
}

void Audio::OnTransportAdded(const std::string& device) {
    const std::string address = m_mirror.AddressOf(device);
    // A request that runs reports its own end, and what another adapter does is not ours.
    if (FindConnected(device) == m_connected.end() && !HasRequest(address) &&
        IsBelow(device, m_mirror.PoweredAdapter())) {
        AddConnected(device, address);
        if (address == m_asked) {
            SetPhone(device, address);
        } else if (Platform::AskedPhone().empty()) {
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
