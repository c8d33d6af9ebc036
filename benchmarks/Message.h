// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

// What the radio says on the bus. Whatever fails ends the program.

namespace Bench {

constexpr char kService[] = "com.velmora.tv.bt.autoconnect";
constexpr char kServicePath[] = "/com/velmora/tv/bt/autoconnect";
constexpr char kBare[] = "com.velmora.tv.bench.Bare";
constexpr char kAdapter[] = "/org/bluez/hci0";
constexpr char kDeviceInterface[] = "org.bluez.Device1";
constexpr char kObjectManager[] = "org.freedesktop.DBus.ObjectManager";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
constexpr char kSinkUuid[] = "0000110b-0000-1000-8000-00805f9b34fb";
constexpr std::uint64_t kAnswerUs = 60'000'000;

inline std::uint64_t NowUs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

inline int Check(int result, const char* what) {
    if (result < 0) {
        std::fprintf(stderr, "radio: %s: %s\n", what, strerror(-result));
        std::exit(1);
    }
    return result;
}

// A phone's address begins with A0, a stranger's with B0.
inline std::string Address(int first, int number, char separator) {
    char text[18];
    std::snprintf(text, sizeof text, "%02X%c00%c00%c%02X%c%02X%c%02X", first, separator, separator,
                  separator, (number >> 16) & 0xFF, separator, (number >> 8) & 0xFF, separator,
                  number & 0xFF);
    return text;
}

inline std::string DevicePath(int first, int number) {
    return std::string(kAdapter) + "/dev_" + Address(first, number, '_');
}

// A message that is being made.
class Message {
public:
    explicit Message(sd_bus_message* message) : m_message(message) {}
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message() { sd_bus_message_unref(m_message); }

    template <typename... Values>
    Message& Append(const char* types, Values... values) {
        Check(sd_bus_message_append(m_message, types, values...), "append");
        return *this;
    }
    Message& Open(char type, const char* contents) {
        Check(sd_bus_message_open_container(m_message, type, contents), "open");
        return *this;
    }
    Message& Close(int levels = 1) {
        for (int i = 0; i < levels; ++i) {
            Check(sd_bus_message_close_container(m_message), "close");
        }
        return *this;
    }
    // RSSI and ManufacturerData, the bytes 7 to 12 of which name a device.
    Message& AppendHeard(int first, int number, int rssi) {
        const std::uint8_t bytes[16] = {1,
                                        2,
                                        3,
                                        4,
                                        5,
                                        6,
                                        7,
                                        static_cast<std::uint8_t>(first),
                                        0,
                                        0,
                                        static_cast<std::uint8_t>(number >> 16),
                                        static_cast<std::uint8_t>(number >> 8),
                                        static_cast<std::uint8_t>(number)};
        Append("{sv}", "RSSI", "n", rssi);
        Open('e', "sv").Append("s", "ManufacturerData").Open('v', "a{qv}").Open('a', "{qv}");
        Open('e', "qv").Append("q", 0xFFFF).Open('v', "ay");
        Check(sd_bus_message_append_array(m_message, 'y', bytes, sizeof bytes), "bytes");
        return Close(5);
    }
    // What bluetoothd tells of a device that was just made, but for what was heard of it.
    Message& AppendDevice(int first, int number, bool isBonded) {
        const std::string address = Address(first, number, ':');
        return Append("{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}",             //
                      "Address", "s", address.c_str(), "AddressType", "s", "random",  //
                      "Alias", "s", address.c_str(), "Paired", "b", isBonded,         //
                      "Bonded", "b", isBonded, "Trusted", "b", isBonded,              //
                      "Blocked", "b", 0, "LegacyPairing", "b", 0,                     //
                      "Connected", "b", 0, "UUIDs", "as", 0,                          //
                      "Adapter", "o", kAdapter, "ServicesResolved", "b", 0);
    }
    [[nodiscard]] sd_bus_message* Get() const { return m_message; }

private:
    sd_bus_message* m_message;
};

}  // namespace Bench
