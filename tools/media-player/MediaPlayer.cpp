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

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "common/Address.h"
#include "common/CHandle.h"
#include "common/Parse.h"
#include "common/Source.h"
#include "platform/linux/application/LaunchReceiver.h"
#include "platform/linux/base/MainLoop.h"
#include "platform/linux/bluez/Mirror.h"
#include "tools/media-player/PlayCommand.h"
#include "tools/media-player/PlayerLog.h"

namespace {

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
