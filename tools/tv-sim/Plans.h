// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace TvSim {

// Manufacturer-specific data of an advertisement: the bytes after each company identifier.
using ManufacturerData = std::map<std::uint16_t, std::vector<unsigned char>>;

// What bluetoothd does with calls, by the name of the method.
struct CallFaults {
    std::set<std::string> silentMethods;             // taken and never answered
    std::map<std::string, std::string> refusedOnce;  // the next call gets that error
    // So long after its effect a call is answered. What only asks, is asked so much later.
    std::map<std::string, int> answersAfterMs;
};

// The TV may have two adapters.
enum class Which { kFirst, kSecond };

// A Bluetooth adapter of the TV. Times are milliseconds from the start of the simulator.
struct AdapterPlan {
    std::string address = "00:AA:01:00:00:00";
    std::string name = "tv";
    int number = 0;  // of its path, /org/bluez/hciN
    bool present = true;
    bool powered = true;
    int appearsAfterMs = 0;       // an absent one appears then; 0: a present one is there at once
    int powersOnAfterMs = 0;      // after it appeared or powered off by itself; 0: never
    int powersOffAfterMs = 0;     // after the first discovery began; 0: never
    int pulledAfterMs = 0;        // after a discovery began; 0: never
    int forgetsAfterMs = 30000;   // a device that is not bonded, after it was heard last
    int discoveryTakesMs = 5;     // until one that was asked for runs, and is answered
    bool othersDiscover = false;  // another program does, as long as it is powered
    bool knowsPattern = true;     // false: as bluetoothd before it took a Pattern in a filter
};

// A second adapter as long as nobody plugs one in.
[[nodiscard]] inline AdapterPlan SecondAdapter() {
    AdapterPlan plan;
    plan.address = "00:AA:01:00:00:01";
    plan.name = "tv #2";
    plan.number = 1;
    plan.present = false;
    return plan;
}

// How a phone answers a connection request of the TV.
struct ConnectAnswer {
    enum class Kind { kAccept, kRefuse, kNever };
    Kind kind = Kind::kAccept;
    std::string errorName;  // kRefuse: what BlueZ says then
    std::string errorMessage;
};

// One phone. Times are milliseconds; what is said to happen "after" 0 happens at once, unless 0 is
// said to mean never.
struct PhonePlan {
    std::string id;                 // how scenario, log and tests call it
    std::string address;            // upper case
    std::string name;               // as the phone calls itself
    std::string registered = "on";  // with the service: "on", "off" (its setting) or "no"
    Which adapter = Which::kFirst;  // whose bond and reach it has; the other one never hears it
    bool bonded = true;
    bool forgotTv = false;  // it lost its half of the bond, so it refuses connections
    std::uint32_t deviceClass = 0x5A020C;
    std::string modalias = "usb:v1D6Bp0246d0542";

    bool advertises = true;
    // The TV's, which sends the phone's address. Without it bluetoothd knows a bonded phone by the
    // identity key that was exchanged when they were paired.
    bool hasApplication = true;
    int advertiseAfterMs = 1000;  // after each start of a discovery
    int advertiseEveryMs = 200;
    int advertiseCount = 0;  // 0: until the discovery ends
    bool connectable = true;
    std::string advertiseFrom;  // the advertisements' address
    ManufacturerData manufacturerData;

    ConnectAnswer connect;
    std::optional<ConnectAnswer> firstConnect;  // to the first request, when it differs
    int connectAfterMs = 60;
    int connectsByItselfAfterMs = 0;  // after the adapter came up; 0: never
    int disconnectsAfterMs = 0;       // after it was connected; 0: never

    std::string playerStatus = "paused";  // a value of MediaPlayer1.Status; "none": no player
    int playerAfterMs = 40;               // after the connection request was answered
    int statusAfterMs = 30;               // after the player appeared
    bool playsOnPlay = true;
    bool linkGoesDown = false;  // before each refusal it comes up and goes down again
};

// Devices around the TV that advertise and have nothing to do with it.
struct StrangersPlan {
    std::uint64_t count = 0;
    std::uint64_t everyMs = 100;           // each stranger's interval
    std::uint64_t rotateAddressEvery = 0;  // advertisements per address; 0: it keeps its address
    bool connectable = true;
    bool randomData = true;  // else all send manufacturerData
    ManufacturerData manufacturerData;
};

// One advertisement as the TV's radio receives it.
struct Advertisement {
    std::string address;  // upper case
    bool randomAddress = true;
    bool connectable = true;
    int rssi = -60;  // dBm
    ManufacturerData manufacturerData;
};

// A phone with the defaults of the format: it advertises from a random address of its own and
// carries `address`, upper case, in its manufacturer data.
[[nodiscard]] PhonePlan MakePhone(const std::string& id, const std::string& address);

}  // namespace TvSim
