// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/AttemptRules.h"

#include <cstring>
#include <utility>

#include "platform/bluetooth.h"
#include "platform/system_log.h"
#include "tests/memory_bus/VirtualTime.h"

namespace {

constexpr int kWindowMs = 10000;
constexpr int kScanMs = 5000;
constexpr int kPlayAfterMs = 3000;
// How much later things come when the store is locked, and else.
constexpr int kHeldUpMs = 2500;
constexpr int kPromptMs = 5;

bool Holds(const std::string& line, const char* text) {
    return line.find(text) != std::string::npos;
}

}  // namespace

void AttemptRules::OnLog(int priority, const char* format,
                         const std::function<std::string()>& text) {
    static const std::map<std::string, Handler> kHandlers = {
        {"%s recieved", &AttemptRules::OnSignalLine},
        {"SetWakupTime for btautoconnect", &AttemptRules::OnWindowLine},
        {"Turn On TV : %d", &AttemptRules::OnWindowChange},
        {"Bluetooth is off: %s", &AttemptRules::OnOffLine},
        {"Start ZEMI bluetooth auto connection", &AttemptRules::OnStartLine},
        {"auto connection list is empty", &AttemptRules::OnEmptyLine},
        {"Not supported condition", &AttemptRules::OnRefusalLine},
        {"Start LE scan : %s", &AttemptRules::OnScanLine},
        {"failed bt_adapter_le_start_scan: %s ", &AttemptRules::OnNoScanLine},
        {"Stop Le Scan", &AttemptRules::OnStopLine},
        {"Found %s in list", &AttemptRules::OnFoundLine},
        {"No found mobile. Try to connect mobiles in list sequentially", &AttemptRules::OnWalkLine},
        {"Try to connect device", &AttemptRules::OnNextLine},
        {"No more device to try connect", &AttemptRules::OnEndLine},
        {"Not bonded device", &AttemptRules::OnUnbondedLine},
        {"Try to connect %s", &AttemptRules::OnTryLine},
        {"Connect Fail", &AttemptRules::OnFailLine},
        {"fail to get playing status", &AttemptRules::OnNoPlayerLine},
        {"already playing", &AttemptRules::OnPlayingLine},
        {"send play cmd to bmplayer", &AttemptRules::OnPlayLine},
    };
    const auto [known, isNew] = m_handlers.try_emplace(format);
    if (isNew) {
        const char* message = std::strstr(format, " > ");
        const auto handler = kHandlers.find(message == nullptr ? format : message + 3);
        known->second = handler == kHandlers.end() ? nullptr : handler->second;
    }
    // A window that somebody asks about does not change.
    if (known->second != nullptr &&
        (known->second != &AttemptRules::OnWindowChange || priority == DLOG_DEBUG)) {
        (this->*known->second)(text());
    }
}

bool AttemptRules::IsAfter(gint64 beginMs, int ms) const {
    const gint64 passedMs = VirtualTime::NowMs() - beginMs;
    return passedMs >= ms && passedMs <= ms + (isHeldUp() ? kHeldUpMs : kPromptMs);
}

void AttemptRules::OnSignalLine(const std::string& line) {
    Settle(Owed::kNothing, "a signal");
    CheckWakeUp();
    if (Holds(line, "PrePareAndDoAutoConnect")) {
        m_wakeUp.emplace();
        m_wakeUp->isGood = isWakeUpGood();
        const std::optional<bool> ambient = isAmbient();
        Expect(
            !ambient || !m_wakeUp->isGood || isDoctorContent() == (*ambient && *m_wakeUp->isGood),
            "the doctor says something else of the TV's state");
    }
}

void AttemptRules::OnWindowLine(const std::string& /*line*/) {
    m_wakeUp->hasWindow = true;
}

void AttemptRules::OnWindowChange(const std::string& line) {
    if (Holds(line, "TV : 1")) {
        m_windowMs = VirtualTime::NowMs();
        return;
    }
    Expect(m_windowMs != kNever && IsAfter(m_windowMs, kWindowMs),
           "the wake-up window does not last 10 s from the last wake-up");
    m_windowMs = kNever;
}

void AttemptRules::OnOffLine(const std::string& /*line*/) {
    if (m_wakeUp) {
        m_wakeUp->isOff = true;
    }
}

void AttemptRules::OnStartLine(const std::string& /*line*/) {
    m_wakeUp->isStarted = true;
    m_isAttempt = true;
    m_isConnecting = false;
    m_hasFound = false;
    m_asked.clear();
}

void AttemptRules::CheckWakeUp() {
    if (m_wakeUp && m_wakeUp->isGood) {
        const bool isGood = *m_wakeUp->isGood;
        Expect(m_wakeUp->hasWindow == isGood, "the wake-up window is not as the TV's state says");
        Expect(m_wakeUp->isStarted == (isGood && !m_wakeUp->isOff),
               "whether an attempt begins is not as the TV's state says");
    }
    Expect(!m_isAttempt, "an attempt comes to nothing");
    m_wakeUp.reset();
}

void AttemptRules::OnEmptyLine(const std::string& /*line*/) {
    Expect(m_phones.empty(), "the list is said to be empty");
    m_isAttempt = false;
}

// At the beginning of an attempt, or of each request.
void AttemptRules::OnRefusalLine(const std::string& /*line*/) {
    Expect(!isAmbient().value_or(false), "refused although the ambient picture shows");
    Expect(m_isAttempt || m_owed == Owed::kOutcome, "nothing is there to be refused");
    m_isAttempt = false;
    m_isConnecting = false;
    m_isWalk = false;
    m_owed = Owed::kNothing;
}

