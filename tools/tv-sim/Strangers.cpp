// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Strangers.h"

#include "tools/tv-sim/Address.h"

namespace TvSim {
namespace {

constexpr int kTickMs = 10;
constexpr int kPageTimeoutMs = 5120;

ManufacturerData RandomData(std::uint64_t seed) {
    std::vector<unsigned char> bytes(12 + seed % 13);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(Mix(seed + i));
    }
    return {{static_cast<std::uint16_t>(Mix(seed) & 0xFFU), bytes}};
}

}  // namespace

Strangers::Strangers(StrangersPlan plan, Adapter& adapter, EventSink say)
    : m_plan(std::move(plan)), m_adapter(adapter), m_say(std::move(say)) {}

void Strangers::OnDiscoveryStarted() {
    if (m_plan.count == 0) {
        return;
    }
    m_startUs = g_get_monotonic_time();
    m_sentBefore = m_sent;
    m_timer = Timer::Every(kTickMs, [this] { Tick(); });
    m_say("strangers", std::to_string(m_plan.count) + " advertise every " +
                           std::to_string(m_plan.everyMs) + " ms");
}

void Strangers::OnDiscoveryStopped() {
    if (m_plan.count != 0) {
        m_timer.Cancel();
        m_say("strangers", std::to_string(m_sent - m_sentBefore) + " advertisements sent");
    }
}

void Strangers::Tick() {
    const auto elapsedMs = static_cast<std::uint64_t>(g_get_monotonic_time() - m_startUs) / 1000;
    const auto count = static_cast<std::uint64_t>(m_plan.count);
    const std::uint64_t due =
        m_sentBefore + elapsedMs * count / static_cast<std::uint64_t>(m_plan.everyMs);
    // A machine that is too slow for the crowd gets a smaller one, never a simulator that hangs.
    for (std::uint64_t i = 0; m_sent < due && i < count; ++i) {
        AdvertiseNext();
    }
}

void Strangers::AdvertiseNext() {
    const auto count = static_cast<std::uint64_t>(m_plan.count);
    const std::uint64_t member = m_sent % count;
    const std::uint64_t round = m_sent / count;
    ++m_sent;
    const auto rotation = static_cast<std::uint64_t>(m_plan.rotateAddressEvery);
    const std::uint64_t seed = member + (rotation == 0 ? 0 : round / rotation) * count;
    Advertisement advertisement;
    advertisement.address = PrivateAddress(seed);
    advertisement.connectable = m_plan.connectable;
    advertisement.rssi = -50 - static_cast<int>((member + round) % 40);
    advertisement.manufacturerData = m_plan.randomData ? RandomData(seed) : m_plan.manufacturerData;
    m_adapter.Hear(advertisement);
}

void Nobody::OnCall(const std::string& address, MethodCall call) {
    const std::string method = call.Method();
    if (method == "Disconnect" && m_pages.count(address) != 0) {
        Fail(address, "br-connection-canceled");
        call.Answer();
    } else if (method == "Disconnect" || method == "DisconnectProfile") {
        call.FailBluez("NotConnected", "Not Connected");
    } else if (method != "Connect" && method != "ConnectProfile") {
        call.FailBluez("NotSupported", "Operation is not supported");
    } else if (m_pages.count(address) != 0) {
        call.FailBluez("InProgress", "br-connection-busy");
    } else {
        m_pages.emplace(address, Page{std::move(call), Timer::Once(kPageTimeoutMs, [this, address] {
                                          Fail(address, "br-connection-page-timeout");
                                      })});
    }
}

void Nobody::OnAdapterLosesPower() {
    while (!m_pages.empty()) {
        Fail(std::string(m_pages.begin()->first), "br-connection-canceled");
    }
}

void Nobody::Fail(const std::string& address, const char* message) {
    auto page = m_pages.extract(address);
    if (!page.empty()) {
        page.mapped().call.FailBluez("Failed", message);
    }
}

}  // namespace TvSim
