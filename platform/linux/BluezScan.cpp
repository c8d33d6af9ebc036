// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/BluezScan.h"

#include <utility>

#include "common/AdvertisingData.h"
#include "platform/linux/BluezError.h"
#include "platform/linux/BluezPath.h"
#include "platform/linux/DbusError.h"
#include "platform/linux/PlatformLog.h"

namespace Bluez {

namespace {

constexpr const char* kAdapterInterface = "org.bluez.Adapter1";
// Less than the five seconds after which the engine stops its scan, so that the log gets to say it.
constexpr int kStartTimeoutMs = 4000;
constexpr int kStopTimeoutMs = 2000;
// The kernel may be busy with another start; it is soon done.
constexpr int kStartRetryMs = 300;

}  // namespace

Scan::Scan(Mirror& mirror) : m_mirror(mirror) {
    m_mirror.AddListener(this);
}

Scan::~Scan() {
    m_mirror.RemoveListener(this);
}

int Scan::Start(bt_adapter_le_scan_result_cb callback, void* userData) {
    if (callback == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const bool isStopping = m_state == State::kStoppingTheStart || m_state == State::kStopping;
    if (m_restart || (m_state != State::kIdle && !isStopping)) {
        return BT_ERROR_NOW_IN_PROGRESS;
    }
    const std::string adapter = m_mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    m_callback = callback;
    m_userData = userData;
    if (isStopping) {
        m_restart = true;
    } else {
        Begin(adapter);
    }
    return BT_ERROR_NONE;
}

int Scan::Stop() {
    m_isHearing = false;
    switch (m_state) {
        case State::kIdle:
            return BT_ERROR_NOT_IN_PROGRESS;
        case State::kPreparing:
            Finish();
            return BT_ERROR_NONE;
        case State::kStarting:
            // bluetoothd refuses to stop what is still being started.
            m_state = State::kStoppingTheStart;
            m_deadline.Cancel();
            m_timer = Timer::Once(kStopTimeoutMs, [this] { Finish(); });
            return BT_ERROR_NONE;
        case State::kScanning:
            StopDiscovery();
            return BT_ERROR_NONE;
        case State::kStoppingTheStart:
        case State::kStopping:
            return std::exchange(m_restart, false) ? BT_ERROR_NONE : BT_ERROR_NOT_IN_PROGRESS;
    }
    return BT_ERROR_NOT_IN_PROGRESS;
}

void Scan::WhenStopped(std::function<void()> action) {
    if (m_state == State::kStopping || m_state == State::kStoppingTheStart) {
        m_whenStopped.push_back(std::move(action));
    } else {
        action();
    }
}

void Scan::Begin(const std::string& adapter) {
    m_adapter = adapter;
    m_state = State::kPreparing;
    m_deadline = Timer::Once(kStartTimeoutMs, [this] { OnStartOverdue(); });
    SetFilter();
}

// DuplicateData: without it a phone whose bytes are those of its last visit is not reported again.
void Scan::SetFilter() {
    GVariantBuilder filter;
    g_variant_builder_init(&filter, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&filter, "{sv}", "Transport", g_variant_new_string("le"));
    g_variant_builder_add(&filter, "{sv}", "DuplicateData", g_variant_new_boolean(TRUE));
    m_call = Call(m_mirror.Connection(), m_adapter, kAdapterInterface, "SetDiscoveryFilter",
                  g_variant_new("(a{sv})", &filter), G_MAXINT,
                  [this](GVariant* /*reply*/, const GError* error) {
                      if (error == nullptr) {
                          StartDiscovery(true);
                      } else {
                          OnStartFailed(*error);
                      }
                  });
}

void Scan::StartDiscovery(bool mayRetry) {
    m_state = State::kStarting;
    // The first advertisement may overtake the answer.
    m_isHearing = true;
    m_start = Call(m_mirror.Connection(), m_adapter, kAdapterInterface, "StartDiscovery", nullptr,
                   G_MAXINT, [this, mayRetry](GVariant* /*reply*/, const GError* error) {
                       m_start.Drop();
                       OnStartAnswered(error, mayRetry);
                   });
}

void Scan::OnStartOverdue() {
    PLATFORM_WARN("LE scan on %s does not start: no answer within %d s", m_adapter.c_str(),
                  kStartTimeoutMs / 1000);
    Fail(BT_ERROR_TIMED_OUT);
}

void Scan::OnStartAnswered(const GError* error, bool mayRetry) {
    if (m_state == State::kStoppingTheStart) {
        if (error == nullptr) {
            StopDiscovery();
        } else {
            Finish();
        }
    } else if (m_state != State::kStarting) {
        // Given up meanwhile; nobody else would end this session.
        if (error == nullptr && m_state == State::kIdle) {
            Request(m_mirror.Connection(), m_adapter, kAdapterInterface, "StopDiscovery", nullptr,
                    "ending an overdue LE scan");
        }
    } else if (error == nullptr) {
        m_deadline.Cancel();
        m_state = State::kScanning;
    } else if (mayRetry && IsInProgress(*error)) {
        m_state = State::kPreparing;
        m_isHearing = false;
        m_timer = Timer::Once(kStartRetryMs, [this] { StartAnew(); });
    } else {
        OnStartFailed(*error);
    }
}

// In progress is our own session alone: one that started after its answer was given up.
void Scan::StartAnew() {
    m_call = Call(m_mirror.Connection(), m_adapter, kAdapterInterface, "StopDiscovery", nullptr,
                  kStopTimeoutMs,
                  [this](GVariant* /*reply*/, const GError* /*error*/) { StartDiscovery(false); });
}

void Scan::OnStartFailed(const GError& error) {
    PLATFORM_WARN("LE scan on %s does not start: %s", m_adapter.c_str(),
                  Platform::DescribeError(error).c_str());
    Fail(ErrorCode(error));
}

void Scan::StopDiscovery() {
    m_state = State::kStopping;
    m_timer.Cancel();
    m_call = Call(m_mirror.Connection(), m_adapter, kAdapterInterface, "StopDiscovery", nullptr,
                  kStopTimeoutMs, [this](GVariant* /*reply*/, const GError* error) {
                      if (error != nullptr) {
                          PLATFORM_DEBUG("LE scan on %s does not stop: %s", m_adapter.c_str(),
                                         Platform::DescribeError(*error).c_str());
                      }
                      Finish();
                  });
}

void Scan::Finish() {
    m_call.Drop();
    m_deadline.Cancel();
    m_timer.Cancel();
    m_isHearing = false;
    m_state = State::kIdle;
    // One of them may stop or start a scan.
    for (const std::function<void()>& action : std::exchange(m_whenStopped, {})) {
        action();
    }
    if (m_state == State::kIdle && std::exchange(m_restart, false)) {
        const std::string adapter = m_mirror.PoweredAdapter();
        if (adapter.empty()) {
            m_callback(BT_ERROR_NOT_ENABLED, nullptr, m_userData);
        } else {
            Begin(adapter);
        }
    }
}

void Scan::Fail(int result) {
    Finish();
    m_callback(result, nullptr, m_userData);
}

void Scan::OnServiceGone() {
    OnLost("bluetoothd is gone");
}

void Scan::OnAdapterLost(const std::string& path) {
    if (path == m_adapter) {
        OnLost("the adapter is gone");
    }
}

void Scan::OnLost(const char* reason) {
    if (m_state == State::kPreparing || m_state == State::kStarting ||
        m_state == State::kScanning) {
        PLATFORM_WARN("LE scan on %s ended, %s", m_adapter.c_str(), reason);
        Fail(BT_ERROR_NOT_ENABLED);
    } else if (m_state != State::kIdle) {
        Finish();
    }
}

void Scan::OnAdvertisement(const std::string& path, GVariant* manufacturerData, int rssi) {
    if (!m_isHearing || !IsBehind(path, m_adapter)) {
        return;
    }
    GVariantIter iter;
    g_variant_iter_init(&iter, manufacturerData);
    guint16 company = 0;
    GVariant* content = nullptr;
    while (g_variant_iter_next(&iter, "{qv}", &company, &content)) {
        const GVariantPtr owner(content);
        // The one before may have stopped the scan.
        if (m_isHearing) {
            Deliver(path, company, content, rssi);
        }
    }
}

void Scan::Deliver(const std::string& path, guint16 company, GVariant* content, int rssi) {
    if (!g_variant_is_of_type(content, G_VARIANT_TYPE_BYTESTRING)) {
        return;
    }
    gsize size = 0;
    const auto* bytes = static_cast<const std::uint8_t*>(
        g_variant_get_fixed_array(content, &size, sizeof(std::uint8_t)));
    std::vector<std::uint8_t> packet = MakeManufacturerPacket(company, bytes, size);
    if (packet.empty()) {
        PLATFORM_DEBUG("advertisement of %s has %zu bytes, ignored", path.c_str(), size);
        return;
    }
    std::string address = AddressOfPath(path);
    bt_adapter_le_device_scan_result_info_s info = {};
    info.remote_address = address.data();
    info.rssi = rssi;
    info.adv_data_len = static_cast<int>(packet.size());
    info.adv_data = reinterpret_cast<char*>(packet.data());
    m_callback(BT_ERROR_NONE, &info, m_userData);
}

}  // namespace Bluez
