// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/CommandLine.h"

#include <algorithm>
#include <iomanip>

#include "platform/linux/base/PlatformLog.h"

namespace Tvctl {

namespace {

constexpr int kNameWidth = 28;

// The options that every command has, taken out of the words wherever they stand.
struct CommonOptions {
    bool help = false;
    bool json = false;
    bool verbose = false;
    bool version = false;
};

CommonOptions TakeCommonOptions(std::vector<std::string>& words) {
    CommonOptions common;
    const auto take = [&common](const std::string& word) {
        if (word == "--help" || word == "-h") {
            return common.help = true;
        }
        if (word == "--json") {
            return common.json = true;
        }
        if (word == "--verbose") {
            return common.verbose = true;
        }
        return word == "--version" && (common.version = true);
    };
    const auto end = std::find(words.begin(), words.end(), "--");
    words.erase(std::remove_if(words.begin(), end, take), end);
    return common;
}

void PrintRow(std::ostream& out, const std::string& name, const std::string& summary) {
    out << "  " << std::left << std::setw(kNameWidth) << name << " " << summary << "\n";
}

void PrintCommonOptions(std::ostream& out) {
    out << "\nOptions of every command:\n";
    PrintRow(out, "--json", "give the result as JSON, one value on a line");
    PrintRow(out, "--verbose", "show the log of what is done, too");
    PrintRow(out, "-h, --help", "say how the command is used");
    out << "\nExit status: 0 done, 1 failed, 2 wrong usage.\n";
}

std::string UsageOf(const CommandGroup& group, const Command& command) {
    std::string usage = "tvctl " + group.name;
    for (const std::string& part : {command.name, command.synopsis}) {
        usage += part.empty() ? "" : " " + part;
    }
    return usage;
}

void PrintGroupHelp(const CommandGroup& group, std::ostream& out) {
    out << "Usage: tvctl " << group.name << " COMMAND\n\nCommands for " << group.summary << ":\n";
    for (const Command& command : group.commands) {
        PrintRow(out, command.name + " " + command.synopsis, command.summary);
    }
    PrintCommonOptions(out);
}

void PrintCommandHelp(const CommandGroup& group, const Command& command, std::ostream& out) {
    out << "Usage: " << UsageOf(group, command) << "\n\n" << command.summary << ".\n";
    if (!command.details.empty()) {
        out << "\n" << command.details;
    }
    if (!command.options.empty()) {
        out << "\nOptions:\n";
    }
    for (const OptionRule& rule : command.options) {
        PrintRow(out, rule.name + (rule.valueName.empty() ? "" : " " + rule.valueName),
                 rule.summary);
    }
    PrintCommonOptions(out);
}

// Takes the option in words[at] and, if it has one, the value behind it. Nothing after a reported
// mistake, else the place of the last word taken.
std::optional<size_t> TakeOption(const Command& command, const std::vector<std::string>& words,
                                 size_t at, Arguments& arguments, Console& console) {
    const std::string& word = words[at];
    const size_t equals = word.find('=');
    const bool hasValue = equals != std::string::npos;
    const std::string name = word.substr(0, equals);
    const auto rule =
        std::find_if(command.options.begin(), command.options.end(),
                     [&name](const OptionRule& candidate) { return candidate.name == name; });
    if (rule == command.options.end() || (rule->valueName.empty() && hasValue)) {
        static_cast<void>(console.Misuse("unknown option " + word));
        return std::nullopt;
    }
    if (rule->valueName.empty() || hasValue) {
        arguments.options[name] = hasValue ? word.substr(equals + 1) : "";
        return at;
    }
    if (at + 1 == words.size()) {
        static_cast<void>(console.Misuse(name + " needs a value: " + rule->valueName));
        return std::nullopt;
    }
    arguments.options[name] = words[at + 1];
    return at + 1;
}

// The words of one command, sorted into options and others; nothing after a reported mistake.
std::optional<Arguments> Sort(const Command& command, const std::vector<std::string>& words,
                              Console& console) {
    Arguments arguments;
    bool onlyPositional = false;
    for (size_t i = 0; i < words.size(); ++i) {
        if (onlyPositional || words[i].compare(0, 2, "--") != 0) {
            arguments.positional.push_back(words[i]);
            continue;
        }
        onlyPositional = words[i] == "--";
        const auto taken = onlyPositional ? i : TakeOption(command, words, i, arguments, console);
        if (!taken) {
            return std::nullopt;
        }
        i = *taken;
    }
    return arguments;
}

const Command* FindCommand(const CommandGroup& group, const std::string& name) {
    const auto command =
        std::find_if(group.commands.begin(), group.commands.end(),
                     [&name](const Command& candidate) { return candidate.name == name; });
    return command != group.commands.end() ? &*command : nullptr;
}

ExitCode RunCommand(const CommandGroup& group, const Command& command,
                    const std::vector<std::string>& words, Console& console) {
    const auto arguments = Sort(command, words, console);
    if (!arguments) {
        return kUsage;
    }
    const size_t count = arguments->positional.size();
    if (count < command.minArguments || count > command.maxArguments) {
        return console.Misuse("usage: " + UsageOf(group, command));
    }
    return command.run(*arguments, console);
}

}  // namespace

std::optional<std::string> Arguments::Option(const std::string& option) const {
    const auto found = options.find(option);
    return found != options.end() ? std::optional<std::string>(found->second) : std::nullopt;
}

ExitCode CommandLine::Run(const std::vector<std::string>& words, std::ostream& out,
                          std::ostream& err) const {
    std::vector<std::string> rest = words;
    const CommonOptions common = TakeCommonOptions(rest);
    Console console(out, err, common.json);
    if (!common.verbose) {
        // A failure is reported in the command's own words.
        Platform::SetLogThreshold(DLOG_ERROR + 1);
    }
    if (common.version) {
        console.PrintLine("tvctl " TVCTL_VERSION);
        return kDone;
    }
    if (rest.empty()) {
        PrintHelp(common.help ? out : err);
        return common.help ? kDone : kUsage;
    }
    const CommandGroup* group = FindGroup(rest[0]);
    if (group == nullptr) {
        return console.Misuse("no command is called " + rest[0] + "; tvctl --help lists them");
    }
    rest.erase(rest.begin());
    const bool isSingle = group->commands[0].name.empty();
    if (rest.empty() && !isSingle) {
        PrintGroupHelp(*group, common.help ? out : err);
        return common.help ? kDone : kUsage;
    }
    const Command* command = FindCommand(*group, isSingle ? "" : rest[0]);
    if (command == nullptr) {
        return console.Misuse("no command is called " + group->name + " " + rest[0] + "; tvctl " +
                              group->name + " --help lists them");
    }
    if (common.help) {
        PrintCommandHelp(*group, *command, out);
        return kDone;
    }
    rest.erase(rest.begin(), rest.begin() + (isSingle ? 0 : 1));
    return RunCommand(*group, *command, rest, console);
}

const CommandGroup* CommandLine::FindGroup(const std::string& name) const {
    for (const CommandGroup& group : m_groups) {
        if (group.name == name) {
            return &group;
        }
    }
    return nullptr;
}

void CommandLine::PrintHelp(std::ostream& out) const {
    out << "Usage: tvctl COMMAND [ARGUMENTS]\n\n"
           "Looks at and steers what the automatic connection of a phone depends on.\n\n"
           "Commands:\n";
    for (const CommandGroup& group : m_groups) {
        PrintRow(out, group.name, group.summary);
    }
    out << "\ntvctl COMMAND --help tells more about one, tvctl --version which one this is.\n";
    PrintCommonOptions(out);
}

}  // namespace Tvctl
