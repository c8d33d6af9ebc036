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

}  // namespace

ConfigWatcher::ConfigWatcher(ConfigFile& file) : m_file(file), m_pause(kRetryMs, kMaxRetryMs) {}

bool ConfigWatcher::Add(const std::string& key, vconf_callback_fn callback, void* userData) {
    if (!Start()) {
        return false;
    }
    // Read after the watch stands: a write from now on is a change.
    const ConfigLookup present = m_file.Lookup(key);
    const bool isMissed = m_hasMissedRead || IsMissed(present.status);
    const auto mark = isMissed ? std::nullopt : std::optional(m_file.WriteMark(present));
    if (isMissed) {
        RetryLater();
    }
    m_registrations.push_back(
        std::make_shared<Registration>(Registration{key, callback, userData, mark, true}));
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
        registration->lastSeen.reset();
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
    std::map<std::string, std::pair<ConfigStatus, std::uint64_t>> known;  // by key, with its mark
    const auto registrations = m_registrations;
    for (const auto& registration : registrations) {
        if (!registration->isActive) {
            continue;
        }
        const auto [entry, isNew] = known.try_emplace(registration->key);
        auto& [status, mark] = entry->second;
        if (isNew) {
            const ConfigLookup lookup = m_file.Lookup(registration->key);
            status = lookup.status;
            mark = m_file.WriteMark(lookup);
        }
        // A file that is gone or broken is a fault and not a write.
        const bool isKnown = status == ConfigStatus::kOk || status == ConfigStatus::kAbsent;
        if (isKnown && mark != registration->lastSeen) {
            registration->lastSeen = mark;
            _keynode_t node = {registration->key};
            registration->callback(&node, registration->userData);
        }
    }
    const bool isMissed = std::any_of(
        known.begin(), known.end(), [](const auto& entry) { return IsMissed(entry.second.first); });
    if (isMissed) {
        RetryLater();
    } else if (!m_retry.IsRunning()) {
        m_pause.Reset();
    }
}

}  // namespace Platform