void AttemptRules::OnScanLine(const std::string& /*line*/) {
    Expect(m_scanResult == BT_ERROR_NONE || m_scanResult == BT_ERROR_NOW_IN_PROGRESS,
           "a scan that did not start is waited for");
    Expect(m_isAttempt && !m_phones.empty() && isAmbient().value_or(true),
           "a scan that the TV's state forbids");
    m_isAttempt = false;
    m_scanMs = VirtualTime::NowMs();
}

void AttemptRules::OnNoScanLine(const std::string& /*line*/) {
    Expect(m_scanResult != BT_ERROR_NONE && m_scanResult != BT_ERROR_NOW_IN_PROGRESS,
           "a scan that runs counts as failed");
    m_isAttempt = false;
    m_scanMs = kNever;
}

void AttemptRules::OnStopLine(const std::string& /*line*/) {
    Expect(m_scanMs != kNever, "the stop of no scan");
    Expect(m_hasFound || IsAfter(m_scanMs, kScanMs), "the scan does not last 5 s");
    m_scanMs = kNever;
    m_stopMs = VirtualTime::NowMs();
    m_owed = m_hasFound ? Owed::kOutcome : Owed::kWalk;
}

void AttemptRules::OnFoundLine(const std::string& line) {
    const std::string address = line.substr(line.find("Found ") + 6, 17);
    Expect(m_heard.count(address) != 0, address + " was found, but not heard");
    Expect(!m_hasFound && m_scanMs != kNever, address + " was found without a scan, or twice");
    m_isWalk = false;
    m_hasFound = true;
}

void AttemptRules::OnWalkLine(const std::string& /*line*/) {
    Settle(Owed::kWalk, "the way through the list");
    m_position = 0;
    m_owed = Owed::kNext;
}

void AttemptRules::OnNextLine(const std::string& /*line*/) {
    Settle(Owed::kNext, "the next phone");
    ++m_position;
    m_isWalk = true;
    m_owed = Owed::kOutcome;
}

void AttemptRules::OnEndLine(const std::string& /*line*/) {
    Settle(Owed::kNext, "the end of the list");
    Expect(m_position >= m_phones.size(), "the list ended before its last phone");
    m_position = 0;
    m_isConnecting = false;
}

void AttemptRules::OnUnbondedLine(const std::string& /*line*/) {
    Settle(Owed::kOutcome, "a phone without a bond");
    m_isConnecting = false;
    // After a match nobody else is tried.
    m_owed = std::exchange(m_isWalk, false) ? Owed::kNext : Owed::kNothing;
}

void AttemptRules::OnTryLine(const std::string& line) {
    Settle(Owed::kOutcome, "a request");
    Expect(isAmbient().value_or(true), "a phone is connected without the ambient picture");
    m_isConnecting = true;
    m_asked = line.substr(line.size() - 17);
    m_owed = Owed::kRequest;
    if (std::exchange(m_isWalk, false)) {
        Expect(
            m_position >= 1 && m_position <= m_phones.size() && m_phones[m_position - 1] == m_asked,
            m_asked + " is asked for, which is not the next phone of the list");
    }
}

void AttemptRules::OnConnectAsked(const std::string& address) {
    Settle(Owed::kRequest, "a request");
    Expect(address == m_asked, address + " is asked for instead of " + m_asked);
}

void AttemptRules::OnConnectionEvent(int result, const std::string& address) {
    Settle(Owed::kNothing, "an event");
    if (result != BT_ERROR_NONE) {
        m_owed = m_isConnecting ? Owed::kFailure : Owed::kNothing;
        return;
    }
    m_isConnecting = false;
    if (address == m_asked) {
        m_connected = address;
        m_successMs.push_back(VirtualTime::NowMs());
    }
    m_asked.clear();
}

void AttemptRules::OnFailLine(const std::string& /*line*/) {
    Settle(Owed::kFailure, "a failure");
    m_owed = Owed::kNext;
}

void AttemptRules::TakeCheck() {
    Expect(!m_successMs.empty() && IsAfter(m_successMs.front(), kPlayAfterMs),
           "the player is asked for without a success, or not 3 s after it");
    m_successMs.pop_front();
}

void AttemptRules::OnNoPlayerLine(const std::string& /*line*/) {
    TakeCheck();
}

void AttemptRules::OnPlayingLine(const std::string& /*line*/) {
    TakeCheck();
    Expect(isPlaying(m_connected).value_or(true), m_connected + " does not play");
}

void AttemptRules::OnPlayLine(const std::string& /*line*/) {
    TakeCheck();
    Expect(!isPlaying(m_connected).value_or(false),
           m_connected + " is told to play while it plays");
    m_told = m_connected;
}

// Nothing else was owed.
void AttemptRules::Settle(Owed owed, const char* what) {
    static const std::map<Owed, const char*> kNames = {
        {Owed::kNothing, "nothing"},     {Owed::kWalk, "the way through the list"},
        {Owed::kNext, "the next phone"}, {Owed::kOutcome, "a request, or why not"},
        {Owed::kRequest, "the request"}, {Owed::kFailure, "what follows from a failure"}};
    Expect(m_owed == owed, std::string(what) + " came, due was: " + kNames.at(m_owed));
    m_owed = Owed::kNothing;
}

void AttemptRules::CheckRest() {
    Settle(Owed::kNothing, "rest");
    CheckWakeUp();
    Expect(m_windowMs == kNever, "the wake-up window stays open");
    Expect(m_scanMs == kNever, "the scan lasts for ever");
    Expect(m_successMs.empty(), "nobody asked whether the phone plays");
}
