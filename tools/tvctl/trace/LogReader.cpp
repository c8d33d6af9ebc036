// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LogReader.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/linux/base/FileDescriptor.h"
#include "tools/tvctl/trace/JournalReader.h"
#include "tools/tvctl/trace/LogText.h"

namespace Tvctl {

namespace {

// How often a file that is followed is looked at.
constexpr int kLookMs = 100;

// Reads a text file or standard input.
class TextReader : public LogReader {
public:
    TextReader(const LogSource& source, TakeRecord take)
        : m_source(source), m_text(m_parser, std::move(take)) {
        std::string mistake;
        if (!source.pattern.empty() && !m_parser.SetPattern(source.pattern, mistake)) {
            m_failure = "the pattern is wrong: " + mistake;
            return;
        }
        Open();
        if (source.onlyNew && IsFile()) {
            lseek(m_fd.Get(), 0, SEEK_END);
        }
    }

    void Read() override {
        while (!IsOver()) {
            if (m_source.onlyNew && !HasInput(0)) {
                return;
            }
            const ssize_t count = read(m_fd.Get(), m_part.data(), m_part.size());
            if (count > 0) {
                m_text.Add({m_part.data(), static_cast<std::size_t>(count)});
            } else if (count == 0 && m_source.onlyNew && IsFile()) {
                ReopenIfReplaced();
                return;
            } else if (count == 0) {
                m_text.End();
                m_isAtEnd = true;
            } else if (errno != EINTR) {
                Fail();
            }
        }
    }

    // A file always has input, if only its end.
    void Wait(int ms) override {
        if (IsFile()) {
            g_usleep(static_cast<gulong>(std::min(ms, kLookMs)) * 1000);
        } else {
            static_cast<void>(HasInput(ms));
        }
    }

    [[nodiscard]] bool IsOver() const override { return m_isAtEnd || !m_failure.empty(); }
    [[nodiscard]] LogCount Count() const override {
        return {m_text.Records(), m_text.Skipped(), m_failure};
    }

private:
    void Open() {
        const bool isInput = m_source.path == "-";
        m_fd =
            Platform::FileDescriptor(isInput ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                             : open(m_source.path.c_str(), O_RDONLY | O_CLOEXEC));
        if (!m_fd.IsOpen()) {
            Fail();
        }
    }

    void Fail() { m_failure = m_source.path + ": " + std::strerror(errno); }

    // Of which old is told from new, and which may grow after its end; standard input has an end.
    [[nodiscard]] bool IsFile() const {
        struct stat state = {};
        return m_source.path != "-" && fstat(m_fd.Get(), &state) == 0 && S_ISREG(state.st_mode);
    }

    [[nodiscard]] bool HasInput(int ms) const {
        pollfd input = {m_fd.Get(), POLLIN, 0};
        return poll(&input, 1, ms) > 0;
    }

    // A log that was moved away or emptied begins again.
    void ReopenIfReplaced() {
        struct stat own = {};
        struct stat named = {};
        if (fstat(m_fd.Get(), &own) == 0 && lseek(m_fd.Get(), 0, SEEK_CUR) > own.st_size) {
            lseek(m_fd.Get(), 0, SEEK_SET);
        } else if (stat(m_source.path.c_str(), &named) == 0 &&
                   (named.st_ino != own.st_ino || named.st_dev != own.st_dev)) {
            Open();
        }
    }

    LogSource m_source;
    LineParser m_parser;
    LogText m_text;
    Platform::FileDescriptor m_fd;
    std::array<char, 65536> m_part = {};
    bool m_isAtEnd = false;
    std::string m_failure;
};

}  // namespace

std::string NameOf(const LogSource& source) {
    if (source.kind == LogSource::Kind::kMachine) {
        return "the journal of bt-autoconnect.service";
    }
    return source.kind == LogSource::Kind::kText && source.path == "-" ? "standard input"
                                                                       : source.path;
}

std::unique_ptr<LogReader> OpenLog(const LogSource& source, TakeRecord take) {
    if (source.kind == LogSource::Kind::kText) {
        return std::make_unique<TextReader>(source, std::move(take));
    }
    return std::make_unique<JournalReader>(source, std::move(take));
}

}  // namespace Tvctl
