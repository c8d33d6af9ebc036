// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "common/Address.h"
#include "common/CHandle.h"
#include "common/Parse.h"
#include "common/Source.h"
#include "platform/linux/application/LaunchReceiver.h"
#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/MainLoop.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Path.h"
#include "platform/system_log.h"

// The media player's log lines, printf style.
#define PLAYER_INFO(...) __dlog_print(LOG_ID_MAIN, DLOG_INFO, "MEDIA_PLAYER", __VA_ARGS__)
#define PLAYER_WARN(...) __dlog_print(LOG_ID_MAIN, DLOG_WARN, "MEDIA_PLAYER", __VA_ARGS__)
#define PLAYER_ERROR(...) __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "MEDIA_PLAYER", __VA_ARGS__)

namespace {

// For a phone and its player to show up, and then for it to play.
constexpr int kAppearMs = 5000;
constexpr int kPlayMs = 5000;
constexpr int kIdleExitMs = 30000;
constexpr const char* kIdleVariable = "TV_PLAYER_IDLE_MS";
constexpr char kUsage[] =
    "Usage: media-player\n\n"
    "Tells a connected phone to play. The bus starts it as com.velmora.tv.bmp, and it ends half a\n"
    "minute after its last work. It takes no arguments but --help and --version.\n";

int IdleMs() {
    const char* text = std::getenv(kIdleVariable);
    const int ms = text == nullptr ? kIdleExitMs : ParseInt(text).value_or(0);
    if (ms > 0) {
        return ms;
    }
    PLAYER_WARN("%s is not a number of milliseconds: %s", kIdleVariable, text);
    return kIdleExitMs;
}

// Tells the player of a phone to play, and finds out whether it then does: a phone accepts every
// play command, so its answer proves nothing; only the state of its player does. Waits a while for
// a phone and a player that are late. Logs the result. Never asks another phone, whatever it and
// this one do: its owner did not just come home. Main loop only.
class PlayCommand : private Bluez::Listener {
public:
    // `phone` is an address in upper case; empty for the phone that connected last when one is seen
    // first. `whenDone` is called once, on the main loop, and must destroy the command.
    PlayCommand(Bluez::Mirror& mirror, std::string phone, std::function<void()> whenDone)
        : m_mirror(mirror), m_phone(std::move(phone)), m_whenDone(std::move(whenDone)) {
        m_mirror.AddListener(this);
        m_deadline = Timer::Once(kAppearMs, [this] { OnDeadline(); });
        LookSoon();
    }

