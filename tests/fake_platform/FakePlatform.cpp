// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/fake_platform/FakePlatform.h"

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

#include "platform/system_log.h"
#include "tests/fake_platform/FakeState.h"

namespace Fake {

namespace {

constexpr const char* kPrefix = "%s: %s(%d) > ";
constexpr guint kFirstTimer = 0x40000000;  // far from what the library itself gives

struct Entry {
    Kind kind;
    std::string text;
    LogLine line;
};

struct Timer {
    guint64 due;
    guint interval;
    GSourceFunc function;
    gpointer data;
};

struct Shared {
    std::vector<Entry> record;
    std::vector<std::string> faults;
    std::map<std::string, std::deque<int>> failures;
    std::map<std::string, int> owned;
    std::thread::id mainThread = std::this_thread::get_id();
};

struct OfMainThread {
    World world;
    guint64 now = 0;
    std::map<guint, Timer> timers;
    std::deque<std::function<void()>> pending;
};

struct State : OfMainThread {
    guint nextTimer = kFirstTimer;
    std::mutex mutex;  // guards what follows
    std::condition_variable grown;
    Shared shared;
};

// Made by the first log line, which a static initialiser writes, and never destroyed, for the last
// one is written by a static destructor.
State& TheState() {
    static State& state = *new State;
    return state;
}

void Append(Entry entry) {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.shared.record.push_back(std::move(entry));
    state.grown.notify_all();
}

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool IsTrace(const LogLine& line) {
    return line.function == "ApiTracker" || line.function == "~ApiTracker";
}

bool Selected(const LogLine& line, const std::string& tag, int minPriority) {
    return line.priority >= minPriority && !IsTrace(line) &&
           (tag.empty() || StartsWith(Text(line).substr(2), tag + " "));
}

template <typename Visitor>
void Visit(const Visitor& visitor) {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    for (const Entry& entry : state.shared.record) {
        visitor(entry);
    }
}

template <typename Predicate>
std::vector<std::string> Select(const Predicate& predicate) {
    std::vector<std::string> texts;
    Visit([&](const Entry& entry) {
        if (predicate(entry)) {
            texts.push_back(entry.text);
        }
    });
    return texts;
}

// The form that every line has, whoever writes it.
void CheckForm(int buffer, const std::string& format, const LogLine& line) {
    const std::string stem = line.file.substr(0, line.file.find('.'));
    const bool service = stem == "AutoConnectApp" || stem == "BTAutoConnect" ||
                         stem == "AudioConnectionListener" || stem == "MobileList" ||
                         StartsWith(stem, "AutoConnectDbg");
    const bool good = buffer == LOG_ID_MAIN && line.priority >= DLOG_DEBUG &&
                      line.priority <= DLOG_ERROR && line.line > 0 &&
                      line.file.find('/') == std::string::npos &&
                      line.tag == (service ? "BT_AUTO_CONNECT" : "BT_APP_UTIL") &&
                      (format.empty() || format.back() != '\n');
    if (!good) {
        Fault("log line out of form: " + line.file + " " + Text(line));
    }
}

std::string Format(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(size) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    return text;
}

}  // namespace

World& TheWorld() {
    return TheState().world;
}

void Reset() {
    ResetConfig();
    ResetBluetooth();
    ResetApplications();
    State& state = TheState();
    static_cast<OfMainThread&>(state) = OfMainThread();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.shared = Shared();
}

std::vector<std::string> Leftovers() {
    State& state = TheState();
    std::vector<std::string> found;
    ConfigLeftovers(&found);
    BluetoothLeftovers(&found);
    for (const auto& [id, timer] : state.timers) {
        found.push_back("timer of " + std::to_string(timer.interval) + " ms");
    }
    const std::lock_guard<std::mutex> lock(state.mutex);
    for (const auto& [kind, count] : state.shared.owned) {
        if (count != 0) {
            found.push_back(std::to_string(count) + " x " + kind);
        }
    }
    found.insert(found.end(), state.shared.faults.begin(), state.shared.faults.end());
    return found;
}

void Fail(const std::string& function, int code, int times) {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.shared.failures[function].assign(static_cast<std::size_t>(times), code);
}

int Enter(Kind kind, Thread thread, const char* function, const std::string& arguments) {
    Append({kind, std::string(function) + "(" + arguments + ")", {}});
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (thread == Thread::kMain && std::this_thread::get_id() != state.shared.mainThread) {
        state.shared.faults.push_back(std::string(function) + " called beside the main thread");
    }
    std::deque<int>& failures = state.shared.failures[function];
    if (failures.empty()) {
        return 0;
    }
    const int code = failures.front();
    failures.pop_front();
    return code;
}

void Fault(const std::string& what) {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.shared.faults.push_back(what);
}

void Own(const std::string& kind, int change) {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.shared.owned[kind] += change;
}

// ---- the record ----

std::string Text(const LogLine& line) {
    const std::string letter(
        1, line.priority >= 3 && line.priority <= 6 ? "DIWE"[line.priority - 3] : '?');
    const std::string tag = line.tag == "BT_AUTO_CONNECT" ? "service"
                            : line.tag == "BT_APP_UTIL"   ? "utility"
                                                          : line.tag;
    return letter + " " + tag + " " + line.function + ": " + line.message;
}

std::vector<LogLine> Log() {
    std::vector<LogLine> lines;
    Visit([&](const Entry& entry) {
        if (entry.kind == Kind::kLog) {
            lines.push_back(entry.line);
        }
    });
    return lines;
}

std::vector<std::string> Lines(const std::string& tag, int minPriority) {
    return Select([&](const Entry& entry) {
        return entry.kind == Kind::kLog && Selected(entry.line, tag, minPriority);
    });
}

std::vector<std::string> Calls(const std::string& prefix) {
    return Select([&](const Entry& entry) {
        return entry.kind != Kind::kLog && StartsWith(entry.text, prefix);
    });
}

std::vector<std::string> Story(const std::string& tag) {
    return Select([&](const Entry& entry) {
        return entry.kind == Kind::kCommand ||
               (entry.kind == Kind::kLog && Selected(entry.line, tag, DLOG_INFO));
    });
}

std::vector<std::string> TakeStory(const std::string& tag) {
    std::vector<std::string> story = Story(tag);
    ClearRecord();
    return story;
}

void ClearRecord() {
    State& state = TheState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.shared.record.clear();
}

bool WaitFor(const std::string& text, int count) {
    State& state = TheState();
    std::unique_lock<std::mutex> lock(state.mutex);
    return state.grown.wait_for(lock, std::chrono::seconds(10), [&] {
        int found = 0;
        for (const Entry& entry : state.shared.record) {
            found += entry.text.find(text) != std::string::npos ? 1 : 0;
        }
        return found >= count;
    });
}

// ---- time ----

void Advance(unsigned int milliseconds) {
    State& state = TheState();
    const guint64 end = state.now + milliseconds;
    const auto sooner = [](const auto& a, const auto& b) { return a.second.due < b.second.due; };
    for (;;) {
        const auto next = std::min_element(state.timers.begin(), state.timers.end(), sooner);
        if (next == state.timers.end() || next->second.due > end) {
            break;
        }
        const auto [id, timer] = *next;
        state.now = timer.due;
        const bool again = timer.function(timer.data) == G_SOURCE_CONTINUE;
        const auto still = state.timers.find(id);
        if (still != state.timers.end() && again) {
            still->second.due = state.now + timer.interval;
        } else if (still != state.timers.end()) {
            state.timers.erase(still);
        }
    }
    state.now = end;
}

std::size_t TimersRunning() {
    return TheState().timers.size();
}

void Post(std::function<void()> event) {
    TheState().pending.push_back(std::move(event));
}

void RunPending() {
    State& state = TheState();
    while (!state.pending.empty()) {
        const std::function<void()> event = std::move(state.pending.front());
        state.pending.pop_front();
        event();
    }
}

}  // namespace Fake

