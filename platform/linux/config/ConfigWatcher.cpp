// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/ConfigWatcher.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "platform/linux/base/PlatformLog.h"

struct _keynode_t {
    const std::string& key;
};

namespace Platform {

namespace {

constexpr int kRetryMs = 1000;
constexpr int kMaxRetryMs = 60000;
constexpr int64_t kNeverSeen = -1;

}  // namespace

ConfigWatcher::ConfigWatcher(ConfigFile& file) : m_file(file), m_pause(kRetryMs, kMaxRetryMs) {}

bool ConfigWatcher::Add(const std::string& key, vconf_callback_fn callback, void* userData) {
    if (!Start()) {
        return false;
    }
    // Read after the watch stands: a write from now on is a change.
    const ConfigLookup present = m_file.Lookup(key);
    const bool isMissed = m_hasMissedRead || IsMissed(present.status);
    const int64_t revision = isMissed ? kNeverSeen : present.revision;
    if (isMissed) {
        RetryLater();
    }
    m_registrations.push_back(
        std::make_shared<Registration>(Registration{key, callback, userData, revision, true}));
    return true;
}

bool ConfigWatcher::Remove(const std::string& key, vconf_callback_fn callback) {
    const auto end =
        std::remove_if(m_registrations.begin(), m_registrations.end(),
                       [&](const std::shared_ptr<Registration>& registration) {
                           if (registration->key != key || registration->callback != callback) {
                               return false;
                           }
                           registration->isActive = false;
                           return true;
                       });
    const bool found = end != m_registrations.end();
    m_registrations.erase(end, m_registrations.end());
    if (m_registrations.empty()) {
        Stop();
    }
    return found;
}

void ConfigWatcher::MissedRead() {
    m_hasMissedRead = true;
    for (const auto& registration : m_registrations) {
        registration->lastSeen = kNeverSeen;
    }
    if (!m_registrations.empty()) {
        RetryLater();
    }
}

void ConfigWatcher::RetryLater() {
    if (!m_retry.IsRunning()) {
        m_retry = Timer::Once(m_pause.Next(), [this] {
            m_retry.Cancel();
            TellChanges();
        });
    }
}

bool ConfigWatcher::Start() {
    if (m_watch != nullptr) {
        return true;
    }
    auto watch = std::make_unique<PathWatch>(m_file.NotificationPath());
    if (!watch->IsValid()) {
        PLATFORM_WARN("cannot watch %s: %s", m_file.NotificationPath().c_str(),
                      std::strerror(watch->Error()));
        return false;
    }
    m_watch = std::move(watch);
    m_news = Source::OnReadable(m_watch->Fd(), [this] {
        if (m_watch->Consume()) {
            TellChanges();
        }
    });
    return true;
}

void ConfigWatcher::Stop() {
    m_news.Cancel();
    m_retry.Cancel();
    m_watch.reset();
}

void ConfigWatcher::TellChanges() {
    m_hasMissedRead = false;
    std::map<std::string, ConfigLookup> lookups;
    const auto registrations = m_registrations;
    for (const auto& registration : registrations) {
        if (!registration->isActive) {
            continue;
        }
        auto known = lookups.find(registration->key);
        if (known == lookups.end()) {
            known = lookups.emplace(registration->key, m_file.Lookup(registration->key)).first;
        }
        const ConfigLookup& lookup = known->second;
        // A file that is gone or broken is a fault and not a write.
        const bool isKnown =
            lookup.status == ConfigStatus::kOk || lookup.status == ConfigStatus::kAbsent;
        if (isKnown && lookup.revision != registration->lastSeen) {
            registration->lastSeen = lookup.revision;
            _keynode_t node = {registration->key};
            registration->callback(&node, registration->userData);
        }
    }
    const bool isMissed = std::any_of(lookups.begin(), lookups.end(), [](const auto& lookup) {
        return IsMissed(lookup.second.status);
    });
    if (isMissed) {
        RetryLater();
    } else if (!m_retry.IsRunning()) {
        m_pause.Reset();
    }
}

}  // namespace Platform
