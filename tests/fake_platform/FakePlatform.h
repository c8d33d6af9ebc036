// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/application.h"
#include "platform/bluetooth.h"

// The TV in memory. A test sets TheWorld(), lets the code under test run, fires events, and reads
// one ordered record of what was called and logged. Nothing happens by itself: time passes in
// Advance(), everything else that the platform owes (change callbacks, asynchronous results) comes
// in RunPending(). Main thread only, except where a function says otherwise.
namespace Fake {

// A bool feature holds a bool; a bool key holds the int that was written.
enum class Flag : int {};
using Value = std::variant<std::string, bool, int, Flag>;

struct Device {
    bool bonded = true;
    bool connected = false;
    std::optional<std::string> name = {};
    bt_class_s deviceClass = {};
    int vendor = 0;
    int product = 0;
    bool isInput = false;
};

struct Application {
    bool running = false;
    bool visible = false;
    bool updating = false;
    app_state_e state = APP_STATE_UNDEFINED;
    std::vector<std::pair<std::string, std::string>> metadata = {};
};

struct World {
    bool adapterOn = true;
    std::string adapterName;
    std::vector<std::string> headless;              // addresses of the registered accessories
    std::map<std::string, Device> devices;          // the adapter's bonds, by upper-case address
    std::optional<bt_avrcp_player_state_e> player;  // none: no phone is connected
    std::map<std::string, Value> keys;              // the configuration store
    std::map<std::string, Value> features;
    std::optional<int> irKeyCode;
    int wakeUpReason = 0;
    int powerState = 0;
    int ambientType = 0;
    int ambientMode = 0;
    bool speakerMuted = false;
    std::map<std::string, Application> applications;  // the installed ones, by id
};
World& TheWorld();

// A fresh world and record; the caller's thread becomes the main one. What an object that lives on
// has registered stays forgotten.
void Reset();
// What the code under test did against the contract, and what it has not given back: registrations,
// timers, handles, calls on the wrong thread, log lines out of form. Empty is good.
std::vector<std::string> Leftovers();

// The next `times` calls of the platform function fail with `code`. Any thread.
void Fail(const std::string& function, int code, int times = 1);

// ---- the record, any thread ----

// All log lines as the system log prints them, with priority and tag in front; for example
// "5 BT_AUTO_CONNECT BTAutoConnect.cpp: StartAutoConnect(69) > Not supported condition".
std::vector<std::string> Printed();
// The log lines of a tag ("" for any) from a priority up, without the call tracer's, as tests state
// them: priority letter, "service" or "utility" for the tag, bare function name, message; for
// example "W service StartAutoConnect: Not supported condition".
std::vector<std::string> Lines(const std::string& tag = "", int minPriority = 3);
// All calls, queries included, whose text begins with `prefix`; for example
// "bt_audio_connect(A0:B1:C2:D3:E4:F5,4)".
std::vector<std::string> Calls(const std::string& prefix = "");
// Calls that change something, and log lines of a tag ("" for any) from INFO up, as they came.
std::vector<std::string> Story(const std::string& tag = "");
// As Story, and forgets the record.
std::vector<std::string> TakeStory(const std::string& tag = "");
void ClearRecord();
// Waits, 10 s at most, until `count` calls or log lines contain `text`.
[[nodiscard]] bool WaitFor(const std::string& text, int count = 1);

// ---- time and what the platform owes ----

// Lets `milliseconds` pass: timers that fall due run, in order of their time.
void Advance(unsigned int milliseconds);
std::size_t TimersRunning();
// Delivers everything owed, what it brings about included.
void RunPending();

// ---- configuration store ----

// A write by another process; its change callbacks come with RunPending. An empty optional unsets.
void WriteKey(const std::string& key, const std::optional<Value>& value);
// The text of a string key; "(none)" when it has none.
std::string TextKey(const std::string& key);

// ---- Bluetooth ----

[[nodiscard]] bool Scanning();
// Hands the packet, in a buffer of its exact size, to the scan that runs; false when none does.
bool Hear(std::vector<unsigned char> packet);
// Ends the running scan with an error, as when the adapter went away.
void BreakScan(int error);

// Ends the connection attempt that runs for `address` with `result`; false when none does.
bool FinishConnect(const std::string& address, int result = BT_ERROR_NONE);
// A connection-state event that nobody asked for.
void ConnectionEvent(int result, bool connected, const char* address);

// ---- applications ----

// The outcome of the oldest asynchronous launch; false when none is awaited.
bool FinishLaunch(app_control_error_e result);
// Whether event waits last until RaiseEvent (held) or end at once. Any thread.
void HoldEvents(bool held);
// Ends one wait, the one that runs or the next.
void RaiseEvent();

}  // namespace Fake
