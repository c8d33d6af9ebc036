// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/WakeAttempt.h"

#include <glib.h>

#include "autoconnect/src/DbusInterface.h"
#include "platform/bluetooth.h"
#include "platform/linux/bluez/Inspection.h"
#include "tools/tvctl/model/ServiceSignal.h"
#include "tools/tvctl/trace/LiveLog.h"

namespace Tvctl {

namespace {

constexpr int kLookMs = 100;
// Until the log has the signal.
constexpr std::int64_t kBeginMs = 5000;
// The next step of an attempt follows sooner, also when the service waits for a locked file.
constexpr std::int64_t kSettledMs = 2500;
// Nothing that the service waits for takes longer.
constexpr std::int64_t kStuckMs = 60000;
// The media player's two waits, for a phone's player and for its music.
constexpr std::int64_t kMusicMs = 10000;

// What the phone says, which is asked for where the log lacks the media player's lines.
bool IsPlaying() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    bt_avrcp_player_state_e state = BT_AVRCP_PLAYER_STATE_STOPPED;
    return bt_avrcp_control_get_play_status(&state) == BT_ERROR_NONE &&
           state == BT_AVRCP_PLAYER_STATE_PLAYING;
}

class Attempt {
public:
    Attempt(const LogSource& source, Console& console)
        : m_name(NameOf(source)),
          m_console(console),
          m_log(
              source, [&console](const std::string& line) { console.ShowLine(line); },
              [](const WakeUp& /*wakeUp*/) {}) {}

    ExitCode Run() {
        // What came before the signal is not meant.
        m_log.Look(0);
        if (m_log.IsOver()) {
            return m_console.Fail(m_log.Count().failure + kOtherLog);
        }
        static_cast<void>(Bluez::AwaitAdapter());
        const std::string unheard = SendToService(kPrepareCommand, nullptr);
        if (!unheard.empty()) {
            return m_console.Fail(unheard);
        }
        const std::string failure = Await();
        if (!failure.empty()) {
            return m_console.Fail(failure);
        }
        const bool isMusic = m_log.First()->Outcome() == Verdict::kPlays && AwaitMusic();
        m_log.Finish();
        m_console.Show(ToJson(*m_log.First()));
        if (isMusic) {
            m_console.ShowLine("there is music");
            return kDone;
        }
        const std::string reason = m_log.First()->Reason();
        return m_console.Fail(
            "no music: " + (reason.empty() ? "the phone was told to play and does not" : reason));
    }

private:
    // Draws the attempt until nothing of it is under way. Why its end will not be known, or "".
    std::string Await() {
        const std::int64_t sentUs = g_get_monotonic_time();
        while (!m_log.IsOver()) {
            m_log.Look(kLookMs);
            const std::int64_t quietMs = m_log.QuietMs();
            if (!m_log.First()) {
                if (g_get_monotonic_time() - sentUs > kBeginMs * 1000) {
                    return "the signal was sent, but nothing of it came into " + m_name + kOtherLog;
                }
            } else if (m_log.First()->IsOpen() ? quietMs > kStuckMs : quietMs > kSettledMs) {
                return m_log.First()->IsOpen() ? m_name + " does not tell how the attempt ended"
                                               : "";
            }
        }
        return m_log.Count().failure.empty() ? m_name + " ended" : m_log.Count().failure;
    }

    // Whether the phone that was told to play does.
    bool AwaitMusic() {
        const std::int64_t endUs = g_get_monotonic_time() + kMusicMs * 1000;
        const auto isDecided = [this] {
            const Playback& last = m_log.First()->playbacks.back();
            return last.outcome != Playback::Outcome::kCommandSent;
        };
        while (!isDecided() && g_get_monotonic_time() < endUs && !m_log.IsOver()) {
            if (IsPlaying()) {
                return true;
            }
            m_log.Look(kLookMs);
        }
        return isDecided() && m_log.First()->Outcome() == Verdict::kPlays;
    }

    static constexpr const char* kOtherLog =
        "; with --log FILE, name the file that holds the service's standard error";

    std::string m_name;
    Console& m_console;
    LiveLog m_log;
};

}  // namespace

ExitCode WakeAndWait(const LogSource& log, Console& console) {
    return Attempt(log, console).Run();
}

}  // namespace Tvctl
