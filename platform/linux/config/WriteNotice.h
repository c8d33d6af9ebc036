// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "platform/linux/base/PlatformLog.h"

namespace Platform {

// The file beside a configuration file that tells watchers of writes: each one opens it for writing
// and closes it. A write of the value that a key already has is told by this alone: the file has
// eight bytes for each row of the database, which change at such a write. They need not survive a
// power cut, for no watcher does. One thread at a time.
class WriteNotice {
public:
    explicit WriteNotice(std::string folder);

    [[nodiscard]] const std::string& Path() const { return m_path; }

    // A row was written, or removed. A failure is logged when it begins.
    void TellChanged();
    // The row was given the value that it has. False when the file has no room for the row.
    [[nodiscard]] bool TellRepeated(std::int64_t row);
    // A number that has grown since the last TellRepeated of the row; 0 without one.
    [[nodiscard]] std::uint64_t LastRepeated(std::int64_t row) const;

private:
    void Report(bool isTold);

    const std::string m_folder;
    const std::string m_path;
    FaultLog m_fault;
};

}  // namespace Platform
