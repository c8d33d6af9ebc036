// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string_view>

// What the journal's entries have beside their text, for tools. The names and the ids are an
// interface: they stay when a text changes. docs/operating.md lists them, and the message catalog
// is made of both: packaging/message-catalog, which reads this table, too.

namespace Platform {

inline constexpr std::string_view kMessageIdField = "MESSAGE_ID";
inline constexpr std::string_view kEventField = "BT_EVENT";
inline constexpr std::string_view kReasonField = "REASON";
// Others that the events have: the phone's address as in the text, a result's number.
inline constexpr std::string_view kAddressField = "BT_ADDRESS";
inline constexpr std::string_view kResultField = "BT_RESULT";

// A line that matters.
struct LogEvent {
    std::string_view id;    // MESSAGE_ID, one for each row, never changed
    std::string_view name;  // BT_EVENT: what happened, the same for lines that mean the same
    std::string_view text;  // the line's printf format after its place, with only %s and %d
    // The field that each of its arguments is, in their order; "" for none.
    std::array<std::string_view, 2> fields = {};
    std::string_view reason = {};    // REASON, where the text has none
    std::string_view function = {};  // that logs it; "" for any
    std::string_view first = {};     // what its first argument reads; "" for anything
};

// The first row that fits is a line's.
// clang-format off
inline constexpr LogEvent kLogEvents[] = {
    {"588c9ec020544a5a89c142d30a28deb8", "started", "Name acquired %s", {"BUS_NAME"}},
    {"e82eb812b866409d93632244f76e80db", "ended",
     "the system bus is gone, and with it this process: %s", {"REASON"}},
    {"a3e2e3b0c2af4a519839860fd12403d7", "wake-up", "+", {}, "", "OnPrePareAndDoAutoConnect"},
    {"ca4648e056674537adaa6eeb098b93f6", "window", "SetWakupTime for btautoconnect"},
    {"2720ff09b3324391ae62fd87c2bcb578", "attempt", "Start ZEMI bluetooth auto connection"},
    {"46408a50e0ad4af9b10ac153e92f0f80", "refused",
     "Not the zemi tv", {}, "the product is not a rotating TV"},
    {"9cefe646f0d54bb9be7f1f5e14b653fc", "refused",
     "Not support power reason", {}, "the wake-up reason or the key musictvfail forbids it"},
    {"d6d6a3d77c5540bcba8de5a568e1412f", "refused", "Bluetooth is off: %s", {"REASON"}},
    {"4d995ee2b03a4575844c59f9f18c5a89", "refused",
     "Turn On TV : %d", {}, "the wake-up window is not open", "IsWakeUpTime", "0"},
    {"a155ca29e81248a6a4a903a89585f8ce", "refused",
     "auto connection list is empty", {}, "no registered phone qualifies"},
    {"5fd06af4342b4e5288f3b5b43f4112c8", "refused",
     "Not supported condition", {}, "the ambient picture does not show"},
    {"6ba2bcf9e8f542ea94330048a3646151", "scan-started", "Start LE scan : %s", {"BT_RESULT_NAME"}},
    {"4f92636ef37c46e8addb2e41558ff1db", "scan-failed",
     "failed bt_adapter_le_start_scan: %s ", {"BT_RESULT_NAME"}},
    {"3f11efa185fc4a1c8b63c9b1e6fe0b05", "scan-failed",
     "LE scan on %s does not start: %s", {"BT_ADAPTER", "REASON"}},
    {"c403d717cbdc49528106cfeb91cace3d", "scan-failed",
     "LE scan on %s does not start: no success within %d s", {"BT_ADAPTER"}, "no success in time"},
    {"c3b73fd773444015867b8e77b0dc7998", "scan-failed",
     "LE scan on %s ended, %s", {"BT_ADAPTER", "REASON"}},
    {"14600aba0b1a4b6a94aaf65165890583", "scan-stopped", "Stop Le Scan"},
    {"ffc4f94872df40a1b1d6bdb221e1eb0a", "heard", "Found %s in list", {"BT_ADDRESS"}},
    {"d3dbadb69ea1467cab39973cdd9fe81c", "list-begins",
     "No found mobile. Try to connect mobiles in list sequentially"},
    {"eeed6a8f02364dfba64a2558a3c5a2b5", "list-ended", "No more device to try connect"},
    {"42e0133f321c450188d5f61fa18b25e4", "not-tried",
     "%s is not bonded", {"BT_ADDRESS"}, "it is not bonded"},
    {"bd6eca00821f492faec4ec0e28663aa5", "not-tried",
     "%s cannot be connected: %s", {"BT_ADDRESS", "REASON"}},
    {"30f64427d9794b15a08bd833c092d064", "connecting", "Try to connect %s", {"BT_ADDRESS"}},
    {"64b5f58d2c16409a90af73008aa0b44e", "connected",
     "result : %d, address : %s", {"BT_RESULT", "BT_ADDRESS"}, "", "OnAudioSinkConnected", "0"},
    {"5620e560985e4dae8799c2ebd5569c60", "connect-result",
     "result : %d, address : %s", {"BT_RESULT", "BT_ADDRESS"}, "", "OnAudioSinkConnected"},
    {"f2d412e7c26c411b951c4df1bef80bfb", "not-connected",
     "%s is not connected: %s", {"BT_ADDRESS", "REASON"}},
    {"acf403dccfd4417db1181ec2611e5644", "left",
     "result : %d, address : %s", {"BT_RESULT", "BT_ADDRESS"}, "", "OnAudioSinkDisconnected"},
    {"e7d9aee0c9a84c6aa842e3972d7c9647", "plays-already", "already playing"},
    {"33bbcaf67387431f962892b0b63de770", "play-sent", "send play cmd to bmplayer"},
    {"7df0fa212e1145a199b5a868cc7b5c86", "play-not-sent", "fail to get playing status"},
    {"779c438d419a48e8b40f8cde5c4efe59", "no-player",
     "no play status: the phone that was asked for is not connected", {}, "the phone has left"},
    {"752ea934126947e1912b7b9eaea81adb", "no-player",
     "%s shows no player", {"BT_ADDRESS"}, "the phone shows no player"},
    {"c1ebaa655f6c4a23b77593d8b5ea7088", "no-player",
     "the player of %s has not told its state", {"BT_ADDRESS"},
     "the phone's player has not told its state"},
    {"3a1536d7c918432093e9045761ebafe8", "launch-failed",
     "launch of %s failed: %s", {"APPLICATION", "REASON"}},
    {"e1c6358057c64a77a8eb0017a96aefaf", "plays", "%s plays", {"BT_ADDRESS"}},
    {"752be63420d7497b883f5556b3b75ce0", "no-music",
     "no music from %s: %s", {"BT_ADDRESS", "REASON"}},
    {"451de8e60a0545c7b0946db21bcec578", "no-music", "no music: %s", {"REASON"}},
    {"0c08edbb69244a9c84b3bba6baafeec1", "no-music", "the play command failed: %s", {"REASON"}},
};
// clang-format on

}  // namespace Platform
