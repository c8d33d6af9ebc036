// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/system_log.h"

#include <glib.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

// The journal would otherwise record this file as the place of every message.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string>

#include "common/PrintableText.h"
#include "platform/linux/base/PlatformLog.h"

namespace {

constexpr size_t kMaxMessageBytes = 16384;

// Everything here is trivially destructible: lines are written before main begins and after it
// ended.
struct LogTarget {
    bool journal;
    bool colour;
};

bool EnvironmentIs(const char* name, const char* wanted) {
    return g_strcmp0(std::getenv(name), wanted) == 0;
}

LogTarget& Target() {
    static LogTarget target{
        g_log_writer_is_journald(STDERR_FILENO) != FALSE,
        EnvironmentIs("TV_LOG_COLOUR", "always") ||
            (!EnvironmentIs("TV_LOG_COLOUR", "never") && isatty(STDERR_FILENO) == 1),
    };
    return target;
}

// The priority's letter, its terminal colour ("" is the terminal's own) and syslog's number.
struct PriorityStyle {
    char letter;
    const char* colour;
    int syslogPriority;
};

PriorityStyle StyleOf(int priority) {
    switch (priority) {
        case DLOG_DEBUG:
            return {'D', "\033[90m", LOG_DEBUG};
        case DLOG_INFO:
            return {'I', "", LOG_INFO};
        case DLOG_WARN:
            return {'W', "\033[33m", LOG_WARNING};
        case DLOG_ERROR:
            return {'E', "\033[31m", LOG_ERR};
        default:
            return {'?', "", LOG_NOTICE};
    }
}

std::string FormatMessage(const char* format, va_list arguments) {
    // One byte more than is kept tells whether the cut is between two characters.
    std::array<char, kMaxMessageBytes + 2> buffer;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): started by the one caller
    const int length = vsnprintf(buffer.data(), buffer.size(), format, arguments);
    if (length < 0) {
        return std::string("message that cannot be formatted: ") + format;
    }
    const auto total = static_cast<size_t>(length);
    if (total <= kMaxMessageBytes) {
        return {buffer.data(), total};
    }
    size_t kept = kMaxMessageBytes;
    // A character is not cut in half; a run of continuation bytes longer than one is no UTF-8.
    for (int step = 0; step < 3 && (static_cast<unsigned char>(buffer[kept]) & 0xC0) == 0x80;
         ++step) {
        --kept;
    }
    return std::string(buffer.data(), kept) + " [cut: " + std::to_string(total - kept) +
           " more bytes]";
}

void AppendTime(std::string& out) {
    timeval now = {};
    gettimeofday(&now, nullptr);
    tm local = {};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 40> text;
    const size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(text.data() + length, text.size() - length, ".%03d",
                  static_cast<int>(now.tv_usec / 1000));
    out += text.data();
}

// A log that nobody reads any more must not end the process, so the signal of a broken pipe is
// held back and, when this write raised it, taken away.
class BrokenPipeGuard {
public:
    BrokenPipeGuard() {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_previous);
    }
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;
    ~BrokenPipeGuard() {
        const timespec atOnce = {};
        if (m_raised && !m_wasPending) {
            sigtimedwait(&m_pipe, nullptr, &atOnce);
        }
        pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
    }
    void SetRaised(bool raised) { m_raised = raised; }

private:
    sigset_t m_pipe;
    sigset_t m_previous;
    bool m_wasPending = false;
    bool m_raised = false;
};

bool WriteLine(const std::string& line) {
    BrokenPipeGuard guard;
    size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = write(STDERR_FILENO, line.data() + written, line.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            guard.SetRaised(count < 0 && errno == EPIPE);
            return false;
        }
        written += static_cast<size_t>(count);
    }
    return true;
}

bool SendToJournal(int priority, const char* tag, const std::string& message) {
    const std::string priorityField =
        "PRIORITY=" + std::to_string(StyleOf(priority).syslogPriority);
    const std::string tagField = std::string("SYSLOG_IDENTIFIER=") + tag;
    std::string messageField = "MESSAGE=";
    AppendPrintable(messageField, message);
    const auto field = [](const std::string& text) {
        return iovec{const_cast<char*>(text.data()), text.size()};
    };
    const std::array<iovec, 3> fields = {field(priorityField), field(tagField),
                                         field(messageField)};
    return sd_journal_sendv(fields.data(), static_cast<int>(fields.size())) == 0;
}

int Print(int priority, const char* tag, const std::string& message) {
    const LogTarget& target = Target();
    if (target.journal && SendToJournal(priority, tag, message)) {
        return static_cast<int>(message.size());
    }
    const PriorityStyle style = StyleOf(priority);
    const bool colour = target.colour && *style.colour != '\0';
    std::string line = colour ? style.colour : "";
    AppendTime(line);
    line += {' ', style.letter, ' '};
    AppendPrintable(line, tag);
    line += ": ";
    AppendPrintable(line, message);
    line += colour ? "\033[0m\n" : "\n";
    return WriteLine(line) ? static_cast<int>(line.size()) : -1;
}

}  // namespace

int __dlog_print(log_id_t /*buffer*/, int priority, const char* tag, const char* format, ...) {
    if (priority < Platform::LogThreshold()) {
        return 0;
    }
    const int savedErrno = errno;
    int result = -1;
    va_list arguments;
    va_start(arguments, format);
    try {
        result = Print(priority, tag != nullptr ? tag : "?",
                       format != nullptr ? FormatMessage(format, arguments) : "");
    } catch (const std::exception&) {
        // Out of memory: the line is lost, the caller goes on.
    }
    va_end(arguments);
    errno = savedErrno;
    return result;
}
