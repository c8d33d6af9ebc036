// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "common/CHandle.h"
#include "platform/linux/base/PlatformLog.h"

namespace Platform {

// The product features of this host: a GKeyFile that an engineer can read and edit. A feature
// "a/b/name" is the key `name` of the group [a/b]; its value is true, false or a decimal integer.
// The file is read again when it changed. A fault is logged when it begins. Any thread.
class FeatureFile {
public:
    struct Feature {
        std::string key;
        std::string value;
    };

    explicit FeatureFile(std::string path) : m_path(std::move(path)) {}

    // The process's features, below the settings folder. Never destroyed.
    static FeatureFile& Instance();

    // Nothing when there is no such feature, its value is of another type, or the file is unusable.
    [[nodiscard]] std::optional<bool> GetBool(const std::string& key);
    [[nodiscard]] std::optional<int> GetInt(const std::string& key);
    // The value as it is written, of whatever type.
    [[nodiscard]] std::optional<std::string> GetText(const std::string& key);

    // All features in the order of the file; none when there is no file.
    [[nodiscard]] std::optional<std::vector<Feature>> List();

    // Writes a feature (the value is one line) and keeps the rest of the file, comments included. A
    // file that cannot be understood is not changed. False on failure, with the reason in
    // LastFailure(), and for a key that is not valid.
    [[nodiscard]] bool Set(const std::string& key, const std::string& value);
    // Removes a feature likewise; false also when there is none, then without a reason.
    [[nodiscard]] bool Unset(const std::string& key);

    // Why the last access failed; empty when it did not, or the feature was only missing.
    [[nodiscard]] std::string LastFailure();

    // Whether the file can hold a feature of that name: "group/name" in printable characters.
    [[nodiscard]] static bool IsValidKey(const std::string& key);

private:
    enum class State { kUsable, kMissing, kUnusable };

    State Refresh();
    State Load(const struct stat& status);
    State Fail(const std::string& reason);
    bool Write();

    const std::string m_path;
    std::mutex m_mutex;
    GKeyFilePtr m_file;
    struct stat m_status = {};  // of the file when it was read
    State m_state = State::kMissing;
    FaultLog m_fault;
};

}  // namespace Platform
