// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/fake_platform/FakePlatform.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <mutex>
#include <thread>

#include "common/CHandle.h"
#include "platform/event_wait.h"
#include "platform/system_log.h"
#include "tests/fake_platform/FakeState.h"

namespace Fake {

namespace {

constexpr const char* kPrefix = "%s: %s(%d) > ";

struct Entry {
    Kind kind;
    std::string text;
    int priority;
    std::string printed;
};

// What any thread may touch.
struct Shared {
    std::vector<Entry> record;
    std::vector<std::string> faults;
    std::map<std::string, std::pair<int, int>> failures;  // code and how often
    std::map<std::string, int> owned;
    std::thread::id mainThreadId = std::this_thread::get_id();
    bool eventsHeld = false;
    int eventsRaised = 0;
};

struct State {
    MainThread mainThread;
    guint lastTimer = 0;
    std::mutex mutex;  // guards `shared`
    std::condition_variable changed;
    Shared shared;
};

// Made by the first log line, which a static initialiser writes, and never destroyed, for the last
// one is written by a static destructor.
State& TheState() {
    static State& state = *new State;
    return state;
}

template <typename Action>
auto Locked(const Action& action) {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.changed.notify_all();
    return action(state.shared);
}

// Waits until the condition holds; false when it does not in time.
template <typename Condition>
bool Await(int timeoutMs, const Condition& condition) {
    State& state = TheState();
    std::unique_lock<std::mutex> lock(state.mutex);
    return state.changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                  [&] { return condition(state.shared); });
}

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool IsLog(const Entry& entry, const std::string& tag, int minPriority) {
    return entry.kind == Kind::kLog && entry.priority >= minPriority &&
           entry.text.find("ApiTracker: ") == std::string::npos &&
           (tag.empty() || StartsWith(entry.text.substr(2), tag + " "));
}

template <typename Predicate>
std::vector<std::string> Select(const Predicate& predicate,
                                std::string Entry::*text = &Entry::text) {
    return Locked([&](const Shared& shared) {
        std::vector<std::string> texts;
        for (const Entry& entry : shared.record) {
            if (predicate(entry)) {
                texts.push_back(entry.*text);
            }
        }
        return texts;
    });
}

// The tag that every line of a source has.
std::string TagOf(const std::string& file) {
    const std::string stem = file.substr(0, file.find('.'));
    const bool service = stem == "AutoConnectApp" || stem == "BTAutoConnect" ||
                         stem == "AudioConnectionListener" || stem == "MobileList" ||
                         StartsWith(stem, "AutoConnectDbg");
    return service ? "BT_AUTO_CONNECT" : "BT_APP_UTIL";
}

}  // namespace

MainThread& Main() {
    return TheState().mainThread;
}

World& TheWorld() {
    return Main().world;
}

void Reset() {
    Main() = MainThread();
    Locked([](Shared& shared) { shared = Shared(); });
}

std::vector<std::string> Leftovers() {
    return Locked([](const Shared& shared) {
        std::vector<std::string> found = shared.faults;
        for (const auto& watch : Main().watches) {
            found.push_back("watch on " + watch->key);
        }
        if (Main().audioListener) {
            found.emplace_back("listener for audio connections");
        }
        for (const auto& [id, timer] : Main().timers) {
            found.push_back("timer of " + std::to_string(timer.interval) + " ms");
        }
        for (const auto& [type, count] : shared.owned) {
            if (count != 0) {
                found.push_back(std::to_string(count) + " x " + type);
            }
        }
        return found;
    });
}

void Fail(const std::string& function, int code, int times) {
    Locked([&](Shared& shared) { shared.failures[function] = {code, times}; });
}

int Enter(Kind kind, Thread thread, const char* function, const std::string& arguments) {
    return Locked([&](Shared& shared) {
        shared.record.push_back({kind, std::string(function) + "(" + arguments + ")", 0, ""});
        if (thread == Thread::kMain && std::this_thread::get_id() != shared.mainThreadId) {
            shared.faults.push_back(std::string(function) + " called on another thread");
        }
        auto& [code, times] = shared.failures[function];
        return times-- > 0 ? code : 0;
    });
}

void Fault(const std::string& what) {
    Locked([&](Shared& shared) { shared.faults.push_back(what); });
}

void Own(const char* type, int change) {
    Locked([&](Shared& shared) { shared.owned[type] += change; });
}

// ---- the record ----

std::vector<std::string> Printed() {
    return Select([](const Entry& entry) { return entry.kind == Kind::kLog; }, &Entry::printed);
}

std::vector<std::string> Lines(const std::string& tag, int minPriority) {
    return Select([&](const Entry& entry) { return IsLog(entry, tag, minPriority); });
}

