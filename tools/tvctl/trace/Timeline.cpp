// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/Timeline.h"

#include <glib.h>

#include <algorithm>

#include "common/CHandle.h"

namespace Tvctl {

namespace {

// Nothing that the service waits for takes longer, so a longer step is the clock that was set or a
// part of the log that is missing.
constexpr std::int64_t kLongestStepUs = 60000000;
// A longer pause is shown as this one, so that no clock of a broken log makes the sum overflow.
constexpr std::int64_t kLongestPauseUs = std::int64_t{366} * 24 * 3600 * G_USEC_PER_SEC;
// What comes so long after everything ended no longer belongs to the wake-up.
constexpr double kAfterglowSeconds = 30;
// How many wake-ups, connections or checks may be on their way at once; any more are a broken log.
constexpr std::size_t kMostAtOnce = 8;
// Of a wake-up. The service hears some hundred advertisements in a second at most.
constexpr std::size_t kMostLines = 100000;

// Where the last of the items begin, those among which something may still be on its way.
template <typename Item>
auto RecentOf(std::vector<Item>& items) {
    return items.end() - static_cast<std::ptrdiff_t>(std::min(items.size(), kMostAtOnce));
}

}  // namespace

void Timeline::Add(const LogRecord& record) {
    Texts texts;
    const KnownLine* const line = Recognise(record, texts);
    if (line == nullptr) {
        return;
    }
    AdvanceClock(record.timeUs);
    m_record = &record;
    if (!m_wakeUps.empty() && !Current().IsOpen() &&
        TimeIn(Current()) > Current().end + kAfterglowSeconds) {
        Close();
    }
    if (!m_wakeUps.empty() || line->handle == &Timeline::OnWakeUp ||
        line->handle == &Timeline::OnServiceStarted) {
        (this->*line->handle)(texts);
    }
    if (!m_wakeUps.empty() && ++m_lines > kMostLines) {
        AddRemark("the log has more lines of this wake-up, which are left out");
        Close();
    }
}

void Timeline::Finish() {
    Close();
    m_lastUs.reset();
}

void Timeline::Close() {
    while (!m_wakeUps.empty()) {
        Release();
    }
}

void Timeline::Release() {
    WakeUp& wakeUp = m_wakeUps.front();
    if (wakeUp.window && !wakeUp.isStarted && wakeUp.refusals.empty()) {
        // The service logs nothing here: it opened the window, then found Bluetooth off.
        wakeUp.refusals.push_back({wakeUp.window->begin, "Bluetooth is off"});
    }
    m_take(wakeUp);
    m_wakeUps.erase(m_wakeUps.begin());
}

// A step backwards or a long one while something is awaited counts as none.
void Timeline::AdvanceClock(std::int64_t timeUs) {
    const std::int64_t step = m_lastUs ? std::min(timeUs - *m_lastUs, kLongestPauseUs) : 0;
    m_lastUs = timeUs;
    const bool isAwaited = !m_wakeUps.empty() && Current().IsOpen();
    if (step >= 0 && (step <= kLongestStepUs || !isAwaited)) {
        m_clockUs += step;
        return;
    }
    if (!m_wakeUps.empty()) {
        const double seconds = static_cast<double>(step) / G_USEC_PER_SEC;
        AddRemark(step < 0 ? "the log's clock steps back by " + Seconds(-seconds)
                           : "the log has a gap of " + Seconds(seconds));
    }
}

double Timeline::TimeIn(const WakeUp& wakeUp) const {
    return static_cast<double>(m_clockUs - wakeUp.beginUs) / G_USEC_PER_SEC;
}

double Timeline::Touch(WakeUp& wakeUp) const {
    const double now = TimeIn(wakeUp);
    wakeUp.end = std::max(wakeUp.end, now);
    return now;
}

// The end of the window is a line for debugging, which a log may lack.
bool Timeline::IsInWindow() {
    const auto& window = Current().window;
    return window && !window->end && TimeIn(Current()) <= window->begin + kWindowSeconds;
}

void Timeline::OnWakeUp(const Texts& /*texts*/) {
    if (!m_wakeUps.empty()) {
        if (IsInWindow() || Current().IsOpen()) {
            AddRemark("the next wake-up came");
        }
        if (IsInWindow()) {
            Current().window->end = Touch();
        }
        EndScan(Scan::End::kTakenOver);
    }
    if (m_wakeUps.size() == kMostAtOnce) {
        Release();
    }
    m_wakeUps.emplace_back();
    Current().number = ++m_begun;
    Current().beginUs = m_clockUs;
    Current().SetOrigin(*m_record);
    m_lines = 0;
    m_ambient.clear();
    m_isKeyBlocking.reset();
}

// The service has no memory of what it did before.
void Timeline::OnServiceStarted(const Texts& /*texts*/) {
    if (!m_wakeUps.empty() && (IsInWindow() || Current().IsOpen())) {
        AddRemark("the service was started again");
    }
    Close();
    m_position = 0;
}

void Timeline::OnRefused(const Texts& texts) {
    Refuse(texts.size() == 1 ? texts[0] : texts[0] + ": " + texts[1]);
}

void Timeline::OnReasonOrKey(const Texts& /*texts*/) {
    Refuse(!m_isKeyBlocking   ? "the wake-up reason or the blocking key forbids it"
           : *m_isKeyBlocking ? "the key memory/bluetooth_nirvoui/musictvfail forbids it"
                              : "the wake-up reason forbids it");
}

void Timeline::OnAmbient(const Texts& texts) {
    m_ambient = (texts[0] == "mode" ? "" : m_ambient + ", ") + texts[0] + " " + texts[1];
}

// The service checks some conditions twice.
void Timeline::Refuse(const std::string& text) {
    const bool isAmbient = text.find("ambient") != std::string::npos && !m_ambient.empty();
    const std::string whole = isAmbient ? text + " (" + m_ambient + ")" : text;
    std::vector<Remark>& refusals = Current().refusals;
    if (refusals.empty() || refusals.back().text != whole) {
        refusals.push_back({Touch(), whole});
    }
}

void Timeline::OnWindowClosed(const Texts& /*texts*/) {
    if (Current().window && !Current().window->end) {
        Current().window->end = Touch();
    }
}

void Timeline::OnAttemptStarted(const Texts& /*texts*/) {
    Touch();
    Current().isStarted = true;
}

void Timeline::OnPhones(const Texts& texts) {
    const GStrvPtr phones(g_strsplit(texts[1].c_str(), ", ", -1));
    Current().phones.clear();
    for (char** phone = phones.get(); *phone != nullptr && phone[1] != nullptr; ++phone) {
        Current().phones.emplace_back(*phone);
    }
}

void Timeline::OnScanRefused(const Texts& texts) {
    OnScanStarted(texts);
    OnScanFailed(texts);
}

void Timeline::EndScan(Scan::End how, const std::string& reason) {
    std::vector<Scan>& scans = Current().scans;
    if (!scans.empty() && !scans.back().end) {
        scans.back().end = Touch();
        scans.back().how = how;
        scans.back().reason = reason;
    }
}

void Timeline::OnAdvertisement(const Texts& texts) {
    Current().strangers.times.push_back(Touch());
    Current().strangers.different.insert(texts[1]);
}

void Timeline::OnPhoneHeard(const Texts& texts) {
    // Its own advertisement was the last that came.
    if (Current().strangers.different.erase(texts[1]) > 0) {
        Current().strangers.times.pop_back();
    }
    m_candidate = texts[1];
    Current().heard.push_back({Touch(), m_candidate});
}

void Timeline::OnNextOfList(const Texts& /*texts*/) {
    const std::vector<std::string>& phones = Current().phones;
    m_candidate = m_position && *m_position < phones.size() ? phones[*m_position] : "";
    m_position = m_position ? *m_position + 1 : m_position;
}

void Timeline::OnListEnded(const Texts& /*texts*/) {
    m_position = 0;
    AddRemark("no more registered phone to try");
}

void Timeline::OnNotBonded(const Texts& /*texts*/) {
    // The service logs the same when it could not ask.
    const bool isFailure = !m_candidate.empty() && m_failedAddress == m_candidate;
    AddConnection(m_candidate,
                  isFailure ? Connection::Result::kFailed : Connection::Result::kNotBonded);
    Current().connections.back().reason = isFailure ? m_failure : "";
    m_failedAddress.clear();
}

void Timeline::OnConnecting(const Texts& texts) {
    AddConnection(texts[1], Connection::Result::kUnknown);
    Current().connections.back().end.reset();
}

void Timeline::AddConnection(const std::string& address, Connection::Result result) {
    const double now = Touch();
    Current().connections.push_back({address, now, now, result, "", "", {}});
}

void Timeline::OnNotConnected(const Texts& texts) {
    m_failedAddress = texts[1];
    m_failure = texts[2];
}

WakeUp* Timeline::FindConnecting(const std::string& address) {
    WakeUp* latest = nullptr;
    for (WakeUp& wakeUp : m_wakeUps) {
        const std::vector<Connection>& connections = wakeUp.connections;
        if (!connections.empty() && !connections.back().end &&
            connections.back().address == address) {
            latest = &wakeUp;
        }
    }
    return latest;
}

void Timeline::OnConnectResult(const Texts& texts) {
    const std::string& code = texts[1];
    const std::string& address = texts[2];
    const bool isConnected = code == "0";
    WakeUp* const wakeUp = FindConnecting(address);
    if (wakeUp == nullptr) {
        if (isConnected) {
            OnConnectedByItself(address);
        }
        return;
    }
    Connection& connection = wakeUp->connections.back();
    connection.end = Touch(*wakeUp);
    connection.result = isConnected ? Connection::Result::kConnected : Connection::Result::kFailed;
    if (!isConnected) {
        connection.code = code;
        connection.reason = m_failedAddress == address ? m_failure : "";
    } else if (wakeUp == &Current()) {
        wakeUp->playbacks.push_back(
            {address, *connection.end, {}, Playback::Outcome::kUnknown, ""});
    }
    m_failedAddress.clear();
    m_playerFault.clear();
}

// The service has a phone play that it once asked for, however late it comes.
void Timeline::OnConnectedByItself(const std::string& address) {
    const std::vector<Connection>& connections = Current().connections;
    const bool wasAskedFor = !connections.empty() && connections.back().address == address &&
                             connections.back().result == Connection::Result::kFailed;
    AddConnection(address, Connection::Result::kByItself);
    if (wasAskedFor) {
        Current().playbacks.push_back({address, Touch(), {}, Playback::Outcome::kUnknown, ""});
    }
}

void Timeline::OnDisconnected(const Texts& texts) {
    std::vector<Connection>& connections = Current().connections;
    for (auto connection = RecentOf(connections); connection != connections.end(); ++connection) {
        if (connection->address == texts[2] && connection->WasMade() && !connection->lost) {
            connection->lost = Touch();
        }
    }
}

// The check belongs to the oldest connection that waits for one: its timer outlives a wake-up.
void Timeline::EndPlayback(Playback::Outcome outcome, const std::string& reason) {
    for (WakeUp& wakeUp : m_wakeUps) {
        std::vector<Playback>& playbacks = wakeUp.playbacks;
        const auto awaited = std::find_if(RecentOf(playbacks), playbacks.end(),
                                          [](const Playback& playback) { return !playback.end; });
        if (awaited == playbacks.end()) {
            continue;
        }
        awaited->end = Touch(wakeUp);
        awaited->outcome = outcome;
        awaited->reason = reason;
        if (outcome == Playback::Outcome::kNotSent && reason.empty()) {
            awaited->reason = wakeUp.IsLost(awaited->address)
                                  ? "the phone had left"
                                  : "the state of its player cannot be read";
        }
        return;
    }
}

// It comes after the command, a moment or a timeout later, and may be reported twice.
void Timeline::OnLaunchFailed(const Texts& texts) {
    EndCommand(Playback::Outcome::kLaunchFailed, "", texts.back());
}

void Timeline::OnSilent(const Texts& texts) {
    EndCommand(Playback::Outcome::kSilent, texts.size() > 2 ? texts[1] : "", texts.back());
}

// Only the last connection's command counts; the player asks one phone at a time.
void Timeline::EndCommand(Playback::Outcome outcome, const std::string& address,
                          const std::string& reason) {
    for (auto wakeUp = m_wakeUps.rbegin(); wakeUp != m_wakeUps.rend(); ++wakeUp) {
        if (wakeUp->playbacks.empty()) {
            continue;
        }
        Playback& last = wakeUp->playbacks.back();
        if (last.outcome == Playback::Outcome::kCommandSent &&
            (address.empty() || address == last.address)) {
            last.outcome = outcome;
            last.reason = reason;
            last.answered = Touch(*wakeUp);
        }
        return;
    }
}

}  // namespace Tvctl
