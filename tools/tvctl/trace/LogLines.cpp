// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string_view>

#include "tools/tvctl/trace/Timeline.h"

// Which lines of the service and of the platform the timeline knows, and what each of them tells.

namespace Tvctl {

namespace {

// Whether `text` reads as `pattern` does; the texts in the place of its stars are added to `texts`.
// A star at the end takes everything.
bool Matches(std::string_view pattern, std::string_view text, std::vector<std::string>& texts) {
    const std::size_t kept = texts.size();
    std::size_t star = pattern.find('*');
    bool fits = text.substr(0, star) == pattern.substr(0, star);
    std::size_t at = std::min(star, text.size());
    while (fits && star != std::string_view::npos) {
        pattern.remove_prefix(star + 1);
        star = pattern.find('*');
        const std::string_view piece = pattern.substr(0, star);
        const std::size_t found = piece.empty() ? text.size() : text.find(piece, at);
        fits = found != std::string_view::npos;
        if (fits) {
            texts.emplace_back(text.substr(at, found - at));
            at = found + piece.size();
        }
    }
    if (!fits || at != text.size()) {
        texts.resize(kept);
        return false;
    }
    return true;
}

}  // namespace

// The one place to change when a message of the service or of the platform changes. First match
// wins.
const Timeline::KnownLine Timeline::kLines[] = {
    {"AutoConnectApp.cpp", "OnNameAcquired", "Name acquired *", &Timeline::OnServiceStarted},
    {"AutoConnectApp.cpp", "OnPrePareAndDoAutoConnect", "+", &Timeline::OnWakeUp},
    {"AutoConnectApp.cpp", "", "Not the zemi tv", &Timeline::OnRefused,
     "the product is not a rotating TV"},
    {"AutoConnectApp.cpp", "CheckZemiAutoConnectCondition", "Not support power reason",
     &Timeline::OnReasonOrKey},
    {"AutoConnectApp.cpp", "PrepareZemiAutoConnection", "SetWakupTime for btautoconnect",
     &Timeline::OnWindowOpened},
    {"AutoConnectApp.cpp", "DoZemiAutoConnection", "Start ZEMI bluetooth auto connection",
     &Timeline::OnAttemptStarted},

    {"VconfUtil.cpp", "GetVconf", "key : memory/bluetooth_nirvoui/musictvfail, value : *",
     &Timeline::OnBlockingKey},
    {"VconfUtil.cpp", "GetVconf", "fail to get vconfkey memory/bluetooth_nirvoui/musictvfail[*",
     &Timeline::OnBlockingKey},
    {"TvStatusUtil.cpp", "GetAmbientMode", "Current Ambient Mode : *", &Timeline::OnAmbient,
     "mode"},
    {"TvStatusUtil.cpp", "GetAmbientType", "Current Ambient type : *", &Timeline::OnAmbient,
     "type"},

    {"BTAutoConnect.cpp", "SetWakeUpTime", "Turn On TV : 0", &Timeline::OnWindowClosed},
    {"BTAutoConnect.cpp", "IsWakeUpTime", "Turn On TV : 0", &Timeline::OnRefused,
     "the wake-up window is not open"},
    {"BTAutoConnect.cpp", "StartAutoConnect", "auto connection list is empty", &Timeline::OnRefused,
     "no registered phone qualifies"},
    {"BTAutoConnect.cpp", "StartAutoConnect", "Not supported condition", &Timeline::OnRefused,
     "the ambient picture does not show"},
    {"BTAutoConnect.cpp", "StartAutoConnect", "auto connection devices : *", &Timeline::OnPhones},
    {"BTAutoConnect.cpp", "StartLEScan", "Start LE scan : *", &Timeline::OnScanStarted},
    {"BTAutoConnect.cpp", "StartLEScan", "failed bt_adapter_le_start_scan: *",
     &Timeline::OnScanRefused},
    {"BTAutoConnect.cpp", "StopLEScan", "Stop Le Scan", &Timeline::OnScanStopped},
    {"BTAutoConnect.cpp", "OnLEScanTimeout", "No found mobile.*", &Timeline::OnListBegins},
    {"BTAutoConnect.cpp", "ByteArrayToHexString", "*", &Timeline::OnAdvertisement},
    {"BTAutoConnect.cpp", "ProcessLEScanResult", "manufaturerDataLen size is small",
     &Timeline::OnShortAdvertisement},
    {"BTAutoConnect.cpp", "ProcessLEScanResult", "fail to get manufacturer data",
     &Timeline::OnShortAdvertisement},
    {"MobileList.cpp", "Exist", "Found * in list", &Timeline::OnPhoneHeard},

    {"BTAutoConnect.cpp", "ConnectToDeviceInList", "Try to connect device",
     &Timeline::OnNextOfList},
    {"BTAutoConnect.cpp", "ConnectToDeviceInList", "No more device to try connect",
     &Timeline::OnListEnded},
    {"BTAutoConnect.cpp", "ConnectToDevice", "Not supported condition", &Timeline::OnRefused,
     "the ambient picture no longer shows"},
    {"BTAutoConnect.cpp", "ConnectToDevice", "Not bonded device", &Timeline::OnNotBonded},
    {"BTAutoConnect.cpp", "ConnectToDevice", "Try to connect *", &Timeline::OnConnecting},
    {"BTAutoConnect.cpp", "OnAudioSinkConnected", "result : *, address : *",
     &Timeline::OnConnectResult},
    {"BTAutoConnect.cpp", "OnAudioSinkDisconnected", "result : *, address : *",
     &Timeline::OnDisconnected},

    {"BTAutoConnect.cpp", "CheckPlayback", "already playing", &Timeline::OnPlaysAlready},
    {"BTAutoConnect.cpp", "CheckPlayback", "send play cmd to bmplayer", &Timeline::OnPlaySent},
    {"BTAutoConnect.cpp", "CheckPlayback", "fail to get playing status", &Timeline::OnPlayNotSent},
    {"AppManagerUtil.cpp", "LaunchApp", "Failed to launch com.velmora.tv.bmp",
     &Timeline::OnLaunchFailed, "the media player cannot be launched"},

    {"", "", "Bluetooth is off: *", &Timeline::OnRefused, "Bluetooth is off"},
    {"", "", "* is not connected: *", &Timeline::OnNotConnected},
    {"", "", "* cannot be connected: *", &Timeline::OnNotConnected},
    {"", "", "LE scan on * does not start: *", &Timeline::OnScanFailed},
    {"", "", "LE scan on * ended, *", &Timeline::OnScanFailed},
    {"", "", "LE scan on *: another program discovers *", &Timeline::OnBluetooth},
    {"", "", "* shows no player", &Timeline::OnPlayerUnknown, "the phone shows no player"},
    {"", "", "the player of * has not told its state", &Timeline::OnPlayerUnknown,
     "the phone's player has not told its state"},
    {"", "", "launch of com.velmora.tv.bmp failed: *", &Timeline::OnLaunchFailed},
    {"", "", "bluetoothd *", &Timeline::OnBluetooth},
    {"", "", "adapter *", &Timeline::OnBluetooth},
    {"", "", "the system bus is gone*", &Timeline::OnBluetooth},

    {kPlayerFile, "", "* plays", &Timeline::OnPlays},
    {kPlayerFile, "", "no music from *: *", &Timeline::OnSilent},
    {kPlayerFile, "", "no music: *", &Timeline::OnSilent},
    {kPlayerFile, "", "the play command failed: *", &Timeline::OnSilent},
};

const Timeline::KnownLine* Timeline::Recognise(const LogRecord& record, Texts& texts) {
    for (const KnownLine& line : kLines) {
        if (record.file == line.file &&
            (*line.function == '\0' || record.function == line.function) &&
            Matches(line.message, record.message, texts)) {
            texts.emplace(texts.begin(), *line.meaning == '\0' ? record.message : line.meaning);
            return &line;
        }
    }
    return nullptr;
}

}  // namespace Tvctl
