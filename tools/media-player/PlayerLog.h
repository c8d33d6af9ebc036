// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/system_log.h"

// The media player's log lines, printf style.
#define PLAYER_INFO(...) __dlog_print(LOG_ID_MAIN, DLOG_INFO, "MEDIA_PLAYER", __VA_ARGS__)
#define PLAYER_WARN(...) __dlog_print(LOG_ID_MAIN, DLOG_WARN, "MEDIA_PLAYER", __VA_ARGS__)
#define PLAYER_ERROR(...) __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "MEDIA_PLAYER", __VA_ARGS__)