std::vector<std::string> Calls(const std::string& prefix) {
    return Select([&](const Entry& entry) {
        return entry.kind != Kind::kLog && StartsWith(entry.text, prefix);
    });
}

std::vector<std::string> Story(const std::string& tag) {
    return Select([&](const Entry& entry) {
        return entry.kind == Kind::kCommand || IsLog(entry, tag, DLOG_INFO);
    });
}

std::vector<std::string> TakeStory(const std::string& tag) {
    std::vector<std::string> story = Story(tag);
    ClearRecord();
    return story;
}

void ClearRecord() {
    Locked([](Shared& shared) { shared.record.clear(); });
}

bool WaitFor(const std::string& text, int count) {
    return Await(10000, [&](const Shared& shared) {
        const auto holds = [&](const auto& e) { return e.text.find(text) != std::string::npos; };
        return std::count_if(shared.record.begin(), shared.record.end(), holds) >= count;
    });
}

// ---- time ----

void Advance(unsigned int milliseconds) {
    const guint64 end = Main().now + milliseconds;
    const auto sooner = [](const auto& a, const auto& b) { return a.second.due < b.second.due; };
    for (;;) {
        const auto next = std::min_element(Main().timers.begin(), Main().timers.end(), sooner);
        if (next == Main().timers.end() || next->second.due > end) {
            break;
        }
        const auto [id, timer] = *next;
        Main().now = timer.due;
        next->second.due += timer.interval;
        if (timer.function(timer.data) == G_SOURCE_REMOVE) {
            Main().timers.erase(id);
        }
    }
    Main().now = end;
}

std::size_t TimersRunning() {
    return Main().timers.size();
}

void Post(std::function<void()> event) {
    Main().pending.push_back(std::move(event));
}

void RunPending() {
    while (!Main().pending.empty()) {
        const std::function<void()> event = std::move(Main().pending.front());
        Main().pending.pop_front();
        event();
    }
}

// ---- waits ----

void HoldEvents(bool held) {
    Locked([&](Shared& shared) { shared.eventsHeld = held; });
}

void RaiseEvent() {
    Locked([](Shared& shared) { ++shared.eventsRaised; });
}

}  // namespace Fake

extern "C" {

int __dlog_print(log_id_t buffer, int priority, const char* tag, const char* format, ...) {
    std::string file;
    std::string function;
    int line = 0;
    va_list arguments;
    va_start(arguments, format);
    if (Fake::StartsWith(format, Fake::kPrefix)) {
        file = va_arg(arguments, const char*);
        function = va_arg(arguments, const char*);
        line = va_arg(arguments, int);
        format += std::strlen(Fake::kPrefix);
    }
    const std::string message = GStringPtr(g_strdup_vprintf(format, arguments)).get();
    va_end(arguments);
    const std::string printed = std::to_string(priority) + " " + tag + " " + file + ": " +
                                function + "(" + std::to_string(line) + ") > " + message;
    if (buffer != LOG_ID_MAIN || priority < DLOG_DEBUG || priority > DLOG_ERROR || line <= 0 ||
        file.find('/') != std::string::npos || tag != Fake::TagOf(file) ||
        g_str_has_suffix(format, "\n") != FALSE) {
        Fake::Fault("log line out of form: " + printed);
    }
    const std::string by = tag == std::string("BT_APP_UTIL") ? "utility" : "service";
    const std::string text = std::string(1, "DIWE"[(priority - DLOG_DEBUG) % 4]) + " " + by + " " +
                             function + ": " + message;
    Fake::Locked([&](Fake::Shared& shared) {
        shared.record.push_back({Fake::Kind::kLog, text, priority, printed});
    });
    return static_cast<int>(message.size());
}

int LwipcWaitEvent(const char* path, int timeout_ms) {
    FAKE_QUERY_ANYWHERE(path, timeout_ms);
    const auto isRaised = [](Fake::Shared& shared) {
        const bool raised = shared.eventsRaised > 0;
        shared.eventsRaised -= shared.eventsHeld && raised ? 1 : 0;
        return raised || !shared.eventsHeld;
    };
    return Fake::Await(timeout_ms, isRaised) ? 0 : -1;
}

guint g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
    Fake::Command(__func__, interval);
    const guint id = ++Fake::TheState().lastTimer;
    Fake::Main().timers[id] = {Fake::Main().now + interval, interval, function, data};
    return id;
}

gboolean g_source_remove(guint tag) {
    const auto timer = Fake::Main().timers.find(tag);
    if (timer == Fake::Main().timers.end()) {
        Fake::Fault("g_source_remove of a timer that is gone");
        return FALSE;
    }
    Fake::Command(__func__, timer->second.interval);
    Fake::Main().timers.erase(timer);
    return TRUE;
}

}  // extern "C"
