// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "common/Timer.h"
#include "platform/linux/BluezMirror.h"

// Has the player of the connected phone play, and finds out whether it then does: a phone agrees to
// every play command, so its answer proves nothing and only its player's own state does. Waits a
// while for a phone and a player that are late. Says on the log what came of it. Main loop only.
class PlayCommand : private Bluez::Listener {
public:
    // `whenDone` is called once, on the main loop, with whether the phone plays; it may destroy the
    // command.
    PlayCommand(Bluez::Mirror& mirror, std::function<void(bool plays)> whenDone);
    ~PlayCommand() override;

private:
    void Look();
    void Play(const std::string& player);
    void OnDeadline();
    void Finish(bool plays);

    void OnPlayerChanged(const std::string& path) override;
    void OnServiceGone() override;

    Bluez::Mirror& m_mirror;
    std::function<void(bool)> m_whenDone;
    std::string m_player;     // object path of the player that was told to play; empty before
    std::string m_isLacking;  // what it waits for, as a log line has it
    Bluez::Call m_play;
    Timer m_look;
    Timer m_deadline;
};
