// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace Platform {

// Sends `text` as one datagram to the Unix socket at `path`, which may be an abstract one
// ("@NAME"), as systemd's services take their messages. What is too large for a datagram goes
// as a sealed file in memory, which journald accepts. False with errno when nobody took it. Any
// thread; waits while the receiver's queue is full.
bool SendDatagram(const std::string& path, std::string_view text) noexcept;

}  // namespace Platform
