// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/base/MainLoop.h"
#include "platform/linux/bluez/Audio.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Scan.h"

namespace Bluez {

// What implements the Bluetooth interface, made on first use. Main loop only.
class Service {
public:
    static Service& Get() {
        static Service service;
        return service;
    }

    Mirror mirror;
    Scan scan{mirror};
    Audio audio{mirror, scan};

private:
    Service() { Platform::TellOfMainLoop(); }
};

}  // namespace Bluez
