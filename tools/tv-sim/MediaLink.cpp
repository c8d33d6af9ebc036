// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/MediaLink.h"

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

// SBC, everything that it can do, and the configuration that phones choose.
constexpr unsigned char kSbcCodec = 0;
const std::vector<unsigned char> kCapabilities = {0xFF, 0xFF, 0x02, 0x40};
const std::vector<unsigned char> kConfiguration = {0x21, 0x15, 0x02, 0x35};
constexpr unsigned kVolume = 64;  // of 127

}  // namespace

MediaLink::MediaLink(ObjectTree& tree, std::string devicePath, int transportNumber)
    : m_tree(tree),
      m_devicePath(std::move(devicePath)),
      m_endpointPath(m_devicePath + "/sep1"),
      m_transportPath(m_endpointPath + "/fd" + std::to_string(transportNumber)),
      m_playerPath(m_devicePath + "/player0") {
    m_tree.Add(m_endpointPath, {kEndpointInterface,
                                {{"UUID", Text(kSourceUuid)},
                                 {"Codec", Own(g_variant_new_byte(kSbcCodec))},
                                 {"Capabilities", Own(NewBytes(kCapabilities))},
                                 {"Device", Path(m_devicePath)},
                                 {"DelayReporting", Bool(false)}}});
    // The transport carries the TV's own role. It is the audio daemon's to acquire, nobody else's.
    m_tree.Add(m_transportPath, {kTransportInterface,
                                 {{"Device", Path(m_devicePath)},
                                  {"UUID", Text(kSinkUuid)},
                                  {"Codec", Own(g_variant_new_byte(kSbcCodec))},
                                  {"Configuration", Own(NewBytes(kConfiguration))},
                                  {"State", Text("idle")},
                                  {"Volume", Own(g_variant_new_uint16(kVolume))}},
                                 [](MethodCall call) {
                                     call.FailBluez("NotAuthorized", "Operation Not Authorized");
                                 }});
}

MediaLink::~MediaLink() {
    const bool hadPlayer = m_tree.Has(m_playerPath);
    m_tree.Remove(m_playerPath);
    if (m_controlShown) {
        m_tree.Change(m_devicePath, kControlInterface, {{"Connected", Bool(false)}},
                      hadPlayer ? std::vector<std::string>{"Player"} : std::vector<std::string>());
    }
    m_tree.Remove(m_transportPath);
    m_tree.Remove(m_endpointPath);
}

void MediaLink::ShowControl(ObjectTree::CallHandler onCall) {
    m_controlShown = true;
    if (m_tree.Get(m_devicePath, kControlInterface, "Connected") != nullptr) {
        m_tree.Change(m_devicePath, kControlInterface, {{"Connected", Bool(true)}});
    } else if (m_tree.Has(m_devicePath)) {
        m_tree.Add(m_devicePath,
                   {kControlInterface, {{"Connected", Bool(true)}}, std::move(onCall)});
    }
}

void MediaLink::ShowPlayer(ObjectTree::CallHandler onCall) {
    if (!m_tree.Has(m_playerPath)) {
        m_tree.Add(m_playerPath,
                   {kPlayerInterface,
                    {{"Device", Path(m_devicePath)}, {"Position", Own(g_variant_new_uint32(0))}},
                    std::move(onCall)});
        m_tree.Change(m_devicePath, kControlInterface, {{"Player", Path(m_playerPath)}});
    }
}

void MediaLink::TellStatus(const std::string& status) {
    m_tree.Change(m_playerPath, kPlayerInterface, {{"Status", Text(status)}});
}

void MediaLink::SetStreaming(bool streaming) {
    if (streaming) {
        // What a stream that the phone started looks like until the audio daemon took it.
        m_tree.Change(m_transportPath, kTransportInterface, {{"State", Text("pending")}});
    }
    m_tree.Change(m_transportPath, kTransportInterface,
                  {{"State", Text(streaming ? "active" : "idle")}});
}

}  // namespace TvSim
