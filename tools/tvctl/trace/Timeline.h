// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/tvctl/trace/LogLines.h"
#include "tools/tvctl/trace/LogReader.h"
#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

// Makes wake-ups out of the lines of the service's log, line by line. What a line belongs to is
// worked out as the service itself behaves: a second wake-up restarts window and scan and forgets
// the playback check, while a connection on its way reports its end all the same.
class Timeline {
public:
    void Add(const LogRecord& record);
    // No more lines come; the wake-ups in the order of their signals.
    [[nodiscard]] std::vector<WakeUp> Finish();

private:
    void AdvanceClock(const LogRecord& record);
    void BeginWakeUp(const LogRecord& record);
    void OnServiceStarted();
    void Handle(const RecognisedLine& line, const LogRecord& record);
    bool OnCondition(const RecognisedLine& line);
    bool OnScan(const RecognisedLine& line);
    bool OnAdvertisement(const RecognisedLine& line);
    bool OnConnection(const RecognisedLine& line);
    bool OnList(const RecognisedLine& line);
    bool OnPlayback(const RecognisedLine& line);

    void Refuse(const std::string& text);
    void SetPhones(const std::string& text);
    void EndScan(Scan::End how, const std::string& reason);
    void OnConnectResult(const std::string& code, const std::string& address);
    void OnConnectedByItself(const std::string& address);
    void OnDisconnected(const std::string& address);
    void EndPlayback(Playback::Outcome outcome, const std::string& reason);
    void OnLaunchFailed(const std::string& reason);

    WakeUp& Current() { return m_wakeUps.back().wakeUp; }
    [[nodiscard]] double Now() const;
    [[nodiscard]] bool IsInWindow();

    // A wake-up and the time of its signal by m_clockUs.
    struct Begun {
        WakeUp wakeUp;
        std::int64_t beginUs = 0;
    };
    // The time of the line being added in a wake-up; it is the wake-up's last so far.
    double Touch(Begun& begun) const;
    double Touch() { return Touch(m_wakeUps.back()); }
    Begun* FindConnecting(const std::string& address);

    std::vector<Begun> m_wakeUps;
    bool m_isClosed = true;  // nothing more belongs to the last of them
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
