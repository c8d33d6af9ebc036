// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/tvctl/commands/Console.h"

// GOptionContext does not fit: it takes the value in "conf set KEY -5" for an option, and it has no
// commands.

namespace Tvctl {

// The words of the command line after the command's name.
struct Arguments {
    std::vector<std::string> positional;
    std::map<std::string, std::string> options;  // by name; the value of a switch is ""

    [[nodiscard]] bool Has(const std::string& option) const { return options.count(option) > 0; }
    [[nodiscard]] std::optional<std::string> Option(const std::string& option) const;
};

struct OptionRule {
    std::string name;       // "--off"
    std::string valueName;  // "" for a switch
    std::string summary;
};

// One thing that can be done.
struct Command {
    std::string name;  // the second word; empty when the group has only this command
    // Names the arguments and says how many there are: "NAME VALUE", "[FILE]" for one that may be
    // missing, "KEY..." for one or more. Options follow: "ADDRESS [--off]", "[FILE | --at PLACE]".
    // An ADDRESS and a KEY are checked before the command runs.
    std::string synopsis;
    std::string summary;  // one line, without a full stop
    ExitCode (*run)(const Arguments&, Console&);
    std::string details = {};  // whole lines for its help; may be empty
    std::vector<OptionRule> options = {};
};

// The commands that share a first word.
struct CommandGroup {
    std::string name;
    std::string summary;
    std::vector<Command> commands;
};

// Finds the command that the words mean and runs it, or prints the help that they ask for. `words`
// is the command line without the program's name; they decide `style.isJson`.
[[nodiscard]] ExitCode Run(const std::vector<CommandGroup>& groups,
                           const std::vector<std::string>& words, std::ostream& out,
                           std::ostream& err, Console::Style style);

}  // namespace Tvctl
