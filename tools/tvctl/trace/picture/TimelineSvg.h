// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

// The timelines, one at least, as an SVG picture, one panel below the other. Of very many wake-ups
// it shows the last ones, and says so.
[[nodiscard]] std::string ToSvg(const std::vector<WakeUp>& wakeUps);

}  // namespace Tvctl
