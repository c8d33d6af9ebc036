// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/TraceCommand.h"

#include <gio/gio.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "common/CHandle.h"
#include "tools/tvctl/trace/LogReader.h"
#include "tools/tvctl/trace/Timeline.h"
#include "tools/tvctl/trace/TimelineText.h"
#include "tools/tvctl/trace/picture/TimelineSvg.h"

namespace Tvctl {

namespace {

constexpr const char* kJournalCommand[] = {"journalctl",        "-b",   "-o",
                                           "short-iso-precise", "-u",   "bt-autoconnect.service",
                                           "--no-pager",        nullptr};
constexpr const char* kJournalName = "the journal of bt-autoconnect.service";

using BytesPtr = CPtr<GBytes, g_bytes_unref>;

// A log that is to be read, or why it cannot be.
struct Source {
    std::string name;
    std::istream* stream = nullptr;
    std::string failure;
    std::ifstream file;
    std::istringstream text;
};

std::string TextOf(const BytesPtr& bytes) {
    gsize size = 0;
    const auto* data =
        static_cast<const char*>(bytes == nullptr ? nullptr : g_bytes_get_data(bytes.get(), &size));
    return data == nullptr ? "" : std::string(data, size);
}

void OpenJournal(Source& source) {
    source.name = kJournalName;
    GErrorPtr error;
    const auto flags = static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                     G_SUBPROCESS_FLAGS_STDERR_PIPE);
    const GObjectPtr<GSubprocess> journal(g_subprocess_newv(kJournalCommand, flags, Out(error)));
    if (journal == nullptr) {
        source.failure = std::string("journalctl cannot be started: ") + error->message;
        return;
    }
    BytesPtr output;
    BytesPtr complaint;
    if (g_subprocess_communicate(journal.get(), nullptr, nullptr, Out(output), Out(complaint),
                                 Out(error)) == FALSE) {
        source.failure = std::string("journalctl cannot be read: ") + error->message;
        return;
    }
    if (g_subprocess_get_successful(journal.get()) == FALSE) {
        const std::string text = TextOf(complaint);
        source.failure = "journalctl failed: " + text.substr(0, text.find('\n'));
        return;
    }
    source.text.str(TextOf(output));
    source.stream = &source.text;
}

void OpenFile(const std::string& path, Source& source) {
    source.name = path;
    if (g_file_test(path.c_str(), G_FILE_TEST_IS_DIR) != FALSE) {
        source.failure = path + ": " + std::strerror(EISDIR);
        return;
    }
    source.file.open(path, std::ios::binary);
    if (!source.file) {
        source.failure = path + ": " + std::strerror(errno);
        return;
    }
    source.stream = &source.file;
}

void Open(const Arguments& arguments, Source& source) {
    if (arguments.positional.empty()) {
        OpenJournal(source);
    } else if (arguments.positional[0] == "-") {
        source.name = "standard input";
        source.stream = &std::cin;
    } else {
        OpenFile(arguments.positional[0], source);
    }
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
    if (!file) {
        return path + ": " + std::strerror(errno);
    }
    file << ToSvg(wakeUps);
    file.close();
    return file ? "" : path + ": " + std::strerror(errno);
}

void Report(const std::vector<WakeUp>& wakeUps, std::size_t skipped, Console& console) {
    if (console.IsJson()) {
        Json::Value json;
        json["wakeUps"] = ToJson(wakeUps);
        json["skippedLines"] = Json::Value(static_cast<Json::UInt64>(skipped));
        console.Print(json);
        return;
    }
    for (const std::string& line : ToLines(wakeUps)) {
        console.PrintLine(line);
    }
    if (skipped > 0) {
        console.PrintLine("lines of another kind, skipped: " + std::to_string(skipped));
    }
}

}  // namespace

CommandGroup TraceCommand::Group() {
    return {
        "trace",
        "what became of each wake-up, out of the log",
        {{"",
          "[FILE] [--svg OUT]",
          "Shows the timeline of each wake-up that the service's log tells of",
          Trace,
          "FILE is a log of the service as it comes on standard error, or as journalctl prints\n"
          "it with -o short, short-precise, short-iso or short-iso-precise; - is standard\n"
          "input. Without FILE the journal of bt-autoconnect.service since the boot is read.\n"
          "Times are seconds from the wake-up's signal. Fails when there is no wake-up in it.\n",
          {{"--svg", "OUT", "draw the timelines into the file OUT, too"}}}}};
}

ExitCode TraceCommand::Trace(const Arguments& arguments, Console& console) {
    const auto picture = arguments.Option("--svg");
    if (picture && !arguments.positional.empty() && IsSameFile(arguments.positional[0], *picture)) {
        return console.Misuse("the picture would overwrite the log " + *picture);
    }
    Source source;
    Open(arguments, source);
    if (!source.failure.empty()) {
        return console.Fail(source.failure);
    }
    LogReader reader(*source.stream);
    Timeline timeline;
    std::size_t lines = 0;
    while (const auto record = reader.Next()) {
        timeline.Add(*record);
        ++lines;
    }
    const std::vector<WakeUp> wakeUps = timeline.Finish();
    if (wakeUps.empty()) {
        return console.Fail("no wake-up in " + source.name + ": " + std::to_string(lines) +
                            " lines of the service, " + std::to_string(reader.Skipped()) +
                            " of another kind");
    }
    Report(wakeUps, reader.Skipped(), console);
    const std::string failure = picture ? WritePicture(*picture, wakeUps) : "";
    return failure.empty() ? kDone : console.Fail(failure);
}

}  // namespace Tvctl
