// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/tvctl/commands/Console.h"

namespace Tvctl {

// What stood on the command line behind the command's name, taken apart.
struct Arguments {
    std::vector<std::string> positional;
    std::map<std::string, std::string> options;  // by name, "" as the value of a mere switch

    [[nodiscard]] bool Has(const std::string& option) const { return options.count(option) > 0; }
    [[nodiscard]] std::optional<std::string> Option(const std::string& option) const;
};

struct OptionRule {
    std::string name;       // "--off"
    std::string valueName;  // "" for a switch
    std::string summary;
};

// One thing that can be done. A group of one command gives it an empty name.
struct Command {
    std::string name;
    std::string synopsis;  // of the arguments: "ADDRESS [--off]"
    std::string summary;   // one line, without a full stop
    std::string details;   // whole lines for its help; may be empty
    std::vector<OptionRule> options;
    size_t minArguments;
    size_t maxArguments;
    std::function<ExitCode(const Arguments&, Console&)> run;
};

// The commands that share a first word.
struct CommandGroup {
    std::string name;
    std::string summary;
    std::vector<Command> commands;
};

inline constexpr size_t kAnyNumber = static_cast<size_t>(-1);

// Finds the command that a command line means and runs it, or prints the help that it asks for.
class CommandLine {
public:
    explicit CommandLine(std::vector<CommandGroup> groups) : m_groups(std::move(groups)) {}

    // `words` without the program's name.
    [[nodiscard]] ExitCode Run(const std::vector<std::string>& words, std::ostream& out,
                               std::ostream& err) const;

private:
    [[nodiscard]] const CommandGroup* FindGroup(const std::string& name) const;
    void PrintHelp(std::ostream& out) const;

    std::vector<CommandGroup> m_groups;
};

}  // namespace Tvctl
