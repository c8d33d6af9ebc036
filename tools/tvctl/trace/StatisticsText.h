// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tools/tvctl/trace/Statistics.h"

namespace Tvctl {

// Of a list that may be long.
inline constexpr std::size_t kMostRows = 20;

// "81.2 %", of a whole that may be 0.
[[nodiscard]] std::string Share(std::size_t part, std::size_t whole);
// "4.21 s", "60 s or more"
[[nodiscard]] std::string DurationText(int ms);
// "3-4 s", "12 s or more"
[[nodiscard]] std::string RangeText(const Durations::Bar& bar);

[[nodiscard]] std::vector<std::string> ToLines(const Statistics& statistics, std::size_t boxes);
[[nodiscard]] Json::Value ToJson(const Statistics& statistics, std::size_t boxes);

}  // namespace Tvctl
