// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <sstream>
#include <string>

#include "tests/fake_platform/FakePlatform.h"

// What the fake's sources share.
namespace Fake {

enum class Kind { kQuery, kCommand, kLog };
enum class Thread { kMain, kAny };

// Puts a call into the record; a call on the wrong thread is a fault. Returns the code that a test
// has asked `function` to fail with, otherwise 0.
int Enter(Kind kind, Thread thread, const char* function, const std::string& arguments);
void Fault(const std::string& what);
// Counts the handles of a kind that the code under test holds.
void Own(const std::string& kind, int change);
// Runs `event` in the next RunPending.
void Post(std::function<void()> event);

// The address in upper case; empty when it is none.
std::string NormalAddress(const char* address);

// What each family still holds for a listener, and how it forgets everything.
void ConfigLeftovers(std::vector<std::string>* found);
void BluetoothLeftovers(std::vector<std::string>* found);
void ResetConfig();
void ResetBluetooth();
void ResetApplications();

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
// A function refuses a NULL argument with the code that its family has for that.
#define FAKE_REFUSE_IF(condition, code) \
    if (condition) {                    \
        return code;                    \
    }
