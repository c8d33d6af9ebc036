// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/Judge.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <regex>
#include <utility>

#include "platform/bluetooth.h"
#include "platform/linux/bluez/Path.h"
#include "platform/system_log.h"
#include "tests/memory_bus/VirtualTime.h"

namespace {

// How long a stop of the scan is waited for.
constexpr int kPatienceMs = 2000;
// An attempt has 10 s, its cancellation 2 s, and before each deadline the bus is asked for 1 s.
constexpr int kLongestRequestMs = 14500;
// Before it: for the end of the one that runs (the bus is asked for 1 s), and for the scan's stop.
constexpr int kLongestWaitMs = 7000;

// What stands in the manual's tables in backticks.
std::set<std::string> ReadRows(const std::string& manual) {
    std::ifstream file(manual);
    std::set<std::string> rows;
    const std::regex quoted("`([^`]*)`");
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, 1, "|") == 0) {
            for (std::sregex_iterator it(line.begin(), line.end(), quoted), end; it != end; ++it) {
                rows.insert((*it)[1]);
            }
        }
    }
    return rows;
}

// Without the place that the service's lines begin with.
std::string WithoutPlace(const std::string& line) {
    const std::size_t end = line.find(" > ");
    return end == std::string::npos ? line : line.substr(end + 3);
}

std::string FirstWord(const std::string& text) {
    return text.substr(0, text.find(' '));
}

}  // namespace

Judge::Judge(const std::string& manual, std::function<void(const std::string&)> onFault)
    : attempt(m_phones, onFault), m_onFault(std::move(onFault)), m_rows(ReadRows(manual)) {}

// Under its format or, when the beginning of the line is an argument, as the line reads.
bool Judge::HasRow(const std::string& format, const std::string& line) const {
    return m_rows.count(format) != 0 ||
           std::any_of(m_rows.begin(), m_rows.end(), [&line](const std::string& row) {
               const std::string beginning = row.substr(0, row.find('%'));
               return beginning.size() > 5 && line.compare(0, beginning.size(), beginning) == 0;
           });
}

Judge::Handler Judge::FindHandler(int priority, const char* format, const std::string& line) {
    static const std::map<std::string, Handler> kHandlers = {
        {"", &Judge::OnListLine},
        {"%s", &Judge::OnTextLine},
        {"soundmirroring device list", &Judge::OnTextLine},
        {"%s enable auto on/off and bt auto connection", &Judge::OnQualifyLine},
        {"device : %s", &Judge::OnListedLine},
        {"%s : %s", &Judge::OnResultLine},
        {"Start LE scan : %s", &Judge::OnScanLine},
        {"%s is not connected: %s", &Judge::OnReasonLine},
    };
    const std::string text = WithoutPlace(format);
    Expect(priority < DLOG_INFO || text.empty() || HasRow(text, WithoutPlace(line)),
           "the manual has no row for the log line '" + text + "'");
    const auto handler = kHandlers.find(text);
    return handler == kHandlers.end() ? nullptr : handler->second;
}

void Judge::OnLog(int priority, const char* format, const std::function<std::string()>& text) {
    const auto [known, isNew] = m_handlers.try_emplace(format);
    if (isNew) {
        known->second = FindHandler(priority, format, text());
    }
    if (known->second != nullptr) {
        (this->*known->second)(WithoutPlace(text()));
    }
    attempt.OnLog(priority, format, text);
}

void Judge::OnListLine(const std::string& /*line*/) {
    m_phones.clear();
}

void Judge::OnTextLine(const std::string& line) {
    m_isListing = line == "after reorder";
    if (m_isListing) {
        m_phones.clear();
    }
}

void Judge::OnListedLine(const std::string& line) {
    if (m_isListing) {
        m_phones.push_back(line.substr(std::strlen("device : ")));
    }
}

void Judge::OnQualifyLine(const std::string& line) {
    m_phones.push_back(FirstWord(line));
}

void Judge::OnResultLine(const std::string& line) {
    m_result = line.substr(line.find(" : ") + 3);
}

void Judge::OnScanLine(const std::string& /*line*/) {
    const auto listed = listedPhones();
    Expect(!listed || m_phones == listed->phones, "the list is not what the keys say");
    Expect(!listed || m_result == listed->masks, "the masks are not those of the list");
}

