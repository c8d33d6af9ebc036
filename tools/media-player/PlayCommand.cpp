// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/media-player/PlayCommand.h"

#include <utility>
#include <vector>

#include "platform/linux/DbusError.h"
#include "tools/media-player/MediaPlayerLog.h"

namespace {

constexpr const char* kPlayerInterface = "org.bluez.MediaPlayer1";
// For a phone and its player to show up, and then for it to play.
constexpr int kAppearMs = 5000;
constexpr int kPlayMs = 5000;
constexpr const char* kPlaying = "playing";

}  // namespace

PlayCommand::PlayCommand(Bluez::Mirror& mirror, std::function<void(bool plays)> whenDone)
    : m_mirror(mirror), m_whenDone(std::move(whenDone)) {
    m_mirror.AddListener(this);
    m_deadline = Timer::Once(kAppearMs, [this] { OnDeadline(); });
    m_look = Timer::Once(0, [this] { Look(); });
}

PlayCommand::~PlayCommand() {
    m_mirror.RemoveListener(this);
}

// Looks whether the player of the phone that connected last can be told to play, and whether it
// then does. Other phones are none of its business: their owners did not just come home.
void PlayCommand::Look() {
    const std::vector<std::string> devices = m_mirror.DevicesWithTransport();
    if (devices.empty()) {
        m_isLacking = "no phone is connected";
        return;
    }
    const std::string path = m_mirror.PlayerPath(devices.front());
    const Bluez::Player* player = m_mirror.FindPlayer(path);
    if (player == nullptr) {
        m_isLacking = "the phone shows no player";
    } else if (!player->status) {
        m_isLacking = "the phone's player has not told its state";
    } else if (*player->status == kPlaying) {
        PLAYER_INFO("%s plays", m_mirror.AddressOf(devices.front()).c_str());
        Finish(true);
    } else {
        m_isLacking = "the phone was told to play and does not, its player says " + *player->status;
        if (m_player.empty()) {
            Play(path);
        }
    }
}

void PlayCommand::Play(const std::string& player) {
    m_player = player;
    m_deadline = Timer::Once(kPlayMs, [this] { OnDeadline(); });
    m_play = Bluez::Call(m_mirror.Connection(), player, kPlayerInterface, "Play", nullptr, kPlayMs,
                         [this](GVariant* /*reply*/, const GError* error) {
                             if (error != nullptr) {
                                 PLAYER_ERROR("the play command failed: %s",
                                              Platform::DescribeError(*error).c_str());
                                 Finish(false);
                             }
                         });
}

void PlayCommand::OnDeadline() {
    PLAYER_ERROR("no music: %s",
                 m_isLacking.empty() ? "bluetoothd is not there" : m_isLacking.c_str());
    Finish(false);
}

void PlayCommand::Finish(bool plays) {
    m_play.Drop();
    m_look.Cancel();
    m_deadline.Cancel();
    if (const std::function<void(bool)> whenDone = std::exchange(m_whenDone, nullptr)) {
        whenDone(plays);
    }
}

// Not at once: the mirror is in the middle of telling its listeners.
void PlayCommand::OnPlayerChanged(const std::string& /*path*/) {
    m_look = Timer::Once(0, [this] { Look(); });
}

void PlayCommand::OnServiceGone() {
    m_isLacking = "bluetoothd is not there";
}
