// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ScenarioRunner {

// A process of ours, its output line by line as it comes. It has a process group of its own, so
// that a terminal's Ctrl-C reaches the runner alone, and the kernel kills it when the runner is
// killed.
class ChildProcess {
public:
    struct Command {
        std::vector<std::string> arguments;  // the program first, with its path
        std::vector<std::pair<std::string, std::string>> environment;  // beside the inherited one
    };
    struct Handlers {
        std::function<void(const std::string& line)> onOutput;  // standard output; may be empty
        std::function<void(const std::string& line)> onError;   // standard error; may be empty
        // It ended, behind its last line: empty for status 0, else how, e.g. "status 2".
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

    [[nodiscard]] bool Running() const;
    void Signal(int signal);

private:
    struct State;
    explicit ChildProcess(std::shared_ptr<State> state) : m_state(std::move(state)) {}

    std::shared_ptr<State> m_state;
};

// Makes this process the parent of orphans among its descendants, such as what the bus started.
void AdoptOrphans();
// Kills every process that is still a child of this one.
void KillChildren();

}  // namespace ScenarioRunner
