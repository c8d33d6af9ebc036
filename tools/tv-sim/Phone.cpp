// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Phone.h"

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

// A phone's player reacts to a remote control so long after the key.
constexpr int kReactMs = 15;
// The daemon opens the remote control at once after its own connection, and so much later when the
// phone connected, to let it open one itself.
constexpr int kOwnControlDelayMs = 2000;
// How long an idle link lives when its last profile was closed.
constexpr int kIdleLinkMs = 2000;
// Until a connection fails: of a phone that was never paired, and of one that forgot the TV.
constexpr int kUnpairedMs = 500;
constexpr int kForgottenMs = 24;

// SBC, everything that it can do, and the configuration that phones choose.
constexpr unsigned char kSbcCodec = 0;
const std::vector<unsigned char> kCapabilities = {0xFF, 0xFF, 0x02, 0x40};
const std::vector<unsigned char> kConfiguration = {0x21, 0x15, 0x02, 0x35};
constexpr unsigned kVolume = 64;  // of 127

bool IsSource(const MethodCall& call) {
    const std::string uuid = call.TextArgument(0);
    return g_ascii_strcasecmp(uuid.c_str(), kSourceUuid) == 0 || uuid == "110a" || uuid == "110A";
}

}  // namespace

Phone::Phone(PhonePlan plan, ObjectTree& tree, Adapter& adapter)
    : m_plan(std::move(plan)), m_tree(tree), m_adapter(adapter) {}

void Phone::SetPlan(PhonePlan plan) {
    plan.id = m_plan.id;
    plan.address = m_plan.address;
    plan.adapter = m_plan.adapter;
    plan.bonded = m_plan.bonded;
    plan.forgotTv = m_plan.forgotTv;
    const std::string status = std::exchange(plan.playerStatus, m_plan.playerStatus);
    m_plan = std::move(plan);
    if (!m_connected || (HasPlayer() && status != "none")) {
        SetStatus(status);
    }
    if (m_adapter.Discovering()) {
        m_advertiseTimer.Cancel();
        OnDiscoveryStarted();
    }
}

void Phone::Pair() {
    m_plan.forgotTv = false;
    if (!std::exchange(m_plan.bonded, true) && m_adapter.Present()) {
        ShowDevice();
    }
    Say("is paired");
}

void Phone::LoseBond() {
    OnDeviceRemoved();
    m_adapter.Devices().Remove(m_plan.address);
    Say("was removed on the TV");
}

void Phone::ForgetTv() {
    m_plan.forgotTv = true;
    Disconnect();
    Say("forgot the TV");
}

bool Phone::ConnectByItself() {
    if (!m_plan.bonded || m_plan.forgotTv || !m_adapter.Powered() || m_connected) {
        Say("cannot connect by itself");
        return false;
    }
    Say("connects by itself");
    OpenLink(kOwnControlDelayMs);
    if (m_pendingConnect) {
        m_connectTimer.Cancel();
        std::exchange(m_pendingConnect, std::nullopt)->Answer();
    }
    return true;
}

void Phone::Disconnect() {
    if (m_connected) {
        EndLink();
    }
}

void Phone::SetStatus(const std::string& status) {
    const bool played = Playing();
    m_plan.playerStatus = status;
    if (!m_connected) {
        return;
    }
    if (m_statusTold) {
        m_tree.Change(PlayerPath(), kPlayerInterface, {{"Status", Text(status)}});
    }
    if (Playing() != played) {
        SetStreaming(Playing());
        Say(Playing() ? "plays" : "is " + status);
    }
}

void Phone::OnAdapterAppeared() {
    if (m_plan.bonded) {
        ShowDevice();
    }
}

void Phone::ShowDevice() {
    m_adapter.Devices().AddBonded(m_plan);
    m_tree.Add(DevicePath(), {kControlInterface,
                              {{"Connected", Bool(false)}},
                              [this](MethodCall call) { OnControlCall(std::move(call)); }});
}

void Phone::OnAdapterPoweredOn() {
    if (m_plan.connectsByItselfAfterMs > 0) {
        m_ownConnectTimer =
            Timer::Once(m_plan.connectsByItselfAfterMs, [this] { ConnectByItself(); });
    }
}

void Phone::OnAdapterLosesPower() {
    m_ownConnectTimer.Cancel();
    if (m_pendingConnect) {
        Fail("br-connection-canceled");
    }
    Disconnect();
}

void Phone::OnDiscoveryStarted() {
    m_sent = 0;
    if (m_plan.advertises) {
        m_advertiseTimer = Timer::Once(m_plan.advertiseAfterMs, [this] {
            m_advertiseTimer = Timer::Every(m_plan.advertiseEveryMs, [this] { Advertise(); });
            Advertise();
        });
    }
}

