// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/DbusError.h"

#include "common/CHandle.h"

namespace Platform {

std::string DescribeError(const GError& error) {
    const GErrorPtr plain(g_error_copy(&error));
    const GStringPtr remoteName(g_dbus_error_get_remote_error(plain.get()));
    g_dbus_error_strip_remote_error(plain.get());
    const char* name = remoteName != nullptr ? remoteName.get() : g_quark_to_string(error.domain);
    return std::string(name) + ": " + plain->message;
}

}  // namespace Platform
