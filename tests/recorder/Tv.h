// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/tv-sim/Simulator.h"

// What is around the code under test, over the real platform/linux: a root folder of this process,
// a bus in memory, a time that passes in Advance() only, and where a test wants it a simulated
// bluetoothd. Main thread only.
namespace Tv {

// A bool key holds the int that was written.
enum class Flag : int {};
using Value = std::variant<std::string, int, Flag>;

// As after the first boot: no keys, no features, no applications, no bluetoothd; with a fresh
// record.
void Reset();
// Of this process, in $TV_ROOT from before the first static initialiser; removed at its end.
const std::string& Root();

// Lets `milliseconds` pass.
void Advance(int milliseconds);
// Lets everything happen that is due now, what it brings about included.
void RunPending();

// What another program does; what watches the key hears of it with RunPending. An empty value takes
// the key away.
void SetKey(const std::string& key, const std::optional<Value>& value);
// The text of a string key; "(none)" when it has none.
std::string TextKey(const std::string& key);
// The numbers that the TV's parts leave under memory/platform/.
void SetState(const char* name, int number);
int State(const char* name);
// The value as it stands in the file; an empty one takes all features away.
void SetFeature(const std::string& key, const std::optional<std::string>& value);

// The installed applications, by id: whether they run. Those of an empty list all do.
void SetApplications(const std::map<std::string, bool>& applications);
void SetMetadata(const std::string& application, const std::string& lines);
// The D-Bus errors that the next asynchronous launches end with, "" for success.
void AnswerLaunches(const std::vector<std::string>& errors);
// How many of those answers nobody has got.
std::size_t LaunchesExpected();
// Whether an event stands raised, as it does at first.
void SetRaised(const std::string& event, bool raised);

// Starts bluetoothd and waits until the platform knows its devices.
void StartBluez(const std::vector<TvSim::PhonePlan>& phones,
                const TvSim::AdapterPlan& adapter = {});
// The one that was started.
TvSim::Simulator& Bluez();
// A phone with a bond that does nothing by itself.
TvSim::PhonePlan QuietPhone(const std::string& address);

}  // namespace Tv
