// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "common/Parse.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/trace/Boxes.h"
#include "tools/tvctl/trace/LiveLog.h"
#include "tools/tvctl/trace/LogReader.h"
#include "tools/tvctl/trace/Statistics.h"
#include "tools/tvctl/trace/StatisticsText.h"
#include "tools/tvctl/trace/TimelineText.h"
#include "tools/tvctl/trace/picture/StatisticsSvg.h"
#include "tools/tvctl/trace/picture/TimelineSvg.h"

namespace Tvctl {

namespace {

constexpr int kLookMs = 200;

LogSource SourceOf(const Arguments& arguments) {
    LogSource source;
    const std::string boot = arguments.Option("--boot").value_or("");
    source.pattern = arguments.Option("--pattern").value_or("");
    source.boot = boot.empty() ? "all" : boot;
    for (const char* name : {"-D", "--directory"}) {
        if (const auto directory = arguments.Option(name)) {
            source.kind = LogSource::Kind::kDirectory;
            source.path = *directory;
        }
    }
    if (const auto journal = arguments.Option("--file")) {
        source.kind = LogSource::Kind::kJournal;
        source.path = *journal;
    } else if (!arguments.positional.empty()) {
        source.kind = LogSource::Kind::kText;
        source.path = arguments.positional[0];
    } else if (source.kind == LogSource::Kind::kMachine && boot.empty()) {
        source.boot = "0";
    }
    return source;
}

// Whether the picture would take the place of the log.
bool IsSameFile(const std::string& log, const std::string& picture) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(picture, ignored) &&
           std::filesystem::equivalent(log, picture, ignored);
}

// What is wrong with the options together, or "".
std::string Check(const Arguments& arguments, const LogSource& source) {
    const auto has = [&arguments](const char* option) { return arguments.Has(option) ? 1 : 0; };
    const auto picture = arguments.Option("--svg");
    const bool isText = source.kind == LogSource::Kind::kText;
    if (arguments.positional.size() +
            static_cast<std::size_t>(has("-D") + has("--directory") + has("--file")) >
        1) {
        return "name one log: FILE, --directory DIR or --file JOURNAL";
    }
    if (picture && IsSameFile(source.path, *picture)) {
        return "the picture would overwrite the log " + *picture;
    }
    if (has("--follow") + has("--summary") + has("--last") > 1 ||
        has("--follow") + has("--svg") > 1) {
        return "--follow, --summary and --last exclude each other, and --follow draws no picture";
    }
    if (has("--pattern") != 0 && !isText) {
        return "--pattern is for a text FILE; a journal has a form of its own";
    }
    if (has("--boot") != 0 && (isText || source.boot.empty())) {
        return "--boot is for a journal: a number, an id or all";
    }
    if (source.kind != LogSource::Kind::kMachine && ParseInt(source.boot)) {
        return "--boot counts the boots of this machine; of another journal name the id, or all";
    }
    return "";
}

// Takes the wake-ups of a log as they come, and shows what was asked for.
class Report {
public:
    Report(const Arguments& arguments, Console& console)
        : m_arguments(arguments), m_console(console) {}

    void Add(const WakeUp& wakeUp) {
        ++m_count;
        if (m_arguments.Has("--last")) {
            m_last = wakeUp;
        } else if (m_arguments.Has("--summary")) {
            m_statistics.Add(wakeUp);
        } else {
            Show(wakeUp);
        }
    }

    // Shows what waits for the end.
    void End(std::size_t boxes, std::size_t skipped) {
        if (m_last) {
            Show(*m_last);
        }
        if (m_arguments.Has("--summary")) {
            m_console.Show(ToJson(m_statistics, boxes), ToLines(m_statistics, boxes));
        }
        if (skipped > 0) {
            m_console.ShowLine("not of the service, left out: " + std::to_string(skipped) +
                               (skipped == 1 ? " line" : " lines"));
        }
        m_boxes = boxes;
    }

    [[nodiscard]] std::size_t Count() const { return m_count; }

