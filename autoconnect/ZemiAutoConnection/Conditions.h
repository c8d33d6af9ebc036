// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "common/Address.h"

// The conditions for connecting a phone after a wake-up, and the numbers and names that go with
// them. Used by the service, by the tools that explain what it does, and by the media player.
namespace Conditions {

// Only the platform knows what these reasons mean. An unknown reason is accepted.
constexpr bool IsWakeUpReasonAccepted(int reason) {
    return reason != 41 && reason != 94 && reason != 95;
}

// `blocked`: the key memory/bluetooth_nirvoui/musictvfail, 0 when it cannot be read.
constexpr bool IsBlocked(int blocked) {
    return blocked == 1;
}

// The ambient picture must show (ambient mode 1), and be of the general type (bit 0).
constexpr bool IsAmbientModeAccepted(int mode) {
    return mode == 1;
}
constexpr bool IsAmbientTypeAccepted(int type) {
    return (type & 1) != 0;
}

// How long after a wake-up an attempt may begin.
inline constexpr unsigned int kWakeUpWindowMs = 10000;

// The application that tells a connected phone to play.
inline constexpr const char* kMediaPlayerAppId = "com.velmora.tv.bmp";

// The packed list of masked addresses: an address begins every kPackedStride characters; the
// character between two addresses has no meaning.
inline constexpr std::size_t kPackedStride = kAddressLength + 1;

}  // namespace Conditions
