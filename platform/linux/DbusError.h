// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <string>

namespace Platform {

// "<error name>: <message>", without what GDBus puts around them.
[[nodiscard]] std::string DescribeError(const GError& error);

}  // namespace Platform
