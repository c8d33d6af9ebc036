// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <string>

namespace Bluez {

// What the mirror tells about bluetoothd's objects. A listener may start and drop operations, but
// not listeners, while it is told.
class Listener {
public:
    Listener() = default;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    virtual ~Listener() = default;

    // bluetoothd left the bus; every object is gone already.
    virtual void OnServiceGone() {}
    // The adapter at `path` lost its power or was pulled.
    virtual void OnAdapterLost(const std::string& /*path*/) {}
    // A link went down, or its device was removed.
    virtual void OnDeviceDisconnected(const std::string& /*path*/) {}
    virtual void OnTransportAdded(const std::string& /*device*/) {}
    virtual void OnTransportRemoved(const std::string& /*device*/) {}
    // A player was made or told something of itself.
    virtual void OnPlayerChanged(const std::string& /*path*/) {}
    // An advertisement of the device at `path` was received just now; `manufacturerData` is the
    // a{qv} of company identifier to ay, NULL when bluetoothd told of none.
    virtual void OnAdvertisement(const std::string& /*path*/, GVariant* /*manufacturerData*/,
                                 int /*rssi*/) {}
};

}  // namespace Bluez
