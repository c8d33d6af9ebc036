// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Strangers.h"

#include <map>

#include "common/Source.h"
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

// Nothing is kept for a member: its address and data follow from its number and its round.
class Strangers : public Neighbour {
public:
    Strangers(StrangersPlan plan, Adapter& adapter) : m_plan(std::move(plan)), m_adapter(adapter) {}

    void OnDiscoveryStarted() override {
        if (m_plan.count != 0) {
            m_startUs = g_get_monotonic_time();
            m_sentBefore = m_sent;
            m_timer = Timer::Every(kTickMs, [this] { Tick(); });
            m_adapter.Say("strangers", std::to_string(m_plan.count) + " advertise every " +
                                           std::to_string(m_plan.everyMs) + " ms");
        }
    }

    void OnDiscoveryStopped() override {
        if (m_plan.count != 0) {
            m_timer.Cancel();
            m_adapter.Say("strangers",
                          std::to_string(m_sent - m_sentBefore) + " advertisements sent");
        }
    }

private:
    void Tick() {
        const auto elapsedMs =
            static_cast<std::uint64_t>(g_get_monotonic_time() - m_startUs) / 1000;
        const std::uint64_t due = m_sentBefore + elapsedMs * m_plan.count / m_plan.everyMs;
        // A machine that is too slow for the crowd gets a smaller one, never a simulator that
        // hangs.
        for (std::uint64_t i = 0; m_sent < due && i < m_plan.count; ++i) {
            AdvertiseNext();
        }
    }

    void AdvertiseNext() {
        const std::uint64_t member = m_sent % m_plan.count;
        const std::uint64_t round = m_sent / m_plan.count;
        const std::uint64_t rotation = m_plan.rotateAddressEvery;
        const std::uint64_t seed = member + (rotation == 0 ? 0 : round / rotation) * m_plan.count;
        ++m_sent;
        m_adapter.Hear({PrivateAddress(seed), true, m_plan.connectable,
                        -50 - static_cast<int>((member + round) % 40),
                        m_plan.randomData ? RandomData(seed) : m_plan.manufacturerData});
    }

    const StrangersPlan m_plan;
    Adapter& m_adapter;
    std::uint64_t m_sent = 0;        // ever, so that a later discovery meets the same crowd
    std::uint64_t m_sentBefore = 0;  // until this discovery
    gint64 m_startUs = 0;
    Timer m_timer;
};

class Nobody : public Neighbour {
public:
    [[nodiscard]] bool Has(const std::string& /*address*/) const override { return true; }

    void OnCall(const std::string& address, MethodCall call) override {
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
            const auto onTimeout = [this, address] { Fail(address, "br-connection-page-timeout"); };
            m_pages.emplace(address, Page{std::move(call), Timer::Once(kPageTimeoutMs, onTimeout)});
        }
    }

    // The requests end without an answer from the air.
    void OnAdapterLosesPower() override {
        while (!m_pages.empty()) {
            Fail(std::string(m_pages.begin()->first), "br-connection-canceled");
        }
    }

private:
    struct Page {
        MethodCall call;
        Timer timer;
    };

    void Fail(const std::string& address, const char* message) {
        auto page = m_pages.extract(address);
        if (!page.empty()) {
            page.mapped().call.FailBluez("Failed", message);
        }
    }

    std::map<std::string, Page> m_pages;  // by address
};

}  // namespace

std::unique_ptr<Neighbour> MakeStrangers(const StrangersPlan& plan, Adapter& adapter) {
    return std::make_unique<Strangers>(plan, adapter);
}

std::unique_ptr<Neighbour> MakeNobody() {
    return std::make_unique<Nobody>();
}

}  // namespace TvSim