    ~PlayCommand() override { m_mirror.RemoveListener(this); }

private:
    // Looks whether the phone's player can be told to play, and whether it then does.
    void Look() {
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

    // Not at once: the mirror is in the middle of telling its listeners.
    void LookSoon() {
        m_look = Timer::Once(0, [this] { Look(); });
    }

    // Path of the phone's device; empty when it is not connected.
    [[nodiscard]] std::string Device() const {
        for (const std::string& device : m_mirror.DevicesWithTransport()) {
            if (m_mirror.AddressOf(device) == m_phone) {
                return device;
            }
        }
        return "";
    }

    // Path of the phone's player; empty when it shows none.
    [[nodiscard]] std::string PlayerPath() const {
        const std::string device = Device();
        return device.empty() ? "" : m_mirror.PlayerPath(device);
    }

    [[nodiscard]] std::string WhySilent() const {
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

    void Play(const std::string& player) {
        m_player = player;
        m_deadline = Timer::Once(kPlayMs, [this] { OnDeadline(); });
        m_play = Bluez::Call(m_mirror.Connection(), player, Bluez::kPlayerInterface, "Play",
                             nullptr, kPlayMs, [this](GVariant* /*reply*/, const GError* error) {
                                 if (error != nullptr) {
                                     PLAYER_ERROR("the play command failed: %s",
                                                  Platform::DescribeError(*error).c_str());
                                     Finish();
                                 }
                             });
    }

    void OnDeadline() {
        const std::string phone = m_phone.empty() ? "" : " from " + m_phone;
        PLAYER_ERROR("no music%s: %s", phone.c_str(), WhySilent().c_str());
        Finish();
    }

    void Finish() {
        const std::function<void()> whenDone = std::move(m_whenDone);  // outlives the command
        whenDone();
    }

    void OnPlayerChanged(const std::string& /*path*/) override { LookSoon(); }
    void OnTransportAdded(const std::string& /*device*/) override { LookSoon(); }
    // If the phone comes back in time, its player is told to play again.
    void OnDeviceDisconnected(const std::string& path) override {
        if (Bluez::IsBelow(m_player, path)) {
            m_player.clear();
        }
    }

    Bluez::Mirror& m_mirror;
    std::string m_phone;
    std::function<void()> m_whenDone;
    std::string m_player;  // object path of the player that was told to play; empty before
    Bluez::Call m_play;
    Timer m_look;
    Timer m_deadline;
};

// The Bluetooth media player application, which a TV has and a Linux box lacks: the bus starts it
// when it is launched, it does what the extras of the launch ask for, and it ends when nobody asked
// for anything for a while. The only extra it knows is "cmd", with the only value "play".
class MediaPlayer {
public:
    MediaPlayer()
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

    // Returns when the player has had nothing to do for half a minute, was told to terminate, or
    // cannot be launched; the exit status of the process.
    int Run() {
        g_main_loop_run(m_loop.get());
        return m_status;
    }

private:
    void OnLaunch(const Platform::Launch& launch) {
        const std::string phone = CanonicalAddress(launch.phone.c_str());
        if (phone.empty() && !launch.phone.empty()) {
            PLAYER_WARN("launched for a phone with a malformed address: %s", launch.phone.c_str());
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

    void Play(const std::string& phone) {
        std::unique_ptr<PlayCommand>& command = m_commands[phone];
        if (command) {
            PLAYER_INFO("play: the phone is being asked already");
            return;
        }
        PLAYER_INFO("play on %s", phone.empty() ? "the phone that connected last" : phone.c_str());
        m_idle.Cancel();
        command = std::make_unique<PlayCommand>(m_mirror, phone, [this, phone] {
            m_commands.erase(phone);
            if (m_commands.empty()) {
                EndWhenIdle();
            }
        });
    }

    // After the last command: some time later, or at once when the name is given up.
    void EndWhenIdle() {
        if (m_isEnding) {
            Quit(EXIT_SUCCESS);
        } else {
            m_idle = Timer::Once(m_idleMs, [this] { End(); });
        }
    }

    // Ends without losing a launch: what came until then is done first.
    void End() {
        m_isEnding = true;
        m_receiver.GiveUpName();
        if (m_commands.empty()) {
            Quit(EXIT_SUCCESS);
        }
    }

    void Quit(int status) {
        m_status = status;
        g_main_loop_quit(m_loop.get());
    }

    const GMainLoopPtr m_loop;
    int m_status = EXIT_SUCCESS;
    Bluez::Mirror m_mirror;
    std::map<std::string, std::unique_ptr<PlayCommand>> m_commands;  // by phone, "" for none named
    Timer m_idle;
    const int m_idleMs;
    bool m_isEnding = false;
    const Source m_terminate;
    Platform::LaunchReceiver m_receiver;
};

}  // namespace

// The bus starts it without arguments; somebody who gives one wants to know what it is.
int main(int argc, char** argv) {
    if (argc > 1) {
        const std::string_view option = argv[1];
        const bool isVersion = option == "--version";
        const bool isHelp = option == "--help" || option == "-h";
        std::fputs(isVersion ? "media-player " PLAYER_VERSION "\n" : kUsage,
                   isVersion || isHelp ? stdout : stderr);
        return isVersion || isHelp ? EXIT_SUCCESS : 2;
    }
    MediaPlayer player;
    return player.Run();
}
