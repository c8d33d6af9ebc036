// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/media-player/MediaPlayer.h"

#include "tools/media-player/MediaPlayerLog.h"

namespace {

constexpr const char* kAppId = "com.velmora.tv.bmp";
constexpr int kIdleExitMs = 30000;

}  // namespace

MediaPlayer::MediaPlayer()
    : m_loop(g_main_loop_new(nullptr, FALSE)),
      m_receiver(
          kAppId, [this](const Platform::LaunchExtras& extras) { OnLaunch(extras); },
          [this] { Quit(); }) {
    ExitWhenIdle();
}

void MediaPlayer::Run() {
    g_main_loop_run(m_loop.get());
}

void MediaPlayer::OnLaunch(const Platform::LaunchExtras& extras) {
    for (const auto& [key, value] : extras) {
        if (key == "cmd" && value == "play") {
            Play();
        } else {
            PLAYER_WARN("unknown extra %s=%s", key.c_str(), value.c_str());
        }
    }
}

void MediaPlayer::Play() {
    if (m_command) {
        PLAYER_INFO("play: the phone is being asked already");
        return;
    }
    PLAYER_INFO("play");
    m_idle.Cancel();
    m_command = std::make_unique<PlayCommand>(m_mirror, [this](bool /*plays*/) {
        m_command.reset();
        ExitWhenIdle();
    });
}

void MediaPlayer::ExitWhenIdle() {
    m_idle = Timer::Once(kIdleExitMs, [this] { Quit(); });
}

void MediaPlayer::Quit() {
    g_main_loop_quit(m_loop.get());
}
