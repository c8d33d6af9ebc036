// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/media-player/MediaPlayer.h"

#include <csignal>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "platform/linux/base/MainLoop.h"
#include "platform/linux/base/Parse.h"
#include "platform/linux/bluez/Path.h"
#include "tools/media-player/MediaPlayerLog.h"

namespace {

constexpr int kIdleExitMs = 30000;
constexpr const char* kIdleVariable = "TV_PLAYER_IDLE_MS";

int IdleMs() {
    const char* text = std::getenv(kIdleVariable);
    if (text == nullptr) {
        return kIdleExitMs;
    }
    const auto ms = Platform::ParseInt(text);
    if (ms && *ms > 0) {
        return *ms;
    }
    PLAYER_WARN("%s is no number of milliseconds: %s", kIdleVariable, text);
    return kIdleExitMs;
}

}  // namespace

MediaPlayer::MediaPlayer()
    : m_loop(g_main_loop_new(nullptr, FALSE)),
      m_idleMs(IdleMs()),
      // systemd sends it, too, as soon as the name is given up.
      m_terminate(Source::OnSignal(SIGTERM, [this] { End(); })),
      m_receiver(
          Conditions::kMediaPlayerAppId,
          [this](const Platform::Launch& launch) { OnLaunch(launch); },
          [this] { Quit(EXIT_FAILURE); }) {
    Platform::TellOfMainLoop();
    EndWhenIdle();
}

int MediaPlayer::Run() {
    g_main_loop_run(m_loop.get());
    return m_status;
}

void MediaPlayer::OnLaunch(const Platform::Launch& launch) {
    const std::string phone = Bluez::CanonicalAddress(launch.phone.c_str());
    if (phone.empty() && !launch.phone.empty()) {
        PLAYER_WARN("launched for a phone whose address is none: %s", launch.phone.c_str());
        return;
    }
    for (const auto& [key, value] : launch.extras) {
        if (key == "cmd" && value == "play") {
            Play(phone);
        } else {
            PLAYER_WARN("unknown extra %s=%s", key.c_str(), value.c_str());
        }
    }
}

void MediaPlayer::Play(const std::string& phone) {
    std::unique_ptr<PlayCommand>& command = m_commands[phone];
    if (command) {
        PLAYER_INFO("play: the phone is being asked already");
        return;
    }
    PLAYER_INFO("play on %s", phone.empty() ? "the phone that connected last" : phone.c_str());
    m_idle.Cancel();
    command = std::make_unique<PlayCommand>(m_mirror, phone, [this, phone](bool /*plays*/) {
        m_commands.erase(phone);
        if (m_commands.empty()) {
            EndWhenIdle();
        }
    });
}

void MediaPlayer::EndWhenIdle() {
    if (m_isEnding) {
        Quit(EXIT_SUCCESS);
    } else {
        m_idle = Timer::Once(m_idleMs, [this] { End(); });
    }
}

void MediaPlayer::End() {
    m_isEnding = true;
    m_receiver.GiveUpName();
    if (m_commands.empty()) {
        Quit(EXIT_SUCCESS);
    }
}

void MediaPlayer::Quit(int status) {
    m_status = status;
    g_main_loop_quit(m_loop.get());
}