void Judge::OnReasonLine(const std::string& line) {
    const std::string address = FirstWord(line);
    const auto request = std::find_if(
        m_requests.begin(), m_requests.end(),
        [&](const Request& each) { return each.address == address && each.reasons == 0; });
    Expect(request != m_requests.end(), "a second reason, or one without a request: " + line);
    if (request != m_requests.end()) {
        ++request->reasons;
        request->isToCancel = m_open.count("ConnectProfile") != 0 &&
                              line.find("no success within") != std::string::npos;
    }
}

void Judge::OnConnectAsked(const std::string& address) {
    attempt.OnConnectAsked(address);
    const bool isListed = std::count(m_phones.begin(), m_phones.end(), address) != 0;
    Expect(isListed, address + " is asked for and not in the list");
    m_waitsSinceMs = std::min(m_waitsSinceMs, VirtualTime::NowMs());
    m_requests.push_back({address, VirtualTime::NowMs()});
}

void Judge::OnConnectRefused(const std::string& address, int result) {
    m_requests.pop_back();
    Expect(result == BT_ERROR_NOW_IN_PROGRESS &&
               std::any_of(m_requests.begin(), m_requests.end(),
                           [&address](const Request& each) { return each.address == address; }),
           "the request for " + address + " is refused");
}

void Judge::OnConnectionEvent(int result, bool connected, const std::string& address) {
    if (result == BT_ERROR_NONE && !connected) {
        return;
    }
    // One that another request overtook ends as a disconnection.
    if (connected) {
        attempt.OnConnectionEvent(result, address);
    }
    // The oldest one: a phone may be asked for again while its first request is being given up.
    const auto request =
        std::find_if(m_requests.begin(), m_requests.end(), [&](const Request& each) {
            return each.address == address && (each.reasons != 0) == (result != BT_ERROR_NONE);
        });
    if (request == m_requests.end()) {
        Expect(result == BT_ERROR_NONE, "a failure of " + address + " without request or reason");
        return;
    }
    Expect(VirtualTime::NowMs() - request->askedMs <= kLongestRequestMs,
           "the request for " + address + " took too long");
    Expect(!request->isToCancel, "nobody told bluetoothd to give " + address + " up");
    m_requests.erase(request);
    if (m_requests.empty()) {
        m_waitsSinceMs = kNever;
    }
}

void Judge::OnCall(const MemoryBus::CallInfo& call) {
    if (call.method == "ConnectProfile") {
        CheckConnectCall(call);
    }
    for (Request& request : m_requests) {
        request.isToCancel &= call.method != "Disconnect" || call.path != m_paths[request.address];
    }
    m_open.insert(call.method);
}

void Judge::CheckConnectCall(const MemoryBus::CallInfo& call) {
    Expect(m_open.count("ConnectProfile") == 0, "two connection requests at a time");
    const std::string address = Bluez::AddressOfPath(call.path);
    m_paths[address] = call.path;
    const auto request =
        std::find_if(m_requests.begin(), m_requests.end(),
                     [&address](const Request& each) { return each.address == address; });
    Expect(request != m_requests.end(), "nobody asked for " + address);
    if (request == m_requests.end() || std::exchange(request->isSent, true)) {
        return;
    }
    Expect(isBonded(call.path), call.path + " is not bonded");
    Expect(VirtualTime::NowMs() - request->askedMs <= kLongestWaitMs,
           "the request for " + address + " waited too long for the radio");
    const bool isStopping = m_open.count("StopDiscovery") + m_open.count("StartDiscovery") +
                                m_open.count("SetDiscoveryFilter") !=
                            0;
    // Who waits already when the scan stops once more does not wait longer, nor who overtakes it.
    const gint64 waitedMs =
        VirtualTime::NowMs() - std::min(attempt.StoppedMs(), std::exchange(m_waitsSinceMs, kNever));
    Expect(attempt.IsScanning() || !isStopping || waitedMs >= kPatienceMs,
           "a connection request while the scan is being stopped");
}

void Judge::OnCallOver(const MemoryBus::CallInfo& call) {
    m_open.erase(m_open.find(call.method));
}

void Judge::OnPlay(const std::string& address) {
    Expect(address == attempt.Told(), address + " is told to play, which was not asked for last");
}

void Judge::CheckRest() {
    Expect(m_requests.empty(), "a request without an event");
    Expect(m_open.empty(), "a call without an end");
    attempt.CheckRest();
}
