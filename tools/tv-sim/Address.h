// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TvSim {

[[nodiscard]] inline bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}
// Sets `address` to the text in upper case. False when the text is not six two-digit groups of
// hexadecimal digits with colons between them.
[[nodiscard]] bool ParseAddress(const std::string& text, std::string& address);
// A resolvable private address, as phones use them, that only `seed` decides.
[[nodiscard]] std::string PrivateAddress(std::uint64_t seed);
// A number with all bits mixed, the same for the same seed on every machine.
[[nodiscard]] std::uint64_t Mix(std::uint64_t seed);
// The bytes that pairs of hexadecimal digits give; false when the text is something else.
[[nodiscard]] bool ParseBytes(const std::string& hexadecimal, std::vector<unsigned char>& bytes);

}  // namespace TvSim
