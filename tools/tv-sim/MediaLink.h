// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/tv-sim/ObjectTree.h"

namespace TvSim {

// The media objects of a connected phone: its stream end point and a transport from the beginning,
// its control and player when it tells of them. They go when the link is dropped.
class MediaLink {
public:
    MediaLink(ObjectTree& tree, std::string devicePath, int transportNumber);
    ~MediaLink();
    MediaLink(const MediaLink&) = delete;
    MediaLink& operator=(const MediaLink&) = delete;

    void ShowControl(ObjectTree::CallHandler onCall);
    // The player appears without a status, as phones tell it only when they are asked.
    void ShowPlayer(ObjectTree::CallHandler onCall);
    void TellStatus(const std::string& status);
    // Whether sound arrives.
    void SetStreaming(bool streaming);

private:
    ObjectTree& m_tree;
    std::string m_devicePath;
    std::string m_endpointPath;
    std::string m_transportPath;
    std::string m_playerPath;
    bool m_controlShown = false;
};

}  // namespace TvSim
