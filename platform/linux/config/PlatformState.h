// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/linux/config/ConfigStore.h"

namespace Platform {

// The TV's state on a host that has no TV: numbers under memory/platform/ in the configuration
// store, where tools and resume hooks set them and where requests become visible.

inline std::string StateKey(const char* name) {
    return std::string("memory/platform/") + name;
}

// 0 when nothing is known.
inline int GetState(const char* name) {
    return ConfigStore::Instance().GetInt(StateKey(name)).value_or(0);
}

// 0 on success, negative on failure.
inline int SetState(const char* name, int value) {
    return ConfigStore::Instance().SetInt(StateKey(name), value) ? 0 : -1;
}

}  // namespace Platform
