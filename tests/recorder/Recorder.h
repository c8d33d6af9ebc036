// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

// What the code under test says to the platform, and what it logs, in one ordered record. It stands
// between the code and platform/linux, which does what it is asked for. Any thread.
namespace Recorder {

// Forgets all of this. What is still registered with the platform, and does not belong to an object
// that lives on, has to be gone; timers that run are ended.
void Reset();
// What the code under test did against the contract, and what it has not given back: registrations,
// timers, calls on the wrong thread, log lines out of form. Empty is good.
std::vector<std::string> Leftovers();
std::size_t TimersRunning();

// The next `times` calls of the platform function answer `code` and do nothing; NULL when it has a
// text to give.
void Fail(const std::string& function, int code, int times = 1);

// All log lines as the system log prints them, with priority and tag in front; for example
// "5 BT_AUTO_CONNECT BTAutoConnect.cpp: StartAutoConnect(69) > Not supported condition".
std::vector<std::string> Printed();
// The log lines of a tag ("" for any) from a priority up, without the call tracer's, as tests state
// them: priority letter, "service" or "utility" for the tag, bare function name, message; for
// example "W service StartAutoConnect: Not supported condition". The platform's own are left out.
std::vector<std::string> Lines(const std::string& tag = "", int minPriority = 3);
// All calls, queries included, whose text begins with `prefix`; for example
// "bt_audio_connect(A0:B1:C2:D3:E4:F5,4)".
std::vector<std::string> Calls(const std::string& prefix = "");
// All calls and the log lines of any tag, without the call tracer's, as they came.
std::vector<std::string> All();
// Calls that change something, and log lines of a tag ("" for any) from INFO up, as they came.
std::vector<std::string> Story(const std::string& tag = "");
// As Story, and forgets the record.
std::vector<std::string> TakeStory(const std::string& tag = "");
void ClearRecord();
// Waits, 10 s at most, until `count` calls or log lines contain `text`.
[[nodiscard]] bool WaitFor(const std::string& text, int count = 1);

// ---- for the functions that are recorded ----

enum class Kind { kQuery, kCommand, kSilent, kLog };
enum class Thread { kMain, kAny };
// Notes a call. What it has to answer, where a test said so.
std::optional<int> Enter(Kind kind, Thread thread, const char* function,
                         const std::string& arguments);
// The call succeeded.
void Succeeded(const std::string& function, const std::string& arguments);

}  // namespace Recorder
