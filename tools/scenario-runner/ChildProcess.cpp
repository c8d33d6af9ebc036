// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/ChildProcess.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

namespace ScenarioRunner {
namespace {

// How long lines of an ended process are waited for: a grandchild may hold the pipe open for ever.
constexpr int kLastLinesMs = 300;

// In the child between fork and exec, so only what is safe there.
void PrepareChild(gpointer parent) noexcept {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != GPOINTER_TO_INT(parent)) {
        _exit(127);  // the runner was killed before the line above
    }
}

std::string DescribeEnd(GSubprocess* process) {
    if (g_subprocess_get_if_signaled(process) != FALSE) {
        return "signal " + std::to_string(g_subprocess_get_term_sig(process));
    }
    const int status = g_subprocess_get_exit_status(process);
    return status == 0 ? "" : "status " + std::to_string(status);
}

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::Start(const Command& command, Handlers handlers,
                                                  std::string& error) {
    const GObjectPtr<GSubprocessLauncher> launcher(
        g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                                G_SUBPROCESS_FLAGS_STDERR_PIPE)));
    for (const auto& [name, value] : command.environment) {
        g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value.c_str(), TRUE);
    }
    g_subprocess_launcher_set_child_setup(launcher.get(), PrepareChild, GINT_TO_POINTER(getpid()),
                                          nullptr);
    std::vector<const char*> arguments;
    for (const std::string& argument : command.arguments) {
        arguments.push_back(argument.c_str());
    }
    arguments.push_back(nullptr);
    GErrorPtr failure;
    GObjectPtr<GSubprocess> process(
        g_subprocess_launcher_spawnv(launcher.get(), arguments.data(), Out(failure)));
    if (process == nullptr) {
        error = failure->message;
        return nullptr;
    }
    return std::unique_ptr<ChildProcess>(new ChildProcess(std::move(process), std::move(handlers)));
}

ChildProcess::ChildProcess(GObjectPtr<GSubprocess> process, Handlers handlers)
    : m_process(std::move(process)),
      m_handlers(std::move(handlers)),
      m_output(g_data_input_stream_new(g_subprocess_get_stdout_pipe(m_process.get()))),
      m_error(g_data_input_stream_new(g_subprocess_get_stderr_pipe(m_process.get()))),
      m_cancellable(g_cancellable_new()) {
    Read(m_output.get());
    Read(m_error.get());
    g_subprocess_wait_async(m_process.get(), m_cancellable.get(), OnExit, this);
}

ChildProcess::~ChildProcess() {
    Signal(SIGKILL);
    g_cancellable_cancel(m_cancellable.get());
}

void ChildProcess::Signal(int signal) {
    if (Running()) {
        g_subprocess_send_signal(m_process.get(), signal);
    }
}

void ChildProcess::Read(GDataInputStream* stream) {
    g_data_input_stream_read_line_async(stream, G_PRIORITY_DEFAULT, m_cancellable.get(), OnLine,
                                        this);
}

void ChildProcess::OnLine(GObject* stream, GAsyncResult* result, gpointer userData) noexcept {
    auto* input = reinterpret_cast<GDataInputStream*>(stream);
    gsize length = 0;
    GErrorPtr failure;
    const GStringPtr line(
        g_data_input_stream_read_line_finish(input, result, &length, Out(failure)));
    if (g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
        return;  // the owner has gone
    }
    auto* self = static_cast<ChildProcess*>(userData);
    if (line == nullptr) {
        if (--self->m_openStreams == 0 && self->m_exited) {
            self->End();
        }
        return;
    }
    const bool isError = input == self->m_error.get();
    if (const auto& handler = isError ? self->m_handlers.onError : self->m_handlers.onOutput) {
        handler(std::string(line.get(), length));
    }
    self->Read(input);
}

void ChildProcess::OnExit(GObject* process, GAsyncResult* result, gpointer userData) noexcept {
    if (g_subprocess_wait_finish(reinterpret_cast<GSubprocess*>(process), result, nullptr) ==
        FALSE) {
        return;  // cancelled: the owner has gone
    }
    auto* self = static_cast<ChildProcess*>(userData);
    self->m_exited = true;
    if (self->m_openStreams == 0) {
        self->End();
    } else {
        self->m_lastLines = Timer::Once(kLastLinesMs, [self] { self->End(); });
    }
}

// Called once, or a second time by a stream that ends later than the wait for it.
void ChildProcess::End() {
    m_lastLines.Cancel();
    if (const auto onEnd = std::exchange(m_handlers.onEnd, nullptr)) {
        onEnd(DescribeEnd(m_process.get()));
    }
}

void KillChildren() {
    const std::string list = "/proc/self/task/" + std::to_string(getpid()) + "/children";
    // Killing one may hand its own children to us, hence the rounds.
    for (int round = 0; round < 10; ++round) {
        std::ifstream children(list);
        pid_t child = 0;
        bool any = false;
        while (children >> child) {
            any = true;
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        if (!any) {
            return;
        }
    }
}

}  // namespace ScenarioRunner
