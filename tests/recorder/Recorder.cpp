// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/recorder/Recorder.h"

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "common/CHandle.h"
#include "platform/application.h"
#include "platform/system_log.h"

namespace Recorder {

namespace {

constexpr const char* kPrefix = "%s: %s(%d) > ";

struct Entry {
    Kind kind;
    std::string text;
    int priority;
    std::string printed;
};

struct State {
    std::vector<Entry> record;
    std::vector<std::string> faults;
    std::map<std::string, std::pair<int, int>> failures;  // code and how often
    std::set<std::string> registrations;
    std::map<guint, guint> timers;  // interval by id
    std::thread::id mainThreadId = std::this_thread::get_id();
};

struct Shared {
    std::mutex mutex;  // guards `state`
    std::condition_variable changed;
    State state;
};

// Made by the first log line, which a static initialiser writes, and never destroyed, for the last
// one is written by a static destructor.
Shared& TheShared() {
    static Shared& shared = *new Shared();
    return shared;
}

template <typename Action>
auto Locked(const Action& action) {
    Shared& shared = TheShared();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    shared.changed.notify_all();
    return action(shared.state);
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
    return Locked([&](const State& state) {
        std::vector<std::string> texts;
        for (const Entry& entry : state.record) {
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

// Intervals of the timers that still run, by id.
std::map<guint, guint> RunningTimers() {
    std::map<guint, guint> running = Locked([](const State& state) { return state.timers; });
    for (auto timer = running.begin(); timer != running.end();) {
        const bool runs = g_main_context_find_source_by_id(nullptr, timer->first) != nullptr;
        timer = runs ? std::next(timer) : running.erase(timer);
    }
    return running;
}

}  // namespace

void Reset() {
    for (const auto& timer : RunningTimers()) {
        g_source_destroy(g_main_context_find_source_by_id(nullptr, timer.first));
    }
    Locked([](State& state) { state = State(); });
}

std::vector<std::string> Leftovers() {
    std::vector<std::string> found = Locked([](const State& state) {
        std::vector<std::string> left = state.faults;
        left.insert(left.end(), state.registrations.begin(), state.registrations.end());
        return left;
    });
    for (const auto& timer : RunningTimers()) {
        found.push_back("timer of " + std::to_string(timer.second) + " ms");
    }
    return found;
}

std::size_t TimersRunning() {
    return RunningTimers().size();
}

void Fail(const std::string& function, int code, int times) {
    Locked([&](State& state) { state.failures[function] = {code, times}; });
}

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

std::vector<std::string> All() {
    return Select([](const Entry& entry) {
        return entry.kind == Kind::kQuery || entry.kind == Kind::kCommand ||
               IsLog(entry, "", DLOG_DEBUG);
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
    Locked([](State& state) { state.record.clear(); });
}

// By the clock that goes on: the other one stands still meanwhile.
bool WaitFor(const std::string& text, int count) {
    Shared& shared = TheShared();
    std::unique_lock<std::mutex> lock(shared.mutex);
    const auto deadline = std::chrono::system_clock::now() + std::chrono::seconds(10);
    return shared.changed.wait_until(lock, deadline, [&] {
        const auto& record = shared.state.record;
        const auto holds = [&](const auto& e) { return e.text.find(text) != std::string::npos; };
        return std::count_if(record.begin(), record.end(), holds) >= count;
    });
}

std::optional<int> Enter(Kind kind, Thread thread, const char* function,
                         const std::string& arguments) {
    return Locked([&](State& state) -> std::optional<int> {
        if (kind != Kind::kSilent) {
            state.record.push_back({kind, std::string(function) + "(" + arguments + ")", 0, ""});
        }
        if (thread == Thread::kMain && std::this_thread::get_id() != state.mainThreadId) {
            state.faults.push_back(std::string(function) + " called on another thread");
        }
        auto& [code, times] = state.failures[function];
        return times-- > 0 ? std::optional(code) : std::nullopt;
    });
}

void Succeeded(const std::string& function, const std::string& arguments) {
    Locked([&](State& state) {
        if (function == "vconf_notify_key_changed") {
            state.registrations.insert("watch on " + arguments);
        } else if (function == "vconf_ignore_key_changed") {
            state.registrations.erase("watch on " + arguments);
        } else if (function == "app_control_set_operation" &&
                   g_str_has_suffix(arguments.c_str(), APP_CONTROL_OPERATION_DEFAULT) == FALSE) {
            state.faults.push_back("launch with the operation " + arguments);
        }
    });
}

}  // namespace Recorder

// In place of the functions of those names.
// NOLINTBEGIN(bugprone-reserved-identifier): the names that the linker gives
extern "C" {

int __wrap___dlog_print(log_id_t buffer, int priority, const char* tag, const char* format, ...) {
    if (std::strcmp(tag, "TV_PLATFORM") == 0) {
        return 0;
    }
    std::string file;
    std::string function;
    int line = 0;
    va_list arguments;
    va_start(arguments, format);
    if (Recorder::StartsWith(format, Recorder::kPrefix)) {
        file = va_arg(arguments, const char*);
        function = va_arg(arguments, const char*);
        line = va_arg(arguments, int);
        format += std::strlen(Recorder::kPrefix);
    }
    const std::string message = GStringPtr(g_strdup_vprintf(format, arguments)).get();
    va_end(arguments);
    const std::string printed = std::to_string(priority) + " " + tag + " " + file + ": " +
                                function + "(" + std::to_string(line) + ") > " + message;
    const bool isOutOfForm = buffer != LOG_ID_MAIN || priority < DLOG_DEBUG ||
                             priority > DLOG_ERROR || line <= 0 ||
                             file.find('/') != std::string::npos || tag != Recorder::TagOf(file) ||
                             g_str_has_suffix(format, "\n") != FALSE;
    const std::string by = tag == std::string("BT_APP_UTIL") ? "utility" : "service";
    const std::string text = std::string(1, "DIWE"[(priority - DLOG_DEBUG) % 4]) + " " + by + " " +
                             function + ": " + message;
    Recorder::Locked([&](Recorder::State& state) {
        state.record.push_back({Recorder::Kind::kLog, text, priority, printed});
        if (isOutOfForm) {
            state.faults.push_back("log line out of form: " + printed);
        }
    });
    return static_cast<int>(message.size());
}

guint __real_g_timeout_add(guint interval, GSourceFunc function, gpointer data);
guint __wrap_g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
    using namespace Recorder;
    Enter(Kind::kCommand, Thread::kMain, "g_timeout_add", std::to_string(interval));
    const guint id = __real_g_timeout_add(interval, function, data);
    Locked([&](State& state) { state.timers[id] = interval; });
    return id;
}

gboolean __real_g_source_remove(guint tag);
gboolean __wrap_g_source_remove(guint tag) {
    using namespace Recorder;
    const guint interval = Locked([&](State& state) { return state.timers[tag]; });
    Enter(Kind::kCommand, Thread::kMain, "g_source_remove", std::to_string(interval));
    // Of a timer that is gone it prints a warning that ends the test.
    return __real_g_source_remove(tag);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
