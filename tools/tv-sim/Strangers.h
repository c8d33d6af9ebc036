// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "common/Source.h"
#include "tools/tv-sim/Adapter.h"

namespace TvSim {

// A crowd that advertises while the TV scans, each member at its interval. Nothing is kept for a
// member: its address and data follow from its number and its round.
class Strangers : public Neighbour {
public:
    Strangers(StrangersPlan plan, Adapter& adapter, EventSink say);

    void OnDiscoveryStarted() override;
    void OnDiscoveryStopped() override;

private:
    void Tick();
    void AdvertiseNext();

    StrangersPlan m_plan;
    Adapter& m_adapter;
    EventSink m_say;
    std::uint64_t m_sent = 0;        // ever, so that a later discovery meets the same crowd
    std::uint64_t m_sentBefore = 0;  // until this discovery
    gint64 m_startUs = 0;
    Timer m_timer;
};

// Has all the addresses that no phone has: nobody answers when the TV pages them, so that a
// connection request fails after the page timeout.
class Nobody : public Neighbour {
public:
    [[nodiscard]] bool Has(const std::string& /*address*/) const override { return true; }
    void OnCall(const std::string& address, MethodCall call) override;
    void OnAdapterLosesPower() override;

private:
    struct Page {
        MethodCall call;
        Timer timer;
    };

    void Fail(const std::string& address, const char* message);

    std::map<std::string, Page> m_pages;  // by address
};

}  // namespace TvSim
