// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/DbusError.h"

#include "common/CHandle.h"

namespace Platform {

std::string DescribeError(const GError& error) {
    const GErrorPtr plain(g_error_copy(&error));
    const GStringPtr remoteName(g_dbus_error_get_remote_error(plain.get()));
    g_dbus_error_strip_remote_error(plain.get());
    return remoteName != nullptr ? std::string(remoteName.get()) + ": " + plain->message
                                 : plain->message;
}

}  // namespace Platform
