// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/CommandLine.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "platform/linux/base/PlatformLog.h"
#include "tools/tvctl/model/ConfigText.h"
#include "utility/CommonUtil.h"

namespace Tvctl {

namespace {

constexpr int kNameWidth = 28;

// What every argument of that name must be.
struct Kind {
    const char* name;
    bool (*accepts)(const std::string& argument);
    const char* description;
};

constexpr Kind kKinds[] = {
    {"ADDRESS", Util::CommonUtil::IsValidAddress, "a Bluetooth address (XX:XX:XX:XX:XX:XX)"},
    {"KEY", [](const std::string& word) { return KeyMeant(word).has_value(); },
     "a key; see tvctl conf get --help"}};

template <typename Item>
const Item* FindNamed(const std::vector<Item>& items, const std::string& name) {
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&name](const Item& item) { return item.name == name; });
    return found == items.end() ? nullptr : &*found;
}

// Removes a word wherever it is before "--"; whether it was there.
bool Take(std::vector<std::string>& words, const char* word) {
    const auto end = std::find(words.begin(), words.end(), "--");
    const auto kept = std::remove(words.begin(), end, word);
    const bool isThere = kept != end;
    words.erase(kept, end);
    return isThere;
}

void PrintRow(std::ostream& out, const std::string& name, const std::string& summary) {
    out << "  " << std::left << std::setw(kNameWidth) << name << " " << summary << "\n";
}

void PrintCommonOptions(std::ostream& out) {
    out << "\nOptions of every command:\n";
    PrintRow(out, "--json", "print the result as JSON, one value on a line");
    PrintRow(out, "-v, --verbose", "also show the log");
    PrintRow(out, "-h, --help", "print how the command is used");
    out << "\nExit status: 0 done, 1 failed, 2 wrong usage.\n";
}

std::string UsageOf(const CommandGroup& group, const Command& command) {
    std::string usage = "tvctl " + group.name;
    for (const std::string& part : {command.name, command.synopsis}) {
        usage += part.empty() ? "" : " " + part;
    }
    return usage;
}

void PrintHelp(const std::vector<CommandGroup>& groups, std::ostream& out) {
    out << "Usage: tvctl COMMAND [ARGUMENTS]\n\n"
           "Inspects and controls the automatic connection of a phone.\n\n"
           "Commands:\n";
    for (const CommandGroup& group : groups) {
        PrintRow(out, group.name, group.summary);
    }
    out << "\ntvctl COMMAND --help tells more about a command; tvctl --version prints the "
           "version.\n";
    PrintCommonOptions(out);
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

// Sorts the words of a command into options and others; what is wrong with them, or "".
std::string Sort(const Command& command, const std::vector<std::string>& words,
                 Arguments& arguments) {
    bool onlyPositional = false;
    for (auto word = words.begin(); word != words.end(); ++word) {
        const bool isOption =
            word->compare(0, 2, "--") == 0 || FindNamed(command.options, *word) != nullptr;
        if (onlyPositional || !isOption) {
            arguments.positional.push_back(*word);
            continue;
        }
        if (*word == "--") {
            onlyPositional = true;
            continue;
        }
        const size_t equals = word->find('=');
        const bool hasValue = equals != std::string::npos;
        const std::string name = word->substr(0, equals);
        const OptionRule* rule = FindNamed(command.options, name);
        const bool wantsValue = rule != nullptr && !rule->valueName.empty();
        if (rule == nullptr || (hasValue && !wantsValue)) {
            return "unknown option: " + *word;
        }
        std::string& value = arguments.options[name];
        if (hasValue) {
            value = word->substr(equals + 1);
        } else if (wantsValue) {
            if (++word == words.end()) {
                return name + " needs a value: " + rule->valueName;
            }
            value = *word;
        }
    }
    return "";
}

// What is wrong with an argument that the synopsis calls `name`, or "".
std::string CheckKind(const std::string& name, const std::string& argument) {
    for (const Kind& kind : kKinds) {
        if (Util::CommonUtil::StartsWith(name, kind.name) && !kind.accepts(argument)) {
            return "'" + argument + "' is not " + kind.description;
        }
    }
    return "";
}

// What is wrong with the arguments, or "".
std::string Check(const std::vector<std::string>& arguments, const std::string& synopsis,
                  const std::string& usage) {
    auto argument = arguments.begin();
    std::istringstream names(synopsis);
    // Only options follow a "|" and a "[--".
    for (std::string name; names >> name && name != "|" && name.compare(0, 3, "[--") != 0;) {
        if (argument == arguments.end()) {
            return name[0] == '[' ? "" : usage;
        }
        do {
            std::string mistake = CheckKind(name, *argument);
            if (!mistake.empty()) {
                return mistake;
            }
        } while (++argument != arguments.end() && name.back() == '.');
    }
    return argument == arguments.end() ? "" : usage;
}

ExitCode RunCommand(const CommandGroup& group, const Command& command,
                    const std::vector<std::string>& words, Console& console) {
    Arguments arguments;
    std::string mistake = Sort(command, words, arguments);
    if (mistake.empty()) {
        mistake =
            Check(arguments.positional, command.synopsis, "usage: " + UsageOf(group, command));
    }
    return mistake.empty() ? command.run(arguments, console) : console.Misuse(mistake);
}

}  // namespace

std::optional<std::string> Arguments::Option(const std::string& option) const {
    const auto found = options.find(option);
    return found != options.end() ? std::optional<std::string>(found->second) : std::nullopt;
}

ExitCode Run(const std::vector<CommandGroup>& groups, const std::vector<std::string>& words,
             std::ostream& out, std::ostream& err, Console::Style style) {
    std::vector<std::string> rest = words;
    const bool isLongHelp = Take(rest, "--help");
    const bool isHelp = Take(rest, "-h") || isLongHelp;
    std::ostream& help = isHelp ? out : err;
    const ExitCode helped = isHelp ? kDone : kUsage;
    style.isJson = Take(rest, "--json");
    Console console(out, err, style);
    const bool isLongVerbose = Take(rest, "--verbose");
    if (!Take(rest, "-v") && !isLongVerbose) {
        // A failure is reported in the command's own words.
        Platform::SetLogThreshold(DLOG_ERROR + 1);
    }
    if (Take(rest, "--version")) {
        console.PrintLine("tvctl " TVCTL_VERSION);
        return kDone;
    }
    if (rest.empty()) {
        PrintHelp(groups, help);
        return helped;
    }
    const CommandGroup* group = FindNamed(groups, rest[0]);
    if (group == nullptr) {
        return console.Misuse("unknown command: " + rest[0] + "; tvctl --help lists them");
    }
    const bool isSingle = group->commands[0].name.empty();
    if (rest.size() == 1 && !isSingle) {
        PrintGroupHelp(*group, help);
        return helped;
    }
    const Command* command = FindNamed(group->commands, isSingle ? "" : rest[1]);
    if (command == nullptr) {
        return console.Misuse("unknown command: " + group->name + " " + rest[1] + "; tvctl " +
                              group->name + " --help lists them");
    }
    if (isHelp) {
        PrintCommandHelp(*group, *command, out);
        return kDone;
    }
    rest.erase(rest.begin(), rest.begin() + (isSingle ? 1 : 2));
    return RunCommand(*group, *command, rest, console);
}

}  // namespace Tvctl
