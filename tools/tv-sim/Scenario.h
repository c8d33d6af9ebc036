// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TvSim {

// Manufacturer-specific data of an advertisement: the bytes after each company identifier.
using ManufacturerData = std::map<std::uint16_t, std::vector<unsigned char>>;

using Pairs = std::vector<std::pair<std::string, std::string>>;

// The TV's Bluetooth adapter. Times are milliseconds from the start of the simulator.
struct AdapterPlan {
    std::string address = "00:AA:01:00:00:00";
    std::string name = "tv";
    bool present = true;
    bool powered = true;
    int appearsAfterMs = 0;      // an absent one appears then; 0: a present one is there at once
    int powersOnAfterMs = 0;     // 0: never by itself
    int pulledAfterMs = 0;       // after a discovery began; 0: never
    int forgetsAfterMs = 30000;  // a device that is not bonded, after it was heard last
    int discoveryTakesMs = 5;    // until one that was asked for runs, and is answered
    bool knowsPattern = true;    // false: as bluetoothd before it took a Pattern in a filter
    std::vector<std::string> silentMethods;  // taken and never answered, by anybody
    // The first call of a method is refused with that error.
    Pairs refusedOnce;
};

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
    bool bonded = true;
    std::uint32_t deviceClass = 0x5A020C;
    std::string modalias = "usb:v1D6Bp0246d0542";

    bool advertises = true;
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

// What the runner sets up before it starts the service.
struct TvPlan {
    bool zemi = true;
    int wakeupReason = 1;
    int ambientMode = 1;
    int ambientType = 1;
    Pairs features;
    Pairs keys;
};

// What is expected of a run.
struct Expectation {
    std::string until;        // a text that ends the run when a line holds it
    bool untilInLog = false;  // a line of the service's log, else of the simulator's events
    int withinMs = 30000;
    int settleMs = 0;                      // so long everything must stay as expected after that
    std::vector<std::string> log;          // in the service's log, in this order
    std::vector<std::string> never;        // nowhere in the service's log or the simulator's events
    std::optional<std::string> connected;  // the phone at the end, empty for none; not said: any
    std::optional<std::string> playing;
};

// One advertisement as the TV's radio receives it.
struct Advertisement {
    std::string address;  // upper case
    bool randomAddress = true;
    bool connectable = true;
    int rssi = -60;  // dBm
    ManufacturerData manufacturerData;
};

// A world to simulate, and for the runner how to set the TV up and what must come of it.
struct Scenario {
    std::string name;  // the file's name without directory and suffix
    std::string description;
    AdapterPlan adapter;
    std::vector<PhonePlan> phones;
    StrangersPlan strangers;
    TvPlan tv;
    Pairs updates;  // sent before the wake-up: phones with their new setting, "on" or "off"
    Expectation expect;

    // Borrowed; null when there is no such phone.
    [[nodiscard]] const PhonePlan* FindPhone(const std::string& id) const;
};

// A phone with the defaults of the format: it advertises from a random address of its own and
// carries `address`, upper case, in its manufacturer data.
[[nodiscard]] PhonePlan MakePhone(const std::string& id, const std::string& address);

// Reads a scenario. Empty when the file cannot be read or says something unknown or malformed;
// `error` then is one line with the file's name, the section and the key.
[[nodiscard]] std::optional<Scenario> ReadScenario(const std::string& file, std::string& error);

// The format, for a person, as `--help` prints it.
extern const char kScenarioHelp[];

}  // namespace TvSim
