// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

// What follows from a wake-up, one thing after the other, as the service's log tells it: the window
// and the scan and how long each lasts, the way through the list, the question whether the phone
// plays. Main loop only.
class AttemptRules {
public:
    // `phones` is the service's list; `onFault` hears of each rule that is broken.
    AttemptRules(const std::vector<std::string>& phones,
                 std::function<void(const std::string&)> onFault)
        : m_phones(phones), m_onFault(std::move(onFault)) {}

    // ---- what the world knows; nothing where the service may not know it yet ----
    // Whether the TV is one that connects phones, and woke for a reason for which it does.
    std::function<std::optional<bool>()> isWakeUpGood;
    // Whether the ambient picture shows.
    std::function<std::optional<bool>()> isAmbient;
    // Whether the service may have to wait for its keys.
    std::function<bool()> isHeldUp;
    // Whether the doctor says that nothing is in the way.
    std::function<bool()> isDoctorContent;
    // Whether the phone that was connected last plays.
    std::function<std::optional<bool>(const std::string& address)> isPlaying;
    // A discovery begins; the radio in use heard that address in an advertisement.
    void OnDiscovery() { m_heard.clear(); }
    void OnHeard(const std::string& address) { m_heard.insert(address); }

    // ---- what the service does ----
    // A line with that format of printf's.
    void OnLog(int priority, const char* format, const std::function<std::string()>& text);
    // The platform was asked for a scan, and answered so.
    void OnScanAsked(int result) { m_scanResult = result; }
    void OnConnectAsked(const std::string& address);
    // Before the service hears of it.
    void OnConnectionEvent(int result, const std::string& address);

    // Whether a phone was recognised in the last scan.
    [[nodiscard]] bool HasFound() const { return m_hasFound; }
    // Whether a scan is wanted.
    [[nodiscard]] bool IsScanning() const { return m_scanMs != kNever; }
    // When the scan was to stop.
    [[nodiscard]] gint64 StoppedMs() const { return m_stopMs; }
    // The phone that is, or was last, told to play.
    [[nodiscard]] const std::string& Told() const { return m_told; }
    // Nothing may be under way any more.
    void CheckRest();

private:
    // What must come next, before anything else happens.
    enum class Owed { kNothing, kWalk, kNext, kOutcome, kRequest, kFailure };
    using Handler = void (AttemptRules::*)(const std::string& line);
    // What came of the last wake-up.
    struct WakeUp {
        std::optional<bool> isGood;
        bool isOff = false;
        bool hasWindow = false;
        bool isStarted = false;
    };
    static constexpr gint64 kNever = -1;

    void OnSignalLine(const std::string& line);
    void OnWindowLine(const std::string& line);
    void OnWindowChange(const std::string& line);
    void OnOffLine(const std::string& line);
    void OnStartLine(const std::string& line);
    void OnEmptyLine(const std::string& line);
    void OnRefusalLine(const std::string& line);
    void OnScanLine(const std::string& line);
    void OnNoScanLine(const std::string& line);
    void OnStopLine(const std::string& line);
    void OnFoundLine(const std::string& line);
    void OnWalkLine(const std::string& line);
    void OnNextLine(const std::string& line);
    void OnEndLine(const std::string& line);
    void OnUnbondedLine(const std::string& line);
    void OnTryLine(const std::string& line);
    void OnFailLine(const std::string& line);
    void OnNoPlayerLine(const std::string& line);
    void OnPlayingLine(const std::string& line);
    void OnPlayLine(const std::string& line);
    // Whether that is so long ago.
    [[nodiscard]] bool IsAfter(gint64 beginMs, int ms) const;
    void TakeCheck();
    void CheckWakeUp();
    void Settle(Owed owed, const char* what);
    void Expect(bool condition, const std::string& fault) {
        if (!condition) {
            m_onFault(fault);
        }
    }

    const std::vector<std::string>& m_phones;
    std::function<void(const std::string&)> m_onFault;
    std::unordered_map<const char*, Handler> m_handlers;
    std::optional<WakeUp> m_wakeUp;
    gint64 m_windowMs = kNever;  // when the window was opened
    bool m_isAttempt = false;    // one begins: what it comes to is not said yet
    int m_scanResult = 0;
    gint64 m_scanMs = kNever;  // when the scan began
    gint64 m_stopMs = 0;
    bool m_hasFound = false;
    std::set<std::string> m_heard;  // in this discovery
    Owed m_owed = Owed::kNothing;
    std::size_t m_position = 0;  // in the list
    bool m_isWalk = false;       // the next request is for the phone before m_position
    bool m_isConnecting = false;
    std::string m_asked;             // since the last success or attempt
    std::string m_connected;         // the last one of those that was
    std::deque<gint64> m_successMs;  // of requests after which nobody asked for the player yet
    std::string m_told;
};
