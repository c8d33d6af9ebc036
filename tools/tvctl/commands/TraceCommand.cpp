// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/trace/LogReader.h"
#include "tools/tvctl/trace/Timeline.h"
#include "tools/tvctl/trace/TimelineText.h"
#include "tools/tvctl/trace/picture/TimelineSvg.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

LogSource SourceOf(const Arguments& arguments) {
    for (const char* name : {"-D", "--directory"}) {
        if (const auto directory = arguments.Option(name)) {
            return {LogSource::Kind::kDirectory, *directory};
        }
    }
    if (const auto journal = arguments.Option("--file")) {
        return {LogSource::Kind::kJournal, *journal};
    }
    if (!arguments.positional.empty()) {
        return {LogSource::Kind::kText, arguments.positional[0]};
    }
    return {};
}

// Whether the picture would take the place of the log.
bool IsSameFile(const std::string& log, const std::string& picture) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(picture, ignored) &&
           std::filesystem::equivalent(log, picture, ignored);
}

// Writes into what is there, which may be a device, and says what went wrong, or "".
std::string WritePicture(const std::string& path, const std::vector<WakeUp>& wakeUps) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (file) {
        file << ToSvg(wakeUps);
        file.close();
    }
    return file ? "" : path + ": " + std::strerror(errno);
}

void Report(const std::vector<WakeUp>& wakeUps, std::size_t skipped, Console& console) {
    std::vector<std::string> lines = ToLines(wakeUps);
    if (skipped > 0) {
        lines.push_back("lines of another kind, skipped: " + std::to_string(skipped));
    }
    console.Show(Util::Object({{"wakeUps", ToJson(wakeUps)},
                               {"skippedLines", static_cast<Json::UInt64>(skipped)}}),
                 lines);
}

ExitCode Trace(const Arguments& arguments, Console& console) {
    const auto picture = arguments.Option("--svg");
    const std::size_t sources = arguments.positional.size() + arguments.options.size();
    if (sources > (picture ? 2U : 1U)) {
        return console.Misuse("name one log: FILE, --directory DIR or --file JOURNAL");
    }
    const LogSource source = SourceOf(arguments);
    if (picture && IsSameFile(source.path, *picture)) {
        return console.Misuse("the picture would overwrite the log " + *picture);
    }
    Timeline timeline;
    const LogCount count =
        ReadLog(source, [&timeline](const LogRecord& record) { timeline.Add(record); });
    const std::vector<WakeUp> wakeUps = timeline.Finish();
    if (wakeUps.empty()) {
        return console.Fail(!count.failure.empty()
                                ? count.failure
                                : "no wake-up in " + NameOf(source) + ": " +
                                      std::to_string(count.records) + " lines of the service, " +
                                      std::to_string(count.skipped) + " of another kind");
    }
    Report(wakeUps, count.skipped, console);
    const std::string notDrawn = picture ? WritePicture(*picture, wakeUps) : "";
    const std::string& failure = count.failure.empty() ? notDrawn : count.failure;
    return failure.empty() ? kDone : console.Fail(failure);
}

}  // namespace

CommandGroup TraceCommands() {
    return {
        "trace",
        "what became of each wake-up, out of the log",
        {{"",
          "[FILE | --directory DIR | --file JOURNAL] [--svg OUT]",
          "Shows the timeline of each wake-up that the service's log tells of",
          Trace,
          "Without a log it reads the journal of bt-autoconnect.service since the boot. FILE is a\n"
          "log as the service writes it to standard error, or as journalctl -o json prints it;\n"
          "- is standard input. Times are seconds from the wake-up's signal. Fails when there is\n"
          "no wake-up in the log.\n",
          {{"--directory", "DIR", "read the journal files in the folder DIR, of every boot"},
           {"-D", "DIR", "the same"},
           {"--file", "JOURNAL", "read the journal file JOURNAL, every boot in it"},
           {"--svg", "OUT", "draw the timelines into the file OUT, too"}}}}};
}

}  // namespace Tvctl
