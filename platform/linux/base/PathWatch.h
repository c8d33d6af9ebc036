// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/inotify.h>

#include <map>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"

namespace Platform {

// Watches one file by its path, through inotify: its creation, its arrival by a rename and the end
// of a write to it. Neither the file nor its folders need exist; they may come, go and be replaced.
// Fd() becomes readable when there may be news, Consume() reads them. One thread at a time.
class PathWatch {
public:
    // `path` is absolute, or relative to the folder that is current now.
    explicit PathWatch(const std::string& path);

    // False when the kernel gave no watch at all; errno-like reason in Error().
    [[nodiscard]] bool IsValid() const { return m_error == 0; }
    [[nodiscard]] int Error() const { return m_error; }
    [[nodiscard]] int Fd() const { return m_inotify.Get(); }

    // True when something may have happened to the file since the last call; never blocks.
    [[nodiscard]] bool Consume();

private:
    enum class News { kNone, kFile, kFolders };

    // Watches every folder of the path that exists: the file's own for what happens to the file,
    // and while there is none those above it for what comes and goes in them. A watch on only the
    // last one is not enough then: a removed folder says nothing while somebody holds a file of it
    // open. While there is a file, it goes first.
    void Arm();
    void ArmFor(bool isFileThere);
    [[nodiscard]] bool IsFileThere() const;
    [[nodiscard]] uint32_t EventsOf(size_t folder) const;
    [[nodiscard]] News NewsOf(const inotify_event& event) const;

    FileDescriptor m_inotify;
    std::vector<std::string> m_folders;  // from the topmost down to the file's own
    std::vector<std::string> m_names;    // what to look for in each of them
    std::map<int, size_t> m_watches;     // watch descriptor to folder
    bool m_isFileThere = false;          // when the watches were made
    int m_error = 0;
};

}  // namespace Platform
