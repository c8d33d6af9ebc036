// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/base/PlatformLog.h"

// The media player's log lines, printf style.
#define PLAYER_INFO(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_INFO, "MEDIA_PLAYER", __VA_ARGS__)
#define PLAYER_WARN(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_WARN, "MEDIA_PLAYER", __VA_ARGS__)
#define PLAYER_ERROR(...) PLATFORM_PRINT(PLATFORM_HERE, DLOG_ERROR, "MEDIA_PLAYER", __VA_ARGS__)
