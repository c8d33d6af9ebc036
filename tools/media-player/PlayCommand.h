// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "common/Source.h"
#include "platform/linux/bluez/Mirror.h"

// Has the player of a phone play, and finds out whether it then does: a phone agrees to every play
// command, so its answer proves nothing and only its player's own state does. Waits a while for a
// phone and a player that are late. Says on the log what came of it. Other phones are none of its
// business, whatever they do and whatever this one does: their owners did not just come home. Main
// loop only.
class PlayCommand : private Bluez::Listener {
public:
    // `phone` is an address in upper case; empty for the phone that connected last when one is seen
    // first. `whenDone` is called once, on the main loop, with whether the phone plays; it may
    // destroy the command.
    PlayCommand(Bluez::Mirror& mirror, std::string phone, std::function<void(bool plays)> whenDone);
    ~PlayCommand() override;

private:
    void Look();
    void LookSoon();
    // Path of the phone's device; empty when it is not connected.
    [[nodiscard]] std::string Device() const;
    // Path of the phone's player; empty when it shows none.
    [[nodiscard]] std::string PlayerPath() const;
    [[nodiscard]] std::string WhySilent() const;
    void Play(const std::string& player);
    void OnDeadline();
    void Finish(bool plays);

    void OnPlayerChanged(const std::string& /*path*/) override { LookSoon(); }
    void OnTransportAdded(const std::string& /*device*/) override { LookSoon(); }
    void OnDeviceDisconnected(const std::string& path) override;

    Bluez::Mirror& m_mirror;
    std::string m_phone;
    std::function<void(bool)> m_whenDone;
    std::string m_player;  // object path of the player that was told to play; empty before
    Bluez::Call m_play;
    Timer m_look;
    Timer m_deadline;
};
