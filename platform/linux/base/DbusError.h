// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <string>

namespace Platform {

// "<error name>: <message>" of an error that came over the bus, without what GDBus puts around
// them; only the message of any other.
[[nodiscard]] std::string DescribeError(const GError& error);

}  // namespace Platform
