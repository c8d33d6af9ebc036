// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/CHandle.h"

namespace Platform {

// "<error name>: <message>" of an error that came over the bus, without what GDBus puts around
// them; only the message of any other.
[[nodiscard]] inline std::string DescribeError(const GError& error) {
    const GErrorPtr plain(g_error_copy(&error));
    const GStringPtr remoteName(g_dbus_error_get_remote_error(plain.get()));
    g_dbus_error_strip_remote_error(plain.get());
    return remoteName != nullptr ? std::string(remoteName.get()) + ": " + plain->message
                                 : plain->message;
}

}  // namespace Platform
