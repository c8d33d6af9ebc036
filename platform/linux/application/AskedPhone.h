// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Platform {

// Address, upper case, of the phone whose connection was asked for last and came about; empty
// before there was one. Audio connections set it and launches carry it, for what is launched then
// is meant for that phone: the two do not know each other. Main loop only.
inline std::string& AskedPhone() {
    static std::string address;
    return address;
}

}  // namespace Platform
