// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/linux/bluez/Mirror.h"

namespace Bluez {

// Which of the advertisements that the radio hears a scan hands over. Anybody nearby may send
// anything, from as many addresses as they like, and each result is a line of the log. So that they
// neither fill it nor hide a phone:
// - an entry that names a bonded device is handed over, once in a second for each device;
// - of the others the same one of the same sender is, once in a scan, while the second has room;
// - entries too short to name a phone have room of their own, and are one result for each packet,
//   if it holds nothing else.
// A bonded device that bluetoothd knows by its identity key need not name itself: a sighting of it
// is handed over as an entry that names it.
// Main loop only.
class Hearing {
public:
    using Packet = std::vector<std::uint8_t>;  // advertising data with one manufacturer entry

    explicit Hearing(const Mirror& mirror) : m_mirror(mirror) {}

    // The product feature that switches sightings off when it is false.
    static constexpr const char* kSightingsFeature = "tv-platform/recognise_bonded_phones";
    [[nodiscard]] static bool TakesSightings();

    // A scan on that adapter begins.
    void Begin(const std::string& adapter);
    void End() { m_taken = {}; }
    // What to hand over of an advertisement of the device at `path`. `manufacturerData` is its
    // a{qv}, or NULL.
    std::vector<Packet> Take(const std::string& path, GVariant* manufacturerData);

private:
    // What may still be handed over within the second that began at `startUs`.
    struct Room {
        gint64 startUs = 0;
        int tooShort = 0;
        int strangers = 0;
        std::set<std::string> bonded;  // addresses, upper case
    };

    void Refill();
    void TakeEntries(const std::string& path, GVariant* manufacturerData,
                     std::vector<Packet>& taken);
    // Whether that bonded device was not handed over within this second.
    bool IsBondedOnesTurn(const std::string& address);
    // Takes a place of `room` for what was not handed over yet.
    bool HasRoom(const std::string& path, const Packet& packet, int& room);

    const Mirror& m_mirror;
    std::string m_adapter;
    bool m_takesSightings = true;
    Room m_room;
    std::unordered_set<std::string> m_taken;  // sender and packet
    bool m_isFloodTold = false;
};

}  // namespace Bluez
