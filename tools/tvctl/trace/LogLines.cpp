// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LogLines.h"

#include <cstring>

namespace Tvctl {

namespace {

struct KnownLine {
    const char* file;      // "" for the platform, which names none
    const char* function;  // "" for any
    const char* message;   // '*' stands for a text that the line carries
    LogEvent event;
    const char* meaning = "";
};

// The one place to mend when a message of the service or of the platform changes. First match wins.
constexpr KnownLine kLines[] = {
    {"AutoConnectApp.cpp", "OnNameAcquired", "Name acquired *", LogEvent::kServiceStarted},
    {"AutoConnectApp.cpp", "OnPrePareAndDoAutoConnect", "+", LogEvent::kWakeUp},
    {"AutoConnectApp.cpp", "", "Not the zemi tv", LogEvent::kRefused,
     "the product is not a rotating TV"},
    {"AutoConnectApp.cpp", "CheckZemiAutoConnectCondition", "Not support power reason",
     LogEvent::kReasonOrKey},
    {"AutoConnectApp.cpp", "PrepareZemiAutoConnection", "SetWakupTime for btautoconnect",
     LogEvent::kWindowOpened},
    {"AutoConnectApp.cpp", "DoZemiAutoConnection", "Start ZEMI bluetooth auto connection",
     LogEvent::kAttemptStarted},

    {"VconfUtil.cpp", "GetVconf", "key : memory/bluetooth_nirvoui/musictvfail, value : *",
     LogEvent::kBlockingKey},
    {"VconfUtil.cpp", "GetVconf", "fail to get vconfkey memory/bluetooth_nirvoui/musictvfail[*",
     LogEvent::kBlockingKey},
    {"TvStatusUtil.cpp", "GetAmbientMode", "Current Ambient Mode : *", LogEvent::kAmbient, "mode"},
    {"TvStatusUtil.cpp", "GetAmbientType", "Current Ambient type : *", LogEvent::kAmbient, "type"},

    {"BTAutoConnect.cpp", "SetWakeUpTime", "Turn On TV : 0", LogEvent::kWindowClosed},
    {"BTAutoConnect.cpp", "IsWakeUpTime", "Turn On TV : 0", LogEvent::kRefused,
     "the wake-up window is not open"},
    {"BTAutoConnect.cpp", "StartAutoConnect", "auto connection list is empty", LogEvent::kRefused,
     "no registered phone qualifies"},
    {"BTAutoConnect.cpp", "StartAutoConnect", "Not supported condition", LogEvent::kRefused,
     "the ambient picture does not show"},
    {"BTAutoConnect.cpp", "StartAutoConnect", "auto connection devices : *", LogEvent::kPhones},
    {"BTAutoConnect.cpp", "StartLEScan", "Start LE scan : *", LogEvent::kScanStarted},
    {"BTAutoConnect.cpp", "StartLEScan", "failed bt_adapter_le_start_scan: *",
     LogEvent::kScanRefused},
    {"BTAutoConnect.cpp", "StopLEScan", "Stop Le Scan", LogEvent::kScanStopped},
    {"BTAutoConnect.cpp", "OnLEScanTimeout", "No found mobile.*", LogEvent::kNobodyHeard},
    {"BTAutoConnect.cpp", "ByteArrayToHexString", "*", LogEvent::kAdvertisement},
    {"BTAutoConnect.cpp", "ProcessLEScanResult", "manufaturerDataLen size is small",
     LogEvent::kShortAdvertisement},
    {"BTAutoConnect.cpp", "ProcessLEScanResult", "fail to get manufacturer data",
     LogEvent::kShortAdvertisement},
    {"MobileList.cpp", "Exist", "Found * in list", LogEvent::kPhoneHeard},

    {"BTAutoConnect.cpp", "ConnectToDeviceInList", "Try to connect device", LogEvent::kNextOfList},
    {"BTAutoConnect.cpp", "ConnectToDeviceInList", "No more device to try connect",
     LogEvent::kListEnded},
    {"BTAutoConnect.cpp", "ConnectToDevice", "Not supported condition", LogEvent::kRefused,
     "the ambient picture shows no longer"},
    {"BTAutoConnect.cpp", "ConnectToDevice", "Not bonded device", LogEvent::kNotBonded},
    {"BTAutoConnect.cpp", "ConnectToDevice", "Try to connect *", LogEvent::kConnecting},
    {"BTAutoConnect.cpp", "OnAudioSinkConnected", "result : *, address : *",
     LogEvent::kConnectResult},
    {"BTAutoConnect.cpp", "OnAudioSinkDisconnected", "result : *, address : *",
     LogEvent::kDisconnected},

    {"BTAutoConnect.cpp", "CheckPlayback", "already playing", LogEvent::kPlaysAlready},
    {"BTAutoConnect.cpp", "CheckPlayback", "send play cmd to bmplayer", LogEvent::kPlaySent},
    {"BTAutoConnect.cpp", "CheckPlayback", "fail to get playing status", LogEvent::kPlayNotSent},
    {"AppManagerUtil.cpp", "LaunchApp", "Failed to launch com.velmora.tv.bmp",
     LogEvent::kLaunchFailed},

    {"", "", "Bluetooth is off: *", LogEvent::kRefused, "Bluetooth is off"},
    {"", "", "* is not connected: *", LogEvent::kNotConnected},
    {"", "", "* cannot be connected: *", LogEvent::kNotConnected},
    {"", "", "LE scan on * does not start: *", LogEvent::kScanFailed},
    {"", "", "LE scan on * ended, *", LogEvent::kScanFailed},
    {"", "", "LE scan on *: another program discovers *", LogEvent::kBluetooth},
    {"", "", "* shows no player", LogEvent::kPlayerUnknown, "the phone shows no player"},
    {"", "", "the player of * has not told its state", LogEvent::kPlayerUnknown,
     "the phone's player has not told its state"},
    {"", "", "launch of com.velmora.tv.bmp failed: *", LogEvent::kLaunchFailed},
    {"", "", "bluetoothd *", LogEvent::kBluetooth},
    {"", "", "adapter *", LogEvent::kBluetooth},
    {"", "", "the system bus is gone*", LogEvent::kBluetooth},
};

// Whether `text` reads as `pattern` does; the texts in the place of its stars go into `values`.
// The last star takes everything.
bool Matches(const char* pattern, const std::string& text, std::vector<std::string>& values) {
    std::size_t at = 0;
    for (bool isFirst = true;; isFirst = false) {
        const char* const star = std::strchr(pattern, '*');
        const std::string literal =
            star == nullptr ? std::string(pattern) : std::string(pattern, star);
        if (isFirst) {
            if (text.compare(0, literal.size(), literal) != 0) {
                return false;
            }
            at = literal.size();
        } else {
            const std::size_t found = text.find(literal, at);
            if (found == std::string::npos) {
                return false;
            }
            values.push_back(text.substr(at, found - at));
            at = found + literal.size();
        }
        if (star == nullptr) {
            return at == text.size();
        }
        pattern = star + 1;
        if (*pattern == '\0') {
            values.push_back(text.substr(at));
            return true;
        }
    }
}

bool IsAt(const KnownLine& line, const LogRecord& record) {
    return record.file == line.file &&
           (line.function[0] == '\0' || record.function == line.function);
}

}  // namespace

std::optional<RecognisedLine> Recognise(const LogRecord& record) {
    for (const KnownLine& line : kLines) {
        std::vector<std::string> values;
        if (IsAt(line, record) && Matches(line.message, record.message, values)) {
            return RecognisedLine{line.event, line.meaning, values};
        }
    }
    return std::nullopt;
}

}  // namespace Tvctl
