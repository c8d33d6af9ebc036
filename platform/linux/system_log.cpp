// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/system_log.h"

#include <glib.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <optional>
#include <string>

#include "common/PrintableText.h"
#include "platform/linux/base/Datagram.h"
#include "platform/linux/base/LogLine.h"
#include "platform/linux/base/PlatformLog.h"

namespace {

// Of most lines, with all their fields.
constexpr size_t kUsualBytes = 512;

// 0 until it is read from the environment: the first line asks.
std::atomic<int> theThreshold{0};

bool EnvironmentIs(const char* name, const char* wanted) {
    return g_strcmp0(std::getenv(name), wanted) == 0;
}

int Threshold() {
    if (theThreshold == 0) {
        const char* const level = "TV_LOG_LEVEL";
        const int read = EnvironmentIs(level, "info")    ? DLOG_INFO
                         : EnvironmentIs(level, "warn")  ? DLOG_WARN
                         : EnvironmentIs(level, "error") ? DLOG_ERROR
                                                         : DLOG_DEBUG;
        int unread = 0;
        theThreshold.compare_exchange_strong(unread, read);
    }
    return theThreshold;
}

struct LogTarget {
    std::string journal;  // path of the journal's socket; empty for standard error
    bool colour;
};

// The two sockets of a journal are in one folder: "journal", or "journal.NAMESPACE".
std::string JournalOfStandardError() {
    sockaddr_un peer = {};
    socklen_t size = sizeof peer;
    if (getpeername(STDERR_FILENO, reinterpret_cast<sockaddr*>(&peer), &size) != 0 ||
        peer.sun_family != AF_UNIX) {
        return "";
    }
    const std::string path(peer.sun_path, strnlen(peer.sun_path, sizeof peer.sun_path));
    const size_t slash = path.rfind('/');
    return g_pattern_match_simple("*/journal*/stdout", path.c_str()) != FALSE
               ? path.substr(0, slash) + "/socket"
               : "";
}

// Never destroyed: lines are written before main begins and after it ended.
const LogTarget& Target() {
    static const LogTarget& target = *new LogTarget{
        JournalOfStandardError(),
        EnvironmentIs("TV_LOG_COLOUR", "always") ||
            (!EnvironmentIs("TV_LOG_COLOUR", "never") && isatty(STDERR_FILENO) == 1),
    };
    return target;
}

char Digit(int number) {
    return static_cast<char>('0' + number);
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

// "2026-11-21 07:00:01.000", of which all but the milliseconds are made once a second.
void AppendTime(std::string& out) {
    thread_local time_t second = -1;
    thread_local std::array<char, 40> text;
    timeval now = {};
    gettimeofday(&now, nullptr);
    if (now.tv_sec != second) {
        tm local = {};
        localtime_r(&now.tv_sec, &local);
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S.", &local);
        second = now.tv_sec;
    }
    out += text.data();
    const auto ms = static_cast<int>(now.tv_usec / 1000);
    out += {Digit(ms / 100), Digit(ms / 10 % 10), Digit(ms % 10)};
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

    // Whether the signal has an effect. The bus library has it ignored from its first connection
    // on, and then this is not asked again.
    static bool IsNeeded() {
        static std::atomic<bool> isIgnored{false};
        struct sigaction action = {};
        if (!isIgnored && sigaction(SIGPIPE, nullptr, &action) == 0) {
            isIgnored = action.sa_handler == SIG_IGN;
        }
        return !isIgnored;
    }

private:
    sigset_t m_pipe;
    sigset_t m_previous;
    bool m_wasPending = false;
    bool m_raised = false;
};

bool WriteLine(const std::string& line) {
    std::optional<BrokenPipeGuard> guard;
    if (BrokenPipeGuard::IsNeeded()) {
        guard.emplace();
    }
    size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = write(STDERR_FILENO, line.data() + written, line.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            if (guard) {
                guard->SetRaised(count < 0 && errno == EPIPE);
            }
            return false;
        }
        written += static_cast<size_t>(count);
    }
    return true;
}

// In the journal's native protocol: a field a line, for none has a newline.
void AppendEntry(std::string& out, int priority, const char* tag, const Platform::LogLine& line) {
    out += "PRIORITY=";
    out += Digit(StyleOf(priority).syslogPriority);
    out += "\nSYSLOG_IDENTIFIER=";
    AppendPrintable(out, tag);
    out += '\n';
    line.AppendFields(out);
    out += "MESSAGE=";
    line.AppendText(out);
    out += '\n';
}

void AppendLine(std::string& out, int priority, const char* tag, const Platform::LogLine& line) {
    const PriorityStyle style = StyleOf(priority);
    const bool colour = Target().colour && *style.colour != '\0';
    out += colour ? style.colour : "";
    AppendTime(out);
    out += {' ', style.letter, ' '};
    AppendPrintable(out, tag);
    out += ": ";
    line.AppendText(out);
    out += colour ? "\033[0m\n" : "\n";
}

int Print(int priority, const char* tag, const Platform::LogLine& line) {
    std::string out;
    out.reserve(kUsualBytes);
    const std::string& journal = Target().journal;
    if (!journal.empty()) {
        AppendEntry(out, priority, tag, line);
        if (Platform::SendDatagram(journal, out)) {
            return static_cast<int>(out.size());
        }
        out.clear();
    }
    AppendLine(out, priority, tag, line);
    return WriteLine(out) ? static_cast<int>(out.size()) : -1;
}

}  // namespace

// Apart from its caller, with the arguments in the same places, and visible, or the compiler would
// give it others: so a line that is dropped costs its caller ten instructions.
namespace Platform {
[[gnu::noinline]] int PrintIfWanted(log_id_t /*buffer*/, int priority, const char* tag,
                                    const char* format, va_list arguments) {
    if (priority < Threshold()) {
        return 0;
    }
    const int savedErrno = errno;
    int result = -1;
    try {
        const LogLine line(format != nullptr ? format : "", arguments);
        result = Print(priority, tag != nullptr ? tag : "?", line);
    } catch (const std::exception&) {
        // Out of memory: the line is lost, the caller goes on.
    }
    errno = savedErrno;
    return result;
}
}  // namespace Platform

void Platform::SetLogThreshold(int priority) noexcept {
    theThreshold = priority;
}

int __dlog_print(log_id_t buffer, int priority, const char* tag, const char* format, ...) {
    if (priority < theThreshold.load(std::memory_order_relaxed)) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int result = Platform::PrintIfWanted(buffer, priority, tag, format, arguments);
    va_end(arguments);
    return result;
}
