// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "tools/tvctl/trace/Statistics.h"

namespace Tvctl {

// What many wake-ups led to, as an SVG picture: the outcomes, the time until there was music, the
// reasons where there was none, and the phones that were tried most.
[[nodiscard]] std::string ToSvg(const Statistics& statistics, std::size_t boxes);

}  // namespace Tvctl
