// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/PathWatch.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>

namespace Platform {

namespace {

// Of a folder itself, whatever happens in it.
constexpr uint32_t kSelfEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr uint32_t kNameEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr uint32_t kFileEvents = kNameEvents | IN_CLOSE_WRITE;
constexpr uint32_t kFileGone = IN_DELETE | IN_MOVED_FROM;
constexpr uint32_t kFolderGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;

}  // namespace

PathWatch::PathWatch(const std::string& path) : m_inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    std::error_code ignored;
    std::filesystem::path folder;
    for (const auto& name : std::filesystem::absolute(path, ignored).lexically_normal()) {
        if (!folder.empty()) {
            m_folders.push_back(folder);
            m_names.push_back(name);
        }
        folder /= name;
    }
    if (!m_inotify.IsOpen()) {
        m_error = errno;
        return;
    }
    Arm();
}

uint32_t PathWatch::EventsOf(size_t folder) const {
    if (folder + 1 == m_folders.size()) {
        return kSelfEvents | kFileEvents;
    }
    // A link may be replaced while what it leads to stays as it is.
    std::error_code ignored;
    const bool isLink = std::filesystem::is_symlink(m_folders[folder + 1], ignored);
    return m_isFileThere && !isLink ? kSelfEvents : kSelfEvents | kNameEvents;
}

void PathWatch::Arm() {
    ArmFor(IsFileThere());
    // It may have gone before its folder was watched.
    if (m_isFileThere && !IsFileThere()) {
        ArmFor(false);
    }
}

bool PathWatch::IsFileThere() const {
    return access((m_folders.back() + '/' + m_names.back()).c_str(), F_OK) == 0;
}

void PathWatch::ArmFor(bool isFileThere) {
    m_isFileThere = isFileThere;
    for (const auto& watch : m_watches) {
        inotify_rm_watch(m_inotify.Get(), watch.first);
    }
    m_watches.clear();
    int error = ENOENT;
    for (size_t i = 0; i < m_folders.size(); ++i) {
        const int watch = inotify_add_watch(m_inotify.Get(), m_folders[i].c_str(), EventsOf(i));
        if (watch >= 0) {
            m_watches[watch] = i;
            continue;
        }
        error = errno;
        // A folder may be closed to this user and the ones below it open.
        if (error != EACCES) {
            break;
        }
    }
    m_error = m_watches.empty() ? error : 0;
}

bool PathWatch::Consume() {
    alignas(inotify_event) std::array<char, 4096> buffer;
    News news = News::kNone;
    ssize_t size = 0;
    while ((size = read(m_inotify.Get(), buffer.data(), buffer.size())) > 0) {
        const char* const end = buffer.data() + size;
        for (const char* at = buffer.data(); at < end;) {
            const auto* event = reinterpret_cast<const inotify_event*>(at);
            at += sizeof(inotify_event) + event->len;
            news = std::max(news, NewsOf(*event));
        }
    }
    if (news == News::kFolders) {
        Arm();
    }
    return news != News::kNone;
}

PathWatch::News PathWatch::NewsOf(const inotify_event& event) const {
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        return News::kFolders;
    }
    const auto watch = m_watches.find(event.wd);
    if (watch == m_watches.end()) {
        return News::kNone;
    }
    const bool isAboutName = event.len > 0 && m_names[watch->second] == event.name;
    if (isAboutName && watch->second + 1 == m_folders.size()) {
        const bool isThere = (event.mask & kFileGone) == 0;
        return isThere == m_isFileThere ? News::kFile : News::kFolders;
    }
    return isAboutName || (event.mask & kFolderGone) != 0 ? News::kFolders : News::kNone;
}

}  // namespace Platform
