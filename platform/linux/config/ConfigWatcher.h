// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Source.h"
#include "platform/config_store.h"
#include "platform/linux/base/GrowingPause.h"
#include "platform/linux/base/PathWatch.h"
#include "platform/linux/config/ConfigFile.h"

namespace Platform {

// Tells on the main loop when keys of one configuration file were written, by whatever process.
// Nothing is polled: a writer touches the notification file, and each watched key's write mark is
// compared with the last one seen, so that no write is missed and none is told twice. Callbacks may
// add and remove registrations, their own included. Main loop's thread only.
class ConfigWatcher {
public:
    // `file` must outlive the watcher.
    explicit ConfigWatcher(ConfigFile& file);
    ConfigWatcher(const ConfigWatcher&) = delete;
    ConfigWatcher& operator=(const ConfigWatcher&) = delete;

    // False when the kernel gives no watch; logged.
    [[nodiscard]] bool Add(const std::string& key, vconf_callback_fn callback, void* userData);
    // False when there is no such registration.
    [[nodiscard]] bool Remove(const std::string& key, vconf_callback_fn callback);
    // A reader could not read the file and took a value for missing: once the file can be read,
    // every watched key counts as changed.
    void MissedRead();
    // Whether a lookup that gave this status is such a read; what is too large waits for a write.
    [[nodiscard]] static bool IsMissed(ConfigStatus status) {
        return IsFailure(status) && status != ConfigStatus::kTooLarge;
    }

private:
    struct Registration {
        std::string key;
        vconf_callback_fn callback;
        void* userData;
        std::optional<std::uint64_t> lastSeen;  // write mark; any is news when empty
        bool isActive;
    };

    bool Start();
    void Stop();
    void TellChanges();
    // Looks again after a pause, which doubles as long as the file cannot be read.
    void RetryLater();

    ConfigFile& m_file;
    // Shared with a round of callbacks under way, in which one may be removed.
    std::vector<std::shared_ptr<Registration>> m_registrations;
    std::unique_ptr<PathWatch> m_watch;
    Source m_news;
    Timer m_retry;
    GrowingPause m_pause;
    bool m_hasMissedRead = false;
};

}  // namespace Platform
