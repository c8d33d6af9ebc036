// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Tvctl {

// A phone that the service would list, and what bluetoothd knows about it.
struct ListedPhone {
    std::string address;  // upper case
    bool isBonded = false;
    bool hasA2dpSource = false;
    bool isConnected = false;
};

// What the doctor found.
struct Examination {
    std::optional<bool> isServiceRunning;  // empty when the system bus did not answer
    bool isZemi = false;
    std::string featuresFault;  // why the features cannot be read; else empty
    std::string stateFault;     // the same of the keys below memory/
    int wakeUpReason = 0;
    int blocked = 0;                // of the key that forbids an attempt
    std::string adapter;            // the powered one
    std::string bluetoothObstacle;  // why there is none; empty when there is one
    std::size_t registered = 0;     // phones, those that are not listed included
    std::string registryFault;      // why they cannot be read; else empty
    std::vector<ListedPhone> phones;
    int ambientMode = 0;
    int ambientType = 0;
    bool hasSink = false;
    bool isDiscovering = false;  // the adapter, for any program
    bool isPlayerInstalled = false;
};

// One condition between a wake-up and music.
struct Finding {
    std::string condition;
    bool holds = false;
    std::string found;   // what is there, whether it holds or not
    std::string remedy;  // a fix; empty when it holds
};

// Looks at everything that a wake-up depends on. Waits some seconds for bluetoothd at most.
[[nodiscard]] Examination Examine();

// Every condition in the order in which the service meets them. A condition that cannot be looked
// at because an earlier one does not hold is left out.
[[nodiscard]] std::vector<Finding> Diagnose(const Examination& examination);

}  // namespace Tvctl
