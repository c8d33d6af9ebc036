// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <map>
#include <memory>
#include <string>

#include "common/CHandle.h"
#include "common/Source.h"
#include "platform/linux/application/LaunchReceiver.h"
#include "platform/linux/bluez/Mirror.h"
#include "tools/media-player/PlayCommand.h"

// The Bluetooth media player application, which a TV has and a Linux box lacks: the bus starts it
// when it is launched, it does what the extras of the launch ask for, and it ends when nobody asked
// for anything for a while. The one extra it knows is "cmd", with the one value "play".
class MediaPlayer {
public:
    MediaPlayer();
    MediaPlayer(const MediaPlayer&) = delete;
    MediaPlayer& operator=(const MediaPlayer&) = delete;

    // Returns when the player has had nothing to do for half a minute, was told to terminate, or
    // cannot be launched; the exit status of the process.
    int Run();

private:
    void OnLaunch(const Platform::Launch& launch);
    void Play(const std::string& phone);
    // After the last command: some time later, or at once when the name is given up.
    void EndWhenIdle();
    // Ends without losing a launch: what came until then is done first.
    void End();
    void Quit(int status);

    GMainLoopPtr m_loop;
    int m_status = EXIT_SUCCESS;
    Bluez::Mirror m_mirror;
    std::map<std::string, std::unique_ptr<PlayCommand>> m_commands;  // by phone, "" for none named
    Timer m_idle;
    const int m_idleMs;
    bool m_isEnding = false;
    Source m_terminate;
    Platform::LaunchReceiver m_receiver;
};
