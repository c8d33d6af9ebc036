// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "common/Source.h"
#include "platform/linux/bluez/Call.h"
#include "platform/linux/bluez/Mirror.h"

// Tells the player of a phone to play, and finds out whether it then does: a phone accepts every
// play command, so its answer proves nothing; only the state of its player does. Waits a while for
// a phone and a player that are late. Logs the result. Never asks another phone, whatever it and
// this one do: its owner did not just come home. Main loop only.
class PlayCommand : private Bluez::Listener {
public:
    // `phone` is an address in upper case; empty for the phone that connected last when one is seen
    // first. `whenDone` is called once, on the main loop, and must destroy the command.
    PlayCommand(Bluez::Mirror& mirror, std::string phone, std::function<void()> whenDone);
    ~PlayCommand() override;
    PlayCommand(const PlayCommand&) = delete;
    PlayCommand& operator=(const PlayCommand&) = delete;

private:
    // Looks whether the phone's player can be told to play, and whether it then does.
    void Look();
    // Not at once: the mirror is in the middle of telling its listeners.
    void LookSoon();
    // Path of the phone's device; empty when it is not connected.
    [[nodiscard]] std::string Device() const;
    // Path of the phone's player; empty when it shows none.
    [[nodiscard]] std::string PlayerPath() const;
    [[nodiscard]] std::string WhySilent() const;
    void Play(const std::string& player);
    // `error` is NULL when the player took the command.
    void OnAnswer(const GError* error);
    void OnDeadline();
    void Finish();

    void OnPlayerChanged(const std::string& path) override;
    void OnTransportAdded(const std::string& device) override;
    void OnDeviceDisconnected(const std::string& path) override;

    Bluez::Mirror& m_mirror;
    std::string m_phone;
    std::function<void()> m_whenDone;
    std::string m_player;  // object path of the player that was told to play; empty before
    Bluez::Call m_play;
    Timer m_look;
    Timer m_deadline;
};