extern "C" {

int __dlog_print(log_id_t buffer, int priority, const char* tag, const char* format, ...) {
    Fake::LogLine line{priority, tag, "", "", 0, ""};
    va_list arguments;
    va_start(arguments, format);
    if (Fake::StartsWith(format, Fake::kPrefix)) {
        line.file = va_arg(arguments, const char*);
        line.function = va_arg(arguments, const char*);
        line.line = va_arg(arguments, int);
        format += std::strlen(Fake::kPrefix);
    }
    line.message = Fake::Format(format, arguments);
    va_end(arguments);
    Fake::CheckForm(buffer, format, line);
    Fake::Append({Fake::Kind::kLog, Fake::Text(line), line});
    return static_cast<int>(line.message.size());
}

guint g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
    Fake::Enter(Fake::Kind::kCommand, Fake::Thread::kMain, __func__, Fake::Joined(interval));
    Fake::State& state = Fake::TheState();
    state.timers[state.nextTimer] = {state.now + interval, interval, function, data};
    return state.nextTimer++;
}

gboolean g_source_remove(guint tag) {
    if (tag < Fake::kFirstTimer) {
        // The library's own; what its function would have done.
        GSource* source = g_main_context_find_source_by_id(nullptr, tag);
        if (source != nullptr) {
            g_source_destroy(source);
        }
        return source != nullptr;
    }
    Fake::State& state = Fake::TheState();
    const auto timer = state.timers.find(tag);
    if (timer == state.timers.end()) {
        Fake::Fault("g_source_remove of a timer that is gone");
        return FALSE;
    }
    Fake::Enter(Fake::Kind::kCommand, Fake::Thread::kMain, __func__,
                Fake::Joined(timer->second.interval));
    state.timers.erase(timer);
    return TRUE;
}

}  // extern "C"