void Phone::Advertise() {
    if (m_sent == 0) {
        Say("advertises from " + m_plan.advertiseFrom);
    }
    const bool isResolved = !m_plan.hasApplication && m_plan.bonded;
    const std::string& from = isResolved ? m_plan.address : m_plan.advertiseFrom;
    m_adapter.Hear({from, from != m_plan.address, m_plan.connectable, -55 - m_sent % 3,
                    m_plan.manufacturerData});
    if (++m_sent == m_plan.advertiseCount) {
        m_advertiseTimer.Cancel();
    }
}

void Phone::OnCall(const std::string& /*address*/, MethodCall call) {
    const std::string method = call.Method();
    if (method == "ConnectProfile" && !IsSource(call)) {
        call.FailBluez("NotAvailable", "br-connection-profile-unavailable");
    } else if (method == "ConnectProfile" || method == "Connect") {
        AskConnection(std::move(call));
    } else if (method == "Disconnect") {
        OnDisconnectCall(std::move(call));
    } else if (method == "DisconnectProfile") {
        OnDisconnectProfileCall(std::move(call));
    } else if (method == "Pair" && m_plan.bonded) {
        call.FailBluez("AlreadyExists", "Already Exists");
    } else {
        call.FailBluez("NotSupported", "Operation is not supported");
    }
}

void Phone::OnDeviceRemoved() {
    m_plan.bonded = false;
    OnAdapterLosesPower();
}

void Phone::AskConnection(MethodCall call) {
    if (!m_adapter.Powered()) {
        call.FailBluez("NotReady", "br-connection-adapter-not-powered");
        return;
    }
    if (m_pendingConnect) {
        Say("connection asked while one is under way");
        call.FailBluez("InProgress", "br-connection-busy");
        return;
    }
    Say(m_adapter.Discovering() ? "connection asked during a discovery" : "connection asked");
    if (m_connected) {
        call.Answer();
        return;
    }
    m_pendingConnect.emplace(std::move(call));
    const ConnectAnswer answer =
        std::exchange(m_plan.firstConnect, std::nullopt).value_or(m_plan.connect);
    if (!m_plan.bonded || m_plan.forgotTv) {
        m_connectTimer = Timer::Once(m_plan.bonded ? kForgottenMs : kUnpairedMs,
                                     [this] { Fail("br-connection-unknown"); });
    } else if (answer.kind != ConnectAnswer::Kind::kNever) {
        m_connectTimer = Timer::Once(m_plan.connectAfterMs, [this, answer] { Finish(answer); });
    }
}

void Phone::Finish(const ConnectAnswer& answer) {
    if (answer.kind == ConnectAnswer::Kind::kRefuse) {
        if (m_plan.linkGoesDown) {
            m_adapter.Devices().SetConnected(m_plan.address, true);
        }
        Refuse(answer.errorName, answer.errorMessage);
        // bluetoothd answers before it tells of the link.
        if (m_plan.linkGoesDown) {
            m_adapter.Devices().SetConnected(m_plan.address, false);
        }
        return;
    }
    OpenLink(0);
    std::exchange(m_pendingConnect, std::nullopt)->Answer();
}

void Phone::Refuse(const std::string& errorName, const std::string& message) {
    m_connectTimer.Cancel();
    Say("refused " + (message.empty() ? errorName : message));
    std::exchange(m_pendingConnect, std::nullopt)->Fail(errorName, message);
}

void Phone::OnDisconnectCall(MethodCall call) {
    Say("disconnection asked");
    if (m_pendingConnect) {
        Fail("br-connection-canceled");
        call.Answer();
    } else if (m_connected) {
        // Only a link that is down is answered.
        m_goTimer = Timer::Once(kIdleLinkMs, [this, call = std::move(call)]() mutable {
            EndLink();
            call.Answer();
        });
    } else {
        call.FailBluez("NotConnected", "Not Connected");
    }
}

void Phone::OnDisconnectProfileCall(MethodCall call) {
    if (!IsSource(call)) {
        call.FailBluez("InvalidArguments", "Invalid arguments in method call");
        return;
    }
    if (!m_connected) {
        call.FailBluez("NotConnected", "Not Connected");
        return;
    }
    Say("disconnection asked");
    m_goTimer = Timer::Once(kIdleLinkMs, [this] { EndLink(); });
    call.Answer();
}

