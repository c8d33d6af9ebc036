// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/media-player/PlayCommand.h"

#include <utility>
#include <vector>

#include "platform/linux/base/DbusError.h"
#include "platform/linux/bluez/Path.h"
#include "tools/media-player/PlayerLog.h"

namespace {

// For a phone and its player to show up, and then for it to play.
constexpr int kAppearMs = 5000;
constexpr int kPlayMs = 5000;

}  // namespace

PlayCommand::PlayCommand(Bluez::Mirror& mirror, std::string phone, std::function<void()> whenDone)
    : m_mirror(mirror), m_phone(std::move(phone)), m_whenDone(std::move(whenDone)) {
    m_mirror.AddListener(this);
    m_deadline = Timer::Once(kAppearMs, [this] { OnDeadline(); });
    LookSoon();
}

PlayCommand::~PlayCommand() {
    m_mirror.RemoveListener(this);
}

void PlayCommand::Look() {
    const std::vector<std::string> devices = m_mirror.DevicesWithTransport();
    if (m_phone.empty() && !devices.empty()) {
        m_phone = m_mirror.AddressOf(devices.front());
    }
    const std::string path = PlayerPath();
    const Bluez::Player* player = m_mirror.FindPlayer(path);
    if (player == nullptr || !player->status) {
        return;
    }
    if (*player->status == "playing") {
        PLAYER_INFO("%s plays", m_phone.c_str());
        Finish();
    } else if (m_player.empty()) {
        Play(path);
    }
}

void PlayCommand::LookSoon() {
    m_look = Timer::Once(0, [this] { Look(); });
}

std::string PlayCommand::Device() const {
    for (const std::string& device : m_mirror.DevicesWithTransport()) {
        if (m_mirror.AddressOf(device) == m_phone) {
            return device;
        }
    }
    return "";
}

std::string PlayCommand::PlayerPath() const {
    const std::string device = Device();
    return device.empty() ? "" : m_mirror.PlayerPath(device);
}

std::string PlayCommand::WhySilent() const {
    if (!m_mirror.IsFilled()) {
        return m_mirror.IsSettled() ? "bluetoothd is not there" : "bluetoothd does not answer";
    }
    if (Device().empty()) {
        return m_phone.empty() ? "no phone is connected" : "the phone has left";
    }
    const Bluez::Player* player = m_mirror.FindPlayer(PlayerPath());
    if (player == nullptr) {
        return "the phone shows no player";
    }
    return player->status
               ? "the phone was told to play and does not, its player says " + *player->status
               : "the phone's player has not told its state";
}

void PlayCommand::Play(const std::string& player) {
    m_player = player;
    m_deadline = Timer::Once(kPlayMs, [this] { OnDeadline(); });
    m_play =
        Bluez::Call(m_mirror.Connection(), player, Bluez::kPlayerInterface, "Play", nullptr,
                    kPlayMs, [this](GVariant* /*reply*/, const GError* error) { OnAnswer(error); });
}

void PlayCommand::OnAnswer(const GError* error) {
    if (error != nullptr) {
        PLAYER_ERROR("the play command failed: %s", Platform::DescribeError(*error).c_str());
        Finish();
    }
}

void PlayCommand::OnDeadline() {
    if (m_phone.empty()) {
        PLAYER_ERROR("no music: %s", WhySilent().c_str());
    } else {
        PLAYER_ERROR("no music from %s: %s", m_phone.c_str(), WhySilent().c_str());
    }
    Finish();
}

void PlayCommand::Finish() {
    const std::function<void()> whenDone = std::move(m_whenDone);  // outlives the command
    whenDone();
}

void PlayCommand::OnPlayerChanged(const std::string& /*path*/) {
    LookSoon();
}

void PlayCommand::OnTransportAdded(const std::string& /*device*/) {
    LookSoon();
}

// If the phone comes back in time, its player is told to play again.
void PlayCommand::OnDeviceDisconnected(const std::string& path) {
    if (Bluez::IsBelow(m_player, path)) {
        m_player.clear();
    }
}
