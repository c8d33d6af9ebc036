// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/tvctl/trace/LogReader.h"

namespace Tvctl {

// What a line of the service's log says, as far as the timeline of a wake-up wants to know. The
// texts that a line carries are named behind each.
enum class LogEvent {
    kServiceStarted,
    kWakeUp,
    kRefused,      // a condition does not hold
    kReasonOrKey,  // the wake-up reason, or the blocking key, forbids
    kBlockingKey,  // the key's value
    kAmbient,      // what was read, its value
    kWindowOpened,
    kWindowClosed,
    kAttemptStarted,
    kPhones,       // the registered phones, each followed by ", "
    kScanStarted,  // the result's name
    kScanRefused,  // the result's name
    kScanFailed,   // the adapter, why
    kScanStopped,
    kNobodyHeard,
    kAdvertisement,  // the address that would be in it
    kShortAdvertisement,
    kPhoneHeard,  // address
    kNextOfList,
    kListEnded,
    kNotBonded,
    kConnecting,     // address
    kNotConnected,   // address, why
    kConnectResult,  // result code, address
    kDisconnected,   // result code, address
    kPlayerUnknown,  // the device's path; the meaning says what is not known
    kPlaysAlready,
    kPlaySent,
    kPlayNotSent,
    kLaunchFailed,  // why, where the line says it
    kBluetooth,     // something befell the daemon or the adapter: the whole line says it
};

struct RecognisedLine {
    LogEvent event;
    std::string meaning;              // of a refusal and the like, in an operator's words
    std::vector<std::string> values;  // the texts that the line carries
};

// Nothing for a line that the timeline has no use for, as most.
[[nodiscard]] std::optional<RecognisedLine> Recognise(const LogRecord& record);

}  // namespace Tvctl
