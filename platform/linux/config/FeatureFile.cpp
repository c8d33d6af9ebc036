// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/config/FeatureFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "common/Parse.h"
#include "platform/linux/base/RootPath.h"

namespace Platform {

namespace {

// Group and name of a feature; an empty group when there is none.
std::pair<std::string, std::string> Split(const std::string& key) {
    const size_t slash = key.rfind('/');
    if (slash == std::string::npos) {
        return {"", key};
    }
    return {key.substr(0, slash), key.substr(slash + 1)};
}

// The time of the change (ctime): a writer can set the time of the content back.
bool IsSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_ctim.tv_sec == b.st_ctim.tv_sec && a.st_ctim.tv_nsec == b.st_ctim.tv_nsec;
}

}  // namespace

FeatureFile& FeatureFile::Instance() {
    static FeatureFile& file = *new FeatureFile(SettingsFolder() + "/features.conf");
    return file;
}

bool FeatureFile::IsValidKey(const std::string& key) {
    const auto [group, name] = Split(key);
    const auto isForbidden = [](char c) {
        return c <= ' ' || c == '\x7f' || std::strchr("[]=", c) != nullptr;
    };
    return !group.empty() && !name.empty() && name[0] != '#' &&
           std::none_of(key.begin(), key.end(), isForbidden);
}

std::optional<bool> FeatureFile::GetBool(const std::string& key) {
    const auto text = GetText(key);
    return text ? ParseBool(*text) : std::nullopt;
}

std::optional<int> FeatureFile::GetInt(const std::string& key) {
    const auto text = GetText(key);
    return text ? ParseInt(*text) : std::nullopt;
}

std::optional<std::string> FeatureFile::GetText(const std::string& key) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Refresh() != State::kUsable) {
        return std::nullopt;
    }
    const auto [group, name] = Split(key);
    const GStringPtr text(g_key_file_get_value(m_file.get(), group.c_str(), name.c_str(), nullptr));
    if (text == nullptr) {
        return std::nullopt;
    }
    return g_strchomp(text.get());
}

std::optional<std::vector<FeatureFile::Feature>> FeatureFile::List() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Feature> features;
    const State state = Refresh();
    if (state == State::kUnusable) {
        return std::nullopt;
    }
    if (state == State::kMissing) {
        return features;
    }
    const GStrvPtr groups(g_key_file_get_groups(m_file.get(), nullptr));
    for (char** group = groups.get(); *group != nullptr; ++group) {
        const GStrvPtr names(g_key_file_get_keys(m_file.get(), *group, nullptr, nullptr));
        for (char** name = names.get(); name != nullptr && *name != nullptr; ++name) {
            const GStringPtr text(g_key_file_get_value(m_file.get(), *group, *name, nullptr));
            features.push_back({std::string(*group) + "/" + *name, g_strchomp(text.get())});
        }
    }
    return features;
}

bool FeatureFile::Set(const std::string& key, const std::string& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const State state = Refresh();
    if (state == State::kUnusable || !IsValidKey(key)) {
        return false;
    }
    if (state == State::kMissing) {
        m_file.reset(g_key_file_new());
        std::error_code error;
        std::filesystem::create_directories(std::filesystem::path(m_path).parent_path(), error);
    }
    const auto [group, name] = Split(key);
    g_key_file_set_value(m_file.get(), group.c_str(), name.c_str(), value.c_str());
    return Write();
}

bool FeatureFile::Unset(const std::string& key) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto [group, name] = Split(key);
    return Refresh() == State::kUsable &&
           g_key_file_remove_key(m_file.get(), group.c_str(), name.c_str(), nullptr) != FALSE &&
           Write();
}

bool FeatureFile::Write() {
    gsize size = 0;
    const GStringPtr text(g_key_file_to_data(m_file.get(), &size, nullptr));
    // What was not stored must not be answered from memory.
    m_status = {};
    GErrorPtr error;
    if (!g_file_set_contents_full(m_path.c_str(), text.get(), static_cast<gssize>(size),
                                  G_FILE_SET_CONTENTS_CONSISTENT, 0644, Out(error))) {
        Fail(error->message);
        return false;
    }
    return true;
}

std::string FeatureFile::LastFailure() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_fault.Reason();
}

FeatureFile::State FeatureFile::Refresh() {
    struct stat status = {};
    if (stat(m_path.c_str(), &status) != 0) {
        const bool isMissing = errno == ENOENT;
        Fail(m_path + ": " + std::strerror(errno));
        m_state = isMissing ? State::kMissing : State::kUnusable;
    } else if (!IsSame(status, m_status)) {
        m_state = Load(status);
    }
    return m_state;
}

FeatureFile::State FeatureFile::Load(const struct stat& status) {
    // The status from before the reading: a change during it is seen as one by the next access.
    m_status = status;
    // Opening a pipe would wait for its writer.
    if (!S_ISREG(status.st_mode)) {
        return Fail(m_path + ": not a regular file");
    }
    m_file.reset(g_key_file_new());
    GErrorPtr error;
    if (!g_key_file_load_from_file(m_file.get(), m_path.c_str(), G_KEY_FILE_KEEP_COMMENTS,
                                   Out(error))) {
        return Fail(m_path + ": " + error->message);
    }
    m_fault.End();
    return State::kUsable;
}

FeatureFile::State FeatureFile::Fail(const std::string& reason) {
    m_status = {};
    m_fault.Begin(PLATFORM_HERE, reason);
    return State::kUnusable;
}

}  // namespace Platform
