// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "common/Source.h"
#include "tools/tv-sim/Adapter.h"
#include "tools/tv-sim/MediaLink.h"

namespace TvSim {

// One simulated phone: what it does by its plan, and by the steering functions below at any time.
class Phone {
public:
    // The tree and the adapter must outlive it.
    Phone(PhonePlan plan, ObjectTree& tree, Adapter& adapter, EventSink say);

    [[nodiscard]] const PhonePlan& Plan() const { return m_plan; }
    [[nodiscard]] bool Connected() const { return m_link != nullptr; }
    [[nodiscard]] bool Playing() const { return m_status == "playing"; }

    // Sends one advertisement now; whether the TV heard it.
    bool Advertise();
    // How the next connection request is answered; one under way keeps its fate.
    void SetConnectAnswer(ConnectAnswer answer) { m_plan.connect = std::move(answer); }
    // False when it cannot: not bonded, the adapter is off, or it is connected.
    bool ConnectByItself();
    void Disconnect();
    // What the user does on the phone: a value of MediaPlayer1.Status. A connected phone that plays
    // is heard.
    void SetStatus(const std::string& status);
    void Play() { SetStatus("playing"); }

    // From the adapter.
    void OnAdapterAppeared();
    void OnAdapterPoweredOn();
    void OnAdapterLosesPower();
    void OnDiscoveryStarted();
    void OnDiscoveryStopped();
    void OnCall(MethodCall call);
    void OnDeviceRemoved();

private:
    enum class Initiator { kTv, kPhone };

    void Say(const std::string& what) const;
    void AdvertiseByPlan();
    void AskConnection(MethodCall call);
    void Finish(const ConnectAnswer& answer);
    void Refuse(const std::string& errorName, const std::string& message);
    void EndLink();
    void OnDisconnectCall(MethodCall call);
    void OnDisconnectProfileCall(MethodCall call);
    void OnControlCall(MethodCall call);
    void ReactWith(const char* status);
    void OpenLink(Initiator initiator);
    void ShowPlayer();
    void TellStatus();

    PhonePlan m_plan;
    ObjectTree& m_tree;
    Adapter& m_adapter;
    EventSink m_say;
    bool m_bonded;
    std::string m_status;  // of its player
    bool m_statusTold = false;
    int m_sent = 0;  // advertisements of this discovery
    std::optional<MethodCall> m_pendingConnect;
    std::unique_ptr<MediaLink> m_link;  // while it is connected

    Timer m_advertiseTimer;
    Timer m_connectTimer;
    Timer m_ownConnectTimer;
    Timer m_goTimer;
    Timer m_playerTimer;
    Timer m_reactTimer;
};

}  // namespace TvSim