void Phone::OnControlCall(MethodCall call) {
    if (!m_connected || !HasPlayer()) {
        call.FailBluez("NotConnected", "Not Connected");
        return;
    }
    const std::string method = call.Method();
    if (method == "Play") {
        Say("play asked");
        // The answer is the same whether the phone obeys or not.
        if (m_plan.playsOnPlay) {
            ReactWith("playing");
        }
    } else if (method == "Pause" || method == "Stop") {
        Say(method == "Pause" ? "pause asked" : "stop asked");
        ReactWith(method == "Pause" ? "paused" : "stopped");
    }
    call.Answer();
}

void Phone::ReactWith(const char* status) {
    m_reactTimer = Timer::Once(kReactMs, [this, status] { SetStatus(status); });
}

void Phone::OpenLink(int controlAfterMs) {
    m_connected = true;
    m_statusTold = false;
    m_adapter.Devices().SetConnected(m_plan.address, true);
    ShowStream();
    Say("connected");
    m_playerTimer = Timer::Once(m_plan.playerAfterMs + controlAfterMs, [this] { ShowPlayer(); });
    if (m_plan.disconnectsAfterMs > 0) {
        m_goTimer = Timer::Once(m_plan.disconnectsAfterMs, [this] { EndLink(); });
    }
    if (Playing()) {
        m_reactTimer = Timer::Once(kReactMs, [this] {
            SetStreaming(true);
            Say("plays");
        });
    }
}

void Phone::ShowStream() {
    const std::string endpointPath = DevicePath() + "/sep1";
    m_transportPath = endpointPath + "/fd" + std::to_string(m_tree.NextTransport());
    m_tree.Add(endpointPath, {kEndpointInterface,
                              {{"UUID", Text(kSourceUuid)},
                               {"Codec", Own(g_variant_new_byte(kSbcCodec))},
                               {"Capabilities", Own(NewBytes(kCapabilities))},
                               {"Device", Path(DevicePath())},
                               {"DelayReporting", Bool(false)}}});
    // The transport carries the TV's own role. It is the audio daemon's to acquire, nobody else's.
    m_tree.Add(m_transportPath, {kTransportInterface,
                                 {{"Device", Path(DevicePath())},
                                  {"UUID", Text(kSinkUuid)},
                                  {"Codec", Own(g_variant_new_byte(kSbcCodec))},
                                  {"Configuration", Own(NewBytes(kConfiguration))},
                                  {"State", Text("idle")},
                                  {"Volume", Own(g_variant_new_uint16(kVolume))}},
                                 [](MethodCall call) {
                                     call.FailBluez("NotAuthorized", "Operation Not Authorized");
                                 }});
}

void Phone::SetStreaming(bool streaming) {
    if (streaming) {
        // What a stream that the phone started looks like until the audio daemon took it.
        m_tree.Change(m_transportPath, kTransportInterface, {{"State", Text("pending")}});
    }
    m_tree.Change(m_transportPath, kTransportInterface,
                  {{"State", Text(streaming ? "active" : "idle")}});
}

void Phone::EndLink() {
    m_connected = false;
    m_playerTimer.Cancel();
    m_reactTimer.Cancel();
    m_goTimer.Cancel();
    const bool hadPlayer = m_tree.Get(PlayerPath(), kPlayerInterface, "Device") != nullptr;
    m_tree.Remove(PlayerPath());
    if (GVariant* control = m_tree.Get(DevicePath(), kControlInterface, "Connected");
        control != nullptr && g_variant_get_boolean(control) != FALSE) {
        m_tree.Change(DevicePath(), kControlInterface, {{"Connected", Bool(false)}},
                      hadPlayer ? std::vector<std::string>{"Player"} : std::vector<std::string>());
    }
    m_tree.Remove(DevicePath() + "/sep1");
    m_adapter.Devices().SetConnected(m_plan.address, false);
    Say("disconnected");
}

// The player appears without a status, as phones tell it only when they are asked.
void Phone::ShowPlayer() {
    m_tree.Change(DevicePath(), kControlInterface, {{"Connected", Bool(true)}});
    if (HasPlayer()) {
        m_tree.Add(PlayerPath(),
                   {kPlayerInterface,
                    {{"Device", Path(DevicePath())}, {"Position", Own(g_variant_new_uint32(0))}},
                    [this](MethodCall call) { OnControlCall(std::move(call)); }});
        m_tree.Change(DevicePath(), kControlInterface, {{"Player", Path(PlayerPath())}});
        Say("player appeared");
        m_playerTimer = Timer::Once(m_plan.statusAfterMs, [this] { TellStatus(); });
    }
}

void Phone::TellStatus() {
    m_statusTold = true;
    m_tree.Change(PlayerPath(), kPlayerInterface, {{"Status", Text(m_plan.playerStatus)}});
    Say("tells its status " + m_plan.playerStatus);
}

}  // namespace TvSim
