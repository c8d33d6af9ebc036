// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <typeinfo>

#include "platform/config_store.h"
#include "tests/fake_platform/FakePlatform.h"

struct app_control_s {
    std::string operation;
    std::string appId;
    std::vector<std::pair<std::string, std::string>> extras;
};

// What the fake's sources share.
namespace Fake {

struct Timer {
    guint64 due;
    guint interval;
    GSourceFunc function;
    gpointer data;
};

struct Watch {
    std::string key;
    vconf_callback_fn callback;
    void* data;
};

struct Launch {
    app_control_s request;
    app_control_result_cb callback;
    void* data;
};

// What the main thread has under way; Reset begins with nothing.
struct MainThread {
    World world;
    guint64 now = 0;
    std::map<guint, Timer> timers;
    std::deque<std::function<void()>> pending;
    std::list<std::shared_ptr<Watch>> watches;
    std::function<void(int, bt_adapter_le_device_scan_result_info_s*)> scan;
    std::function<void(int, bool, const char*)> audioListener;
    std::set<std::string> connecting;
    std::deque<Launch> launches;
};
MainThread& Main();

enum class Kind { kQuery, kCommand, kLog };
enum class Thread { kMain, kAny };

// Puts a call into the record; a call on the wrong thread is a fault. Returns the code that a test
// has asked `function` to fail with, otherwise 0.
int Enter(Kind kind, Thread thread, const char* function, const std::string& arguments);
void Fault(const std::string& what);
// Runs `event` in the next RunPending.
void Post(std::function<void()> event);

// The address in upper case; empty when it is not one.
std::string NormalAddress(const char* address);

// Counts the handles of a type that the code under test holds.
void Own(const char* type, int change);

// A handle that the code under test has to give back to Release.
template <typename T>
T* Give(T value) {
    Own(typeid(T).name(), 1);
    return new T(std::move(value));
}
template <typename T>
int Release(T* handle) {
    Own(typeid(T).name(), -1);
    delete handle;
    return 0;
}

// Reads the value of a key, which must have that type.
template <typename T, typename Out>
int Read(const std::map<std::string, Value>& store, const char* key, Out* value) {
    const auto found = store.find(key);
    if (found == store.end() || !std::holds_alternative<T>(found->second)) {
        return -1;
    }
    *value = static_cast<Out>(std::get<T>(found->second));
    return 0;
}

// Calls `callback` with each element until it returns false.
template <typename Elements, typename Callback>
int ForEach(Elements& elements, const Callback& callback) {
    for (auto& element : elements) {
        if (!callback(element)) {
            break;
        }
    }
    return 0;
}

inline void Put(std::ostream& out, const char* text) {
    out << (text == nullptr ? "(null)" : text);
}
template <typename T>
void Put(std::ostream& out, const T& value) {
    out << value;
}

template <typename... Args>
std::string Joined(const Args&... args) {
    std::ostringstream out;
    [[maybe_unused]] const char* separator = "";
    ((out << separator, Put(out, args), separator = ","), ...);
    return out.str();
}

// A command that does nothing but stand in the record.
template <typename... Args>
int Command(const char* function, const Args&... args) {
    return Enter(Kind::kCommand, Thread::kMain, function, Joined(args...));
}

}  // namespace Fake

// The first statement of a platform function: notes the call, and fails it when the test asked so.
#define FAKE_CALL(kind, thread, ...)                                                       \
    if (const int fakeCode = Fake::Enter(Fake::Kind::kind, Fake::Thread::thread, __func__, \
                                         Fake::Joined(__VA_ARGS__));                       \
        fakeCode != 0) {                                                                   \
        return fakeCode;                                                                   \
    }
#define FAKE_QUERY(...) FAKE_CALL(kQuery, kMain, __VA_ARGS__)
#define FAKE_COMMAND(...) FAKE_CALL(kCommand, kMain, __VA_ARGS__)
#define FAKE_QUERY_ANYWHERE(...) FAKE_CALL(kQuery, kAny, __VA_ARGS__)
// A function refuses a bad argument with the code that its family has for that.
#define FAKE_REFUSE_IF(condition, code) \
    if (condition) {                    \
        return code;                    \
    }
