// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/Timeline.h"

#include <glib.h>

#include <algorithm>
#include <utility>

namespace Tvctl {

namespace {

// Nothing that the service waits for takes longer, so a longer step is the clock that was set or a
// part of the log that is missing.
constexpr std::int64_t kLongestStepUs = 60000000;
// A longer pause is shown as this one, so that no clock of a broken log makes the sum overflow.
constexpr std::int64_t kLongestPauseUs = std::int64_t{366} * 24 * 3600 * G_USEC_PER_SEC;
// What comes so long after everything ended is not the wake-up's any more.
constexpr double kAfterglowSeconds = 30;

}  // namespace

void Timeline::Add(const LogRecord& record) {
    const auto line = Recognise(record);
    if (!line) {
        return;
    }
    AdvanceClock(record);
    m_isClosed = m_isClosed || (!Current().IsOpen() && Now() > Current().end + kAfterglowSeconds);
    if (line->event == LogEvent::kWakeUp) {
        BeginWakeUp(record);
        return;
    }
    if (line->event == LogEvent::kServiceStarted) {
        OnServiceStarted();
        return;
    }
    if (!m_isClosed) {
        Handle(*line, record);
    }
}

std::vector<WakeUp> Timeline::Finish() {
    std::vector<WakeUp> wakeUps;
    for (Begun& begun : m_wakeUps) {
        WakeUp& wakeUp = begun.wakeUp;
        if (wakeUp.window && !wakeUp.isStarted && wakeUp.refusals.empty()) {
            // The service says nothing here: it opens the window and goes on with Bluetooth alone.
            wakeUp.refusals.push_back({wakeUp.window->begin, "Bluetooth is off"});
        }
        wakeUps.push_back(std::move(wakeUp));
    }
    m_wakeUps.clear();
    return wakeUps;
}

// A step backwards or a long one while something is awaited counts as none.
void Timeline::AdvanceClock(const LogRecord& record) {
    const std::int64_t step = m_lastUs ? std::min(record.timeUs - *m_lastUs, kLongestPauseUs) : 0;
    m_lastUs = record.timeUs;
    const bool isAwaited = !m_isClosed && Current().IsOpen();
    if (step >= 0 && (step <= kLongestStepUs || !isAwaited)) {
        m_clockUs += step;
        return;
    }
    if (!m_isClosed) {
        const double seconds = static_cast<double>(step) / G_USEC_PER_SEC;
        Current().remarks.push_back(
            {Touch(), step < 0 ? "the log's clock steps back by " + Seconds(-seconds)
                               : "the log has a gap of " + Seconds(seconds)});
    }
}

double Timeline::Now() const {
    return static_cast<double>(m_clockUs - m_wakeUps.back().beginUs) / G_USEC_PER_SEC;
}

// The end of the window is a line for debugging, which a log may lack.
bool Timeline::IsInWindow() {
    const auto& window = Current().window;
    return window && !window->end && Now() <= window->begin + kWindowSeconds;
}

double Timeline::Touch(Begun& begun) const {
    const double now = static_cast<double>(m_clockUs - begun.beginUs) / G_USEC_PER_SEC;
    begun.wakeUp.end = std::max(begun.wakeUp.end, now);
    return now;
}

void Timeline::BeginWakeUp(const LogRecord& record) {
    if (!m_isClosed) {
        if (IsInWindow() || Current().IsOpen()) {
            Current().remarks.push_back({Touch(), "the next wake-up came"});
        }
        if (IsInWindow()) {
            Current().window->end = Touch();
        }
        EndScan(Scan::End::kTakenOver, "");
    }
    m_wakeUps.push_back({{}, m_clockUs});
    Current().when = record.when;
    m_isClosed = false;
    m_ambient.clear();
    m_isKeyBlocking.reset();
}

// The service has no memory of what it did before.
void Timeline::OnServiceStarted() {
    if (!m_isClosed && (IsInWindow() || Current().IsOpen())) {
        Current().remarks.push_back({Touch(), "the service was started anew"});
    }
    m_isClosed = true;
    m_position = 0;
}

void Timeline::Handle(const RecognisedLine& line, const LogRecord& record) {
    if (line.event == LogEvent::kBluetooth) {
        Current().remarks.push_back({Touch(), record.message});
        return;
    }
    static_cast<void>(OnCondition(line) || OnScan(line) || OnAdvertisement(line) ||
                      OnConnection(line) || OnList(line) || OnPlayback(line));
}

bool Timeline::OnCondition(const RecognisedLine& line) {
    switch (line.event) {
        case LogEvent::kRefused:
            Refuse(line.values.empty() ? line.meaning : line.meaning + ": " + line.values[0]);
            return true;
        case LogEvent::kReasonOrKey:
            Refuse(!m_isKeyBlocking   ? "the wake-up reason or the blocking key forbids it"
                   : *m_isKeyBlocking ? "the key memory/bluetooth_nirvoui/musictvfail forbids it"
                                      : "the wake-up reason forbids it");
            return true;
        case LogEvent::kBlockingKey:
            m_isKeyBlocking = line.values[0] == "1";
            return true;
        case LogEvent::kAmbient:
            m_ambient = (line.meaning == "mode" ? "" : m_ambient + ", ") + line.meaning + " " +
                        line.values[0];
            return true;
        case LogEvent::kWindowOpened:
            Current().window = Window{Touch(), std::nullopt};
            return true;
        case LogEvent::kWindowClosed:
            if (Current().window && !Current().window->end) {
                Current().window->end = Touch();
            }
            return true;
        case LogEvent::kAttemptStarted:
            Touch();
            Current().isStarted = true;
            return true;
        default:
            return false;
    }
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

bool Timeline::OnScan(const RecognisedLine& line) {
    switch (line.event) {
        case LogEvent::kPhones:
            SetPhones(line.values[0]);
            return true;
        case LogEvent::kScanStarted:
            Current().scans.push_back({Touch(), {}, Scan::End::kUnknown, ""});
            return true;
        case LogEvent::kScanRefused:
            Current().scans.push_back({Touch(), {}, Scan::End::kUnknown, ""});
            EndScan(Scan::End::kFailed, line.values[0]);
            return true;
        case LogEvent::kScanFailed:
            EndScan(Scan::End::kFailed, line.values[1]);
            return true;
        case LogEvent::kScanStopped:
            EndScan(Current().heard.empty() ? Scan::End::kTimer : Scan::End::kMatch, "");
            return true;
        case LogEvent::kNobodyHeard:
            m_position = 0;
            return true;
        default:
            return false;
    }
}

void Timeline::SetPhones(const std::string& text) {
    std::vector<std::string>& phones = Current().phones;
    phones.clear();
    std::size_t begin = 0;
    for (std::size_t end = text.find(", "); end != std::string::npos;
         end = text.find(", ", begin)) {
        phones.push_back(text.substr(begin, end - begin));
        begin = end + 2;
    }
}

void Timeline::EndScan(Scan::End how, const std::string& reason) {
    std::vector<Scan>& scans = Current().scans;
    if (!scans.empty() && !scans.back().end) {
        scans.back().end = Touch();
        scans.back().how = how;
        scans.back().reason = reason;
    }
}

bool Timeline::OnAdvertisement(const RecognisedLine& line) {
    Strangers& strangers = Current().strangers;
    switch (line.event) {
        case LogEvent::kAdvertisement:
            strangers.times.push_back(Touch());
            strangers.different.insert(line.values[0]);
            return true;
        case LogEvent::kShortAdvertisement:
            strangers.shortTimes.push_back(Touch());
            return true;
        case LogEvent::kPhoneHeard:
            // Its own advertisement was the last that came.
            if (strangers.different.erase(line.values[0]) > 0) {
                strangers.times.pop_back();
            }
            m_candidate = line.values[0];
            Current().heard.push_back({Touch(), m_candidate});
            return true;
        default:
            return false;
    }
}

bool Timeline::OnList(const RecognisedLine& line) {
    const std::vector<std::string>& phones = Current().phones;
    switch (line.event) {
        case LogEvent::kNextOfList:
            m_candidate = m_position && *m_position < phones.size() ? phones[*m_position] : "";
            m_position = m_position ? *m_position + 1 : m_position;
            return true;
        case LogEvent::kListEnded:
            m_position = 0;
            Current().remarks.push_back({Touch(), "no more registered phone to try"});
            return true;
        default:
            return false;
    }
}

}  // namespace Tvctl
