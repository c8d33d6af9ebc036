// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/memory_bus/MemoryBus.h"
#include "tests/simulation/AttemptRules.h"

// Watches the service from outside, on the bus, at the platform's interface and in the log, and
// says what it must not do. Main loop only.
class Judge {
public:
    // `manual` is the file that explains the log; `onFault` hears of each rule that is broken.
    Judge(const std::string& manual, std::function<void(const std::string&)> onFault);

    // What follows from a wake-up.
    AttemptRules attempt;

    // ---- what the world knows ----
    std::function<bool(const std::string& path)> isBonded;
    // The phones that qualify, in order, as the keys say, and the text of their masks; nothing
    // while the service may not know.
    struct List {
        std::vector<std::string> phones;
        std::string masks;
    };
    std::function<std::optional<List>()> listedPhones;
    // The object path at which the phone was tried last.
    [[nodiscard]] std::string PathOf(const std::string& address) { return m_paths[address]; }

    // ---- what the service does ----
    // `format` is printf's and lives for ever; `text` makes the line.
    void OnLog(int priority, const char* format, const std::function<std::string()>& text);
    void OnConnectAsked(const std::string& address);
    // The one that was just asked for.
    void OnConnectRefused(const std::string& address, int result);
    void OnConnectionEvent(int result, bool connected, const std::string& address);
    void OnCall(const MemoryBus::CallInfo& call);
    void OnCallOver(const MemoryBus::CallInfo& call);
    // It tells the media player to make that phone play.
    void OnPlay(const std::string& address);

    // Nothing may be under way any more.
    void CheckRest();

private:
    struct Request {
        std::string address;
        gint64 askedMs;
        int reasons = 0;  // lines that say why it fails
        bool isSent = false;
        bool isToCancel = false;  // bluetoothd is trying, and nobody waits for it any more
    };
    static constexpr gint64 kNever = G_MAXINT64;
    using Handler = void (Judge::*)(const std::string& line);

    [[nodiscard]] bool HasRow(const std::string& format, const std::string& line) const;
    // NULL: nothing follows from such a line, of which `line` is one.
    Handler FindHandler(int priority, const char* format, const std::string& line);
    void OnListedLine(const std::string& line);
    void OnTextLine(const std::string& line);
    void OnListLine(const std::string& line);
    void OnQualifyLine(const std::string& line);
    void OnResultLine(const std::string& line);
    void OnScanLine(const std::string& line);
    void OnReasonLine(const std::string& line);
    void CheckConnectCall(const MemoryBus::CallInfo& call);
    void Expect(bool condition, const std::string& fault) {
        if (!condition) {
            m_onFault(fault);
        }
    }

    std::function<void(const std::string&)> m_onFault;
    std::set<std::string> m_rows;  // of the manual
    std::unordered_map<const char*, Handler> m_handlers;
    std::vector<Request> m_requests;             // those without an event
    std::map<std::string, std::string> m_paths;  // of those that were tried, by address
    std::multiset<std::string> m_open;           // methods without an answer
    gint64 m_waitsSinceMs = kNever;              // a request, for that
    std::vector<std::string> m_phones;           // the service's list
    bool m_isListing = false;
    std::string m_result;  // the masks that it wrote
};
