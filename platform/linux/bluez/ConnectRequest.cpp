// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/ConnectRequest.h"

#include <utility>

#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Error.h"

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

// Whether the answer to Get is FALSE.
bool IsFalse(GVariant* reply) {
    const GVariantPtr answer(g_variant_ref_sink(g_variant_new_parsed("(<false>,)")));
    return reply != nullptr && g_variant_equal(reply, answer.get()) != FALSE;
}

}  // namespace

ConnectRequest::ConnectRequest(const Mirror& mirror, std::string address, Done done)
    : m_mirror(mirror), m_address(std::move(address)), m_done(std::move(done)) {
    m_deadline = Deadline(m_mirror.Connection(), kAttemptMs, [this] { OnDeadline(); });
}

void ConnectRequest::Start(Scan& scan) {
    // Paging while the radio scans fails more often, so the stop of the scan is waited for. The
    // request may be gone by then.
    scan.WhenStopped([weak = weak_from_this()] {
        if (const auto request = weak.lock()) {
            request->Begin();
        }
    });
}

void ConnectRequest::Begin() {
    if (m_givenUp != BT_ERROR_NONE) {
        return;
    }
    const std::string adapter = m_mirror.PoweredAdapter();
    m_device = m_mirror.DevicePath(adapter, m_address);
    const Device* device = m_mirror.FindDevice(m_device);
    // bluetoothd would pair with a device that it only knows.
    if (!adapter.empty() && device != nullptr && device->HoldsBond()) {
        Attempt();
        return;
    }
    Explain(adapter.empty() ? m_mirror.WhyOff() : "it is not bonded");
    const int result = adapter.empty() ? BT_ERROR_NOT_ENABLED : BT_ERROR_REMOTE_DEVICE_NOT_BONDED;
    m_pause = Timer::Once(0, [this, result] { End(result); });
}

void ConnectRequest::Attempt() {
    const Device* device = m_mirror.FindDevice(m_device);
    m_wasLinked = device != nullptr && device->isConnected;
    m_isLinkLost = false;
    m_attempt = Call(m_mirror.Connection(), m_device, kDeviceInterface, "ConnectProfile",
                     g_variant_new("(s)", kA2dpSourceUuid), kAttemptMs + kCancellationMs,
                     [this](GVariant* /*reply*/, const GError* error) { OnAnswered(error); });
}

void ConnectRequest::OnAnswered(const GError* error) {
    if (m_givenUp != BT_ERROR_NONE) {
        End(m_givenUp);
        return;
    }
    // The phone may have connected by itself meanwhile, which is what was wanted.
    if (error == nullptr || m_mirror.HasTransport(m_device)) {
        End(BT_ERROR_NONE);
        return;
    }
    if (IsInProgress(*error)) {
        Repeat(kBusyPauseMs);
        return;
    }
    const int result = ErrorCode(*error);
    const std::string reason = WhyNotConnected(*error);
    const bool mayHaveLostLink = !m_isRepeated && HadLink();
    if (mayHaveLostLink && result == BT_ERROR_CANCELLED) {
        RepeatForLink();
    } else if (mayHaveLostLink && result == BT_ERROR_OPERATION_FAILED) {
        AskForLink(result, reason);
    } else {
        Fail(result, reason);
    }
}

bool ConnectRequest::HadLink() const {
    const Device* device = m_mirror.FindDevice(m_device);
    return m_wasLinked || m_isLinkLost || (device != nullptr && device->isConnected);
}

// A link that went down during the attempt says nothing of the phone, which is in reach. One that
// refuses keeps its link for a while, one that is absent never has any. bluetoothd answers before
// it tells that the link is down.
void ConnectRequest::AskForLink(int result, const std::string& reason) {
    m_attempt = Call(m_mirror.Connection(), m_device, kPropertiesInterface, "Get",
                     g_variant_new("(ss)", kDeviceInterface, "Connected"), kCancellationMs,
                     [this, result, reason](GVariant* reply, const GError* /*error*/) {
                         if (m_givenUp != BT_ERROR_NONE) {
                             End(m_givenUp);
                         } else if (IsFalse(reply)) {
                             RepeatForLink();
                         } else {
                             Fail(result, reason);
                         }
                     });
}

void ConnectRequest::RepeatForLink() {
    PLATFORM_INFO("the link to %s went down during the attempt, it is asked once more",
                  m_address.c_str());
    m_isRepeated = true;
    Repeat(kLostLinkPauseMs);
}

void ConnectRequest::Repeat(int pauseMs) {
    m_attempt.Drop();
    m_pause = Timer::Once(pauseMs, [this] { Attempt(); });
}

void ConnectRequest::OnDeadline() {
    if (m_mirror.HasTransport(m_device)) {
        End(BT_ERROR_NONE);
        return;
    }
    const bool isBusy = !m_attempt && !m_device.empty() && !m_isRepeated;
    Explain(std::string(isBusy ? "bluetoothd was busy with it for " : "no success within ") +
            std::to_string(kAttemptMs / 1000) + " s");
    GiveUp(isBusy ? BT_ERROR_RESOURCE_BUSY : BT_ERROR_TIMED_OUT);
}

void ConnectRequest::Overtake() {
    if (m_givenUp == BT_ERROR_NONE) {
        Explain("another phone is asked for");
        GiveUp(BT_ERROR_CANCELLED);
    }
}

// Unless it is told to give up, bluetoothd goes on and refuses the next attempt as busy.
void ConnectRequest::GiveUp(bt_error_e result) {
    m_givenUp = result;
    if (!m_attempt) {
        m_pause = Timer::Once(0, [this] { End(m_givenUp); });
        return;
    }
    m_cancellation = Call(m_mirror.Connection(), m_device, kDeviceInterface, "Disconnect", nullptr,
                          kCancellationMs, [](GVariant* /*reply*/, const GError* /*error*/) {});
    m_deadline = Deadline(m_mirror.Connection(), kCancellationMs, [this] { End(m_givenUp); });
}

void ConnectRequest::Fail(int result, const std::string& reason) {
    Explain(reason);
    End(result);
}

void ConnectRequest::Explain(const std::string& reason) {
    if (!std::exchange(m_isExplained, true)) {
        PLATFORM_WARN("%s is not connected: %s", m_address.c_str(), reason.c_str());
    }
}

void ConnectRequest::End(int result) {
    // Whoever is told may ask for the next one, and this one must not be under way then.
    m_attempt.Drop();
    m_cancellation.Drop();
    // The request goes with this call.
    const Done done = std::exchange(m_done, nullptr);
    if (done) {
        done(*this, result);
    }
}

}  // namespace Bluez
