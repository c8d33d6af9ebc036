// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "common/Source.h"
#include "tools/tv-sim/Adapter.h"

namespace TvSim {

// One simulated phone within one adapter's reach: it does what its plan says, and at any time what
// the functions below say.
class Phone : public Neighbour {
public:
    // The tree and the adapter must outlive it.
    Phone(PhonePlan plan, ObjectTree& tree, Adapter& adapter);

    // As it is now.
    [[nodiscard]] const PhonePlan& Plan() const { return m_plan; }
    // What it does from now on: its next connection, its next advertisements (as if a discovery
    // began now). Who it is, its bond and, while it is connected, whether it has a player stay.
    void SetPlan(PhonePlan plan);

    // The user pairs it, removes it on the TV, or removes the TV on the phone.
    void Pair();
    void LoseBond();
    void ForgetTv();
    // False when it cannot: not bonded, the adapter is off, or it is connected.
    bool ConnectByItself();
    void Disconnect();
    // What the user does on the phone: a value of MediaPlayer1.Status. A connected phone that plays
    // is heard.
    void SetStatus(const std::string& status);

    void OnAdapterAppeared() override;
    void OnAdapterPoweredOn() override;
    void OnAdapterLosesPower() override;
    void OnDiscoveryStarted() override;
    void OnDiscoveryStopped() override { m_advertiseTimer.Cancel(); }
    [[nodiscard]] bool Has(const std::string& address) const override {
        return address == m_plan.address;
    }
    void OnCall(const std::string& address, MethodCall call) override;
    void OnDeviceRemoved() override;

private:
    [[nodiscard]] bool Playing() const { return m_plan.playerStatus == "playing"; }
    [[nodiscard]] bool HasPlayer() const { return m_plan.playerStatus != "none"; }
    // Of its device.
    [[nodiscard]] std::string DevicePath() const {
        return m_adapter.Devices().PathOf(m_plan.address);
    }
    [[nodiscard]] std::string PlayerPath() const { return DevicePath() + "/player0"; }
    void Say(const std::string& what) const { m_adapter.Say("phone " + m_plan.id, what); }
    void ShowDevice();
    void Advertise();
    void AskConnection(MethodCall call);
    void Finish(const ConnectAnswer& answer);
    void Refuse(const std::string& errorName, const std::string& message);
    void Fail(const char* message) { Refuse("org.bluez.Error.Failed", message); }
    void EndLink();
    void OnDisconnectCall(MethodCall call);
    void OnDisconnectProfileCall(MethodCall call);
    void OnControlCall(MethodCall call);
    void ReactWith(const char* status);
    // The TV asks for its remote control after that time.
    void OpenLink(int controlAfterMs);
    // The stream's end point and transport.
    void ShowStream();
    // Whether sound arrives.
    void SetStreaming(bool streaming);
    void ShowPlayer();
    void TellStatus();

    PhonePlan m_plan;
    ObjectTree& m_tree;
    Adapter& m_adapter;
    std::string m_transportPath;  // of its stream, while it is connected
    bool m_connected = false;
    bool m_statusTold = false;
    int m_sent = 0;  // advertisements of this discovery
    std::optional<MethodCall> m_pendingConnect;

    Timer m_advertiseTimer;
    Timer m_connectTimer;
    Timer m_ownConnectTimer;
    Timer m_goTimer;
    Timer m_playerTimer;
    Timer m_reactTimer;
};

}  // namespace TvSim
