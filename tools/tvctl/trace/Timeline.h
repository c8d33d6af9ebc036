// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    // What a line means, or the whole message, then each text that it carries.
    using Texts = std::vector<std::string>;
    struct KnownLine {
        const char* file;      // "" for the platform, which names none
        const char* function;  // "" for any
        const char* message;   // '*' stands for a text that the line carries
        void (Timeline::*handle)(const Texts& texts);
        const char* meaning = "";  // in an operator's words
    };
    // Nothing for a line that the timeline has no use for, as most.
    [[nodiscard]] static const KnownLine* Recognise(const LogRecord& record, Texts& texts);
    static const KnownLine kLines[];

    void OnServiceStarted(const Texts& texts);
    void OnWakeUp(const Texts& texts);
    void OnBluetooth(const Texts& texts);  // something befell the daemon or the adapter

    void OnRefused(const Texts& texts);      // a condition does not hold; why
    void OnReasonOrKey(const Texts& texts);  // the wake-up reason, or the blocking key, forbids
    void OnBlockingKey(const Texts& texts);  // the key's value
    void OnAmbient(const Texts& texts);      // its value
    void OnWindowOpened(const Texts& texts);
    void OnWindowClosed(const Texts& texts);
    void OnAttemptStarted(const Texts& texts);

    void OnPhones(const Texts& texts);  // the registered phones, each followed by ", "
    void OnScanStarted(const Texts& texts);
    void OnScanRefused(const Texts& texts);  // the result's name
    void OnScanFailed(const Texts& texts);   // the adapter, why
    void OnScanStopped(const Texts& texts);
    void OnListBegins(const Texts& texts);
    void OnAdvertisement(const Texts& texts);  // the address that would be in it
    void OnShortAdvertisement(const Texts& texts);
    void OnPhoneHeard(const Texts& texts);  // address

    void OnNextOfList(const Texts& texts);
    void OnListEnded(const Texts& texts);
    void OnNotBonded(const Texts& texts);
    void OnConnecting(const Texts& texts);     // address
    void OnNotConnected(const Texts& texts);   // address, why
    void OnConnectResult(const Texts& texts);  // result code, address
    void OnDisconnected(const Texts& texts);   // result code, address

    void OnPlayerUnknown(const Texts& texts);  // the device's path
    void OnPlaysAlready(const Texts& texts);
    void OnPlaySent(const Texts& texts);
    void OnPlayNotSent(const Texts& texts);
    void OnLaunchFailed(const Texts& texts);  // why, where the line says it

    void AdvanceClock(std::int64_t timeUs);
    void Refuse(const std::string& text);
    void EndScan(Scan::End how, const std::string& reason = "");
    void AddConnection(const std::string& address, Connection::Result result);
    void OnConnectedByItself(const std::string& address);
    void EndPlayback(Playback::Outcome outcome, const std::string& reason = "");

    WakeUp& Current() { return m_wakeUps.back(); }
    [[nodiscard]] bool IsInWindow();
    void AddRemark(const std::string& text);
    // The time of the line being added in a wake-up; it is the wake-up's last so far.
    double Touch(WakeUp& wakeUp) const;
    double Touch() { return Touch(Current()); }
    [[nodiscard]] double TimeIn(const WakeUp& wakeUp) const;
    WakeUp* FindConnecting(const std::string& address);

    std::vector<WakeUp> m_wakeUps;
    bool m_isClosed = true;  // nothing more belongs to the last of them
    std::string m_when;      // the time of the line being added, as the log has it
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
