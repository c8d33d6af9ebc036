// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <string>

#include "platform/bluetooth.h"

namespace Bluez {

// What bluetoothd's answer, or its absence, means to a caller of the Bluetooth interface.
bt_error_e ErrorCode(const GError& error);

// Why a connection failed with that error: what a person can do something with, where it is known,
// and the error's own name and text.
std::string WhyNotConnected(const GError& error);

// Whether bluetoothd says that it is doing this, or something in its way, already.
bool IsInProgress(const GError& error);

}  // namespace Bluez
