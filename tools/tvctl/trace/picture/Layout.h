// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the pictures have in common.

namespace Tvctl {

inline constexpr double kWidth = 1000;
inline constexpr double kMargin = 24;
inline constexpr double kTitleHeight = 52;
inline constexpr double kLabelSize = 12;

inline constexpr const char* kBlue = "#4c78a8";
inline constexpr const char* kPale = "#c6d6ea";
inline constexpr const char* kPaler = "#e8eff7";
inline constexpr const char* kGreen = "#2a9d5c";
inline constexpr const char* kRed = "#d1495b";
inline constexpr const char* kAmber = "#d98a00";
inline constexpr const char* kGrey = "#8c959f";
inline constexpr const char* kGrid = "#e3e7eb";
// By Verdict.
inline constexpr const char* kVerdictColours[] = {kGreen, kAmber, kRed, kAmber, kGrey};

}  // namespace Tvctl
