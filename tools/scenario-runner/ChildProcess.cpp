// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/ChildProcess.h"

#include <gio/gio.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "common/CHandle.h"
#include "common/Source.h"

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

struct ChildProcess::State : std::enable_shared_from_this<State> {
    // What an asynchronous call holds, so that it may complete after the owner has gone.
    struct Pending {
        std::shared_ptr<State> state;
        bool errorStream;
    };

    void Read(bool errorStream) {
        GDataInputStream* stream = (errorStream ? error : output).get();
        g_data_input_stream_read_line_async(stream, G_PRIORITY_DEFAULT, cancellable.get(), OnLine,
                                            new Pending{shared_from_this(), errorStream});
    }

    static void OnLine(GObject* source, GAsyncResult* result, gpointer data) noexcept {
        const std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
        State& self = *pending->state;
        gsize length = 0;
        const GStringPtr line(g_data_input_stream_read_line_finish(
            reinterpret_cast<GDataInputStream*>(source), result, &length, nullptr));
        if (line == nullptr) {
            ++self.closedStreams;
            self.EndIfComplete(false);
            return;
        }
        const auto& handler = pending->errorStream ? self.handlers.onError : self.handlers.onOutput;
        if (handler) {
            handler(std::string(line.get(), length));
        }
        if (g_cancellable_is_cancelled(self.cancellable.get()) == FALSE) {
            self.Read(pending->errorStream);
        }
    }

    static void OnExit(GObject* source, GAsyncResult* result, gpointer data) noexcept {
        const std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
        State& self = *pending->state;
        if (g_subprocess_wait_finish(reinterpret_cast<GSubprocess*>(source), result, nullptr) ==
            FALSE) {
            return;  // cancelled: the owner has gone
        }
        self.exited = true;
        self.lastLines = Timer::Once(kLastLinesMs, [state = self.weak_from_this()] {
            if (const auto locked = state.lock()) {
                locked->EndIfComplete(true);
            }
        });
        self.EndIfComplete(false);
    }

    void EndIfComplete(bool dontWait) {
        if (exited && !ended && (dontWait || closedStreams == 2)) {
            ended = true;
            lastLines.Cancel();
            if (handlers.onEnd) {
                const auto onEnd = handlers.onEnd;  // the handler may drop this process
                onEnd(DescribeEnd(process.get()));
            }
        }
    }

    GObjectPtr<GSubprocess> process;
    GObjectPtr<GDataInputStream> output;
    GObjectPtr<GDataInputStream> error;
    GObjectPtr<GCancellable> cancellable;
    Handlers handlers;
    Timer lastLines;
    int closedStreams = 0;
    bool exited = false;
    bool ended = false;
};

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
    auto state = std::make_shared<State>();
    state->process.reset(
        g_subprocess_launcher_spawnv(launcher.get(), arguments.data(), Out(failure)));
    if (state->process == nullptr) {
        error = failure->message;
        return nullptr;
    }
    GSubprocess* process = state->process.get();
    state->output.reset(g_data_input_stream_new(g_subprocess_get_stdout_pipe(process)));
    state->error.reset(g_data_input_stream_new(g_subprocess_get_stderr_pipe(process)));
    state->cancellable.reset(g_cancellable_new());
    state->handlers = std::move(handlers);
    state->Read(false);
    state->Read(true);
    g_subprocess_wait_async(process, state->cancellable.get(), State::OnExit,
                            new State::Pending{state, false});
    return std::unique_ptr<ChildProcess>(new ChildProcess(std::move(state)));
}

ChildProcess::~ChildProcess() {
    if (Running()) {
        g_subprocess_force_exit(m_state->process.get());
    }
    m_state->handlers = {};
    g_cancellable_cancel(m_state->cancellable.get());
}

bool ChildProcess::Running() const {
    return !m_state->exited;
}

void ChildProcess::Signal(int signal) {
    if (Running()) {
        g_subprocess_send_signal(m_state->process.get(), signal);
    }
}

void AdoptOrphans() {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
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
