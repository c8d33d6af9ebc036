// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>
#include <unistd.h>

#include <utility>

namespace Platform {

// Owner of a file descriptor; -1 is none.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : m_fd(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~FileDescriptor() {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }

    [[nodiscard]] int Get() const { return m_fd; }
    [[nodiscard]] bool IsOpen() const { return m_fd >= 0; }

private:
    int m_fd;
};

// Owner of a source of the default main context. A source that ends by itself (its callback returns
// G_SOURCE_REMOVE) must be given up with Release() in that callback.
class MainLoopSource {
public:
    explicit MainLoopSource(guint id = 0) : m_id(id) {}
    MainLoopSource(MainLoopSource&& other) noexcept : m_id(other.Release()) {}
    MainLoopSource& operator=(MainLoopSource&& other) noexcept {
        std::swap(m_id, other.m_id);
        return *this;
    }
    ~MainLoopSource() {
        if (m_id != 0) {
            g_source_remove(m_id);
        }
    }

    [[nodiscard]] bool IsActive() const { return m_id != 0; }
    guint Release() { return std::exchange(m_id, 0); }

private:
    guint m_id;
};

}  // namespace Platform
