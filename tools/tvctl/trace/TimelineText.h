// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "tools/tvctl/trace/WakeUp.h"

namespace Tvctl {

// The timelines as lines of text: for each wake-up its outcome, then what happened, in the order of
// the times, each line with its time.
[[nodiscard]] std::vector<std::string> ToLines(const std::vector<WakeUp>& wakeUps);

// The same as JSON: an array with an object for each wake-up, times in seconds from its signal.
[[nodiscard]] Json::Value ToJson(const std::vector<WakeUp>& wakeUps);

}  // namespace Tvctl
