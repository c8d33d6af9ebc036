// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/CHandle.h"
#include "common/Source.h"

namespace ScenarioRunner {

// A process of ours, its output line by line as it comes. It has a process group of its own, so
// that a terminal's Ctrl-C reaches only the runner, and the kernel kills it when the runner is
// killed.
class ChildProcess {
public:
    struct Command {
        std::vector<std::string> arguments;  // the program first, with its path
        std::vector<std::pair<std::string, std::string>> environment;  // added to the inherited one
    };
    struct Handlers {
        std::function<void(const std::string& line)> onOutput;  // standard output; may be empty
        std::function<void(const std::string& line)> onError;   // standard error; may be empty
        // It ended, after its last line: empty for status 0, else how, e.g. "status 2". May destroy
        // the ChildProcess, which the others must not.
        std::function<void(const std::string& how)> onEnd;
    };

    // Null when the program cannot be started; `error` then says why. Handlers run on the main
    // loop.
    [[nodiscard]] static std::unique_ptr<ChildProcess> Start(const Command& command,
                                                             Handlers handlers, std::string& error);
    // Kills what still runs. No handler is called any more.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] bool Running() const { return !m_exited; }
    void Signal(int signal);

private:
    ChildProcess(GObjectPtr<GSubprocess> process, Handlers handlers);
    // Asks for the stream's next line.
    void Read(GDataInputStream* stream);
    static void OnLine(GObject* stream, GAsyncResult* result, gpointer userData) noexcept;
    static void OnExit(GObject* process, GAsyncResult* result, gpointer userData) noexcept;
    void End();

    GObjectPtr<GSubprocess> m_process;
    Handlers m_handlers;
    GObjectPtr<GDataInputStream> m_output;
    GObjectPtr<GDataInputStream> m_error;
    GObjectPtr<GCancellable> m_cancellable;  // of what would call back after this has gone
    Timer m_lastLines;
    int m_openStreams = 2;
    bool m_exited = false;
};

// Kills every process that is still a child of this one.
void KillChildren();

}  // namespace ScenarioRunner
