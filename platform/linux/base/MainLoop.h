// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Platform {

// An object of the process on the system bus, with an interface that is empty:
// org.freedesktop.DBus.Properties.GetAll of it is answered by the main loop. What other questions a
// process answers by itself, org.freedesktop.DBus.Peer and introspection, the bus library answers
// on a thread of its own, also while the loop hangs.
inline constexpr char kMainLoopPath[] = "/com/velmora/tv/platform";
inline constexpr char kMainLoopInterface[] = "com.velmora.tv.platform.MainLoop";

// Lets others see whether the main loop runs: programs that ask that object, and systemd, if it
// watches this process (WatchdogSec=), twice in each interval in which it wants to hear of it. To
// be called on the main loop, before a name on the bus is asked for; a second time it does nothing.
void TellOfMainLoop();

}  // namespace Platform
