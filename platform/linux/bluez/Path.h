// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Bluez {

// The address in the object path of a device, 'ADAPTER/dev_AA_BB_CC_DD_EE_FF'; empty when it is not
// one.
std::string AddressOfPath(const std::string& path);
// The number of the stream at `path`; -1 when it has none. The higher one is the newer: bluetoothd
// ends these paths in '/fdN', with N from one counter that rises over all devices for as long as it
// runs (BlueZ, profiles/audio/transport.c, media_transport_create).
int TransportNumber(const std::string& path);
// Whether the object at `path` is below the one at `parent`; nothing is when that is empty.
bool IsBelow(const std::string& path, const std::string& parent);

}  // namespace Bluez
