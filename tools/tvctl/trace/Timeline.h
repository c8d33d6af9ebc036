// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/tvctl/trace/LogRecord.h"
#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

using TakeWakeUp = std::function<void(const WakeUp& wakeUp)>;

// Makes wake-ups out of the lines of the log of one service, line by line. What a line belongs to
// is worked out as the service itself behaves: a second wake-up restarts window and scan and
// forgets the playback check, while a connection on its way reports its end all the same.
class Timeline {
public:
    // `take` gets each wake-up when nothing more of it can come, in the order of their signals.
    explicit Timeline(TakeWakeUp take) : m_take(std::move(take)) {}

    void Add(const LogRecord& record);
    // No more lines come, or not for long.
    void Finish();
    // Those of which more may come, in the order of their signals.
    [[nodiscard]] const std::vector<WakeUp>& Held() const { return m_wakeUps; }

private:
    // What a line means, or the whole message, then each text that it carries.
    using Texts = std::vector<std::string>;
    struct KnownLine {
        const char* file;      // "" for the platform, which names none
        const char* function;  // "" for any
        const char* message;   // '*' stands for a text that the line carries
        void (Timeline::*handle)(const Texts& texts);
        const char* meaning = "";  // in an operator's words
    };
    // nullptr for a line that the timeline does not need, as most are.
    [[nodiscard]] static const KnownLine* Recognise(const LogRecord& record, Texts& texts);
    static const KnownLine kLines[];

    // What each line does. A comment names the texts that it carries.
    void OnServiceStarted(const Texts& texts);
    void OnWakeUp(const Texts& texts);
    // Something happened to the daemon or the adapter.
    void OnBluetooth(const Texts& texts) { AddRemark(texts[0]); }

    // Which condition does not hold, and perhaps why.
    void OnRefused(const Texts& texts);
    void OnReasonOrKey(const Texts& texts);
    // Carries the key's value.
    void OnBlockingKey(const Texts& texts) { m_isKeyBlocking = texts[1] == "1"; }
    // Means what was read, carries its value.
    void OnAmbient(const Texts& texts);
    void OnWindowOpened(const Texts& /*texts*/) { Current().window = Window{Touch(), {}}; }
    void OnWindowClosed(const Texts& texts);
    void OnAttemptStarted(const Texts& texts);

    // Carries the registered phones, each followed by ", ".
    void OnPhones(const Texts& texts);
    void OnScanStarted(const Texts& /*texts*/) {
        Current().scans.push_back({Touch(), {}, Scan::End::kUnknown, ""});
    }
    // Carries the result's name.
    void OnScanRefused(const Texts& texts);
    // Carries the adapter, why.
    void OnScanFailed(const Texts& texts) { EndScan(Scan::End::kFailed, texts.back()); }
    void OnScanStopped(const Texts& /*texts*/) {
        EndScan(Current().heard.empty() ? Scan::End::kTimer : Scan::End::kMatch);
    }
    // Carries the address that would be in it.
    void OnAdvertisement(const Texts& texts);
    void OnShortAdvertisement(const Texts& /*texts*/) {
        Current().strangers.shortTimes.push_back(Touch());
    }
    // Carries the phone's address.
    void OnPhoneHeard(const Texts& texts);

    void OnListBegins(const Texts& /*texts*/) { m_position = 0; }
    void OnNextOfList(const Texts& texts);
    void OnListEnded(const Texts& texts);
    void OnNotBonded(const Texts& texts);
    // Carries the address.
    void OnConnecting(const Texts& texts);
    // Carries the address, why.
    void OnNotConnected(const Texts& texts);
    // Both carry the result's code and the address.
    void OnConnectResult(const Texts& texts);
    void OnDisconnected(const Texts& texts);

    // Means what is not known of the player.
    void OnPlayerUnknown(const Texts& texts) { m_playerFault = texts[0]; }
    void OnPlaysAlready(const Texts& /*texts*/) { EndPlayback(Playback::Outcome::kPlaysAlready); }
    void OnPlaySent(const Texts& /*texts*/) { EndPlayback(Playback::Outcome::kCommandSent); }
    void OnPlayNotSent(const Texts& /*texts*/) {
        EndPlayback(Playback::Outcome::kNotSent, std::exchange(m_playerFault, ""));
    }
    // Carries why, or means it.
    void OnLaunchFailed(const Texts& texts);
    // Of the media player; both carry the phone's address, the second one also why.
    void OnPlays(const Texts& texts) { EndCommand(Playback::Outcome::kPlays, texts[1]); }
    void OnSilent(const Texts& texts);

    void AdvanceClock(std::int64_t timeUs);
    void Refuse(const std::string& text);
    void EndScan(Scan::End how, const std::string& reason = "");
    void AddConnection(const std::string& address, Connection::Result result);
    void OnConnectedByItself(const std::string& address);
    void EndPlayback(Playback::Outcome outcome, const std::string& reason = "");
    // Of a play command, to the phone if one is named.
    void EndCommand(Playback::Outcome outcome, const std::string& address,
                    const std::string& reason = "");
    // Gives up the first of those that are held.
    void Release();
    // Nothing more belongs to any wake-up.
    void Close();

    WakeUp& Current() { return m_wakeUps.back(); }
    [[nodiscard]] bool IsInWindow();
    void AddRemark(const std::string& text) { Current().remarks.push_back({Touch(), text}); }
    // The time of the line being added in a wake-up; it is the wake-up's last so far.
    double Touch(WakeUp& wakeUp) const;
    double Touch() { return Touch(Current()); }
    [[nodiscard]] double TimeIn(const WakeUp& wakeUp) const;
    WakeUp* FindConnecting(const std::string& address);

    TakeWakeUp m_take;
    std::vector<WakeUp> m_wakeUps;
    std::size_t m_begun = 0;              // wake-ups so far
    std::size_t m_lines = 0;              // of the last of them
    const LogRecord* m_record = nullptr;  // the line being added; not owned
    std::optional<std::int64_t> m_lastUs;
    std::int64_t m_clockUs = 0;  // the log's time without the jumps of the clock
    std::optional<bool> m_isKeyBlocking;
    std::string m_ambient;
    std::string m_candidate;                // the phone that the service turns to next
    std::optional<std::size_t> m_position;  // of the next phone in the list
    std::string m_failure;                  // why the platform did not connect m_failedAddress
    std::string m_failedAddress;
    std::string m_playerFault;
};

}  // namespace Tvctl
