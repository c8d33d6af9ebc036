// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <string>

namespace Platform {

// The folder below which the platform keeps everything: $TV_ROOT, empty by default. Read once.
// Never destroyed, because threads may ask while the process's static objects are torn down.
inline const std::string& RootPath() {
    static const std::string& root = *[] {
        const char* value = std::getenv("TV_ROOT");
        return new std::string(value != nullptr ? value : "");
    }();
    return root;
}

// What an engineer edits, what survives a reboot, and what does not.
inline std::string SettingsFolder() {
    return RootPath() + "/etc/tv-platform";
}
inline std::string StateFolder() {
    return RootPath() + "/var/lib/tv-platform";
}
inline std::string RunFolder() {
    return RootPath() + "/run/tv-platform";
}

}  // namespace Platform