    // Draws into what is there, which may be a device, and says what went wrong, or "".
    [[nodiscard]] std::string Draw(const std::string& path) const {
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        if (file) {
            file << (m_arguments.Has("--summary") ? ToSvg(m_statistics, m_boxes)
                                                  : m_picture.Draw());
            file.close();
        }
        return file ? "" : path + ": " + std::strerror(errno);
    }

private:
    void Show(const WakeUp& wakeUp) {
        m_console.Show(ToJson(wakeUp), ToLines(wakeUp, m_count));
        m_picture.Add(wakeUp);
    }

    const Arguments& m_arguments;
    Console& m_console;
    std::size_t m_count = 0;
    std::size_t m_boxes = 0;
    std::optional<WakeUp> m_last;
    Statistics m_statistics;
    TimelinePicture m_picture;
};

ExitCode Follow(const LogSource& source, Console& console) {
    LiveLog log(
        source, [&console](const std::string& line) { console.ShowLine(line); },
        [&console](const WakeUp& wakeUp) { console.Show(ToJson(wakeUp)); });
    while (!log.IsOver()) {
        log.Look(kLookMs);
    }
    log.Finish();
    return log.Count().failure.empty() ? kDone : console.Fail(log.Count().failure);
}

ExitCode Trace(const Arguments& arguments, Console& console) {
    const LogSource source = SourceOf(arguments);
    const std::string mistake = Check(arguments, source);
    if (!mistake.empty()) {
        return console.Misuse(mistake);
    }
    if (arguments.Has("--follow")) {
        return Follow(source, console);
    }
    Report report(arguments, console);
    Boxes boxes([&report](const WakeUp& wakeUp) { report.Add(wakeUp); });
    const auto reader = OpenLog(source, [&boxes](const LogRecord& record) { boxes.Add(record); });
    reader->Read();
    boxes.Finish();
    const LogCount count = reader->Count();
    if (report.Count() == 0) {
        return console.Fail(!count.failure.empty()
                                ? count.failure
                                : "no wake-up in " + NameOf(source) + ": " +
                                      std::to_string(count.records) + " lines of the service, " +
                                      std::to_string(count.skipped) + " of another kind");
    }
    report.End(boxes.Count(), count.skipped);
    const auto picture = arguments.Option("--svg");
    const std::string notDrawn = picture ? report.Draw(*picture) : "";
    const std::string& failure = count.failure.empty() ? notDrawn : count.failure;
    return failure.empty() ? kDone : console.Fail(failure);
}

}  // namespace

CommandGroup TraceCommands() {
    return {
        "trace",
        "what became of each wake-up, out of the log",
        {{"",
          "[FILE | --directory DIR | --file JOURNAL] [--boot BOOT] [--pattern REGEX] "
          "[--last | --summary | --follow] [--svg OUT]",
          "Shows the timeline of each wake-up that the service's log tells of",
          Trace,
          "Without a log it reads the journal of bt-autoconnect.service since the boot. FILE is a\n"
          "log as the service writes it to standard error, or as journalctl -o json prints it;\n"
          "- is standard input. Times are seconds from the wake-up's signal. Wake-ups of several\n"
          "boxes in a journal are kept apart. Fails when there is no wake-up in the log.\n",
          {{"--last", "", "only the last wake-up"},
           {"--summary", "", "how many ended in music, after how long, and why the others did not"},
           {"--follow", "", "draw each wake-up from now on as it happens, until stopped"},
           {"--boot", "BOOT", "0 is this boot, -1 the one before; or a boot's id, or all"},
           {"--directory", "DIR", "read the journal files in the folder DIR, of every boot"},
           {"-D", "DIR", "the same"},
           {"--file", "JOURNAL", "read the journal file JOURNAL, every boot in it"},
           {"--pattern", "REGEX", "FILE is another logger's; groups: text, time, tag, host"},
           {"--svg", "OUT", "also draw the timelines, or the summary, into the file OUT"}}}}};
}

}  // namespace Tvctl
