// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <string>

namespace Tvctl {

// One line that the service wrote.
struct LogRecord {
    std::int64_t timeUs = 0;  // only the difference of two of the same log is meaningful
    std::string when;         // local time for a reader, to the millisecond
    std::string file;         // empty, like the function, for a line of the platform
    std::string function;
    std::string message;  // valid UTF-8; may hold control characters
};

// How many lines were read, and what ended the reading too early.
struct LogCount {
    std::size_t records = 0;  // of the service
    std::size_t skipped = 0;  // of another kind
    std::string failure;      // what could not be read and why; empty when all was read
};

using TakeRecord = std::function<void(const LogRecord& record)>;

// Where a log is.
struct LogSource {
    enum class Kind {
        kMachine,    // this machine's journal since its boot
        kDirectory,  // a folder of journal files
        kJournal,    // a journal file
        kText,       // a text file; standard input where the path is "-"
    };

    Kind kind = Kind::kMachine;
    std::string path;
};

// What messages call it.
[[nodiscard]] std::string NameOf(const LogSource& source);

// Read the lines of the service in their order and give each to `take`; whatever else is there is
// passed over and counted.

// Of a journal, the entries of the service's unit are read.
[[nodiscard]] LogCount ReadLog(const LogSource& source, const TakeRecord& take);
// Each line is as the service writes it to standard error, colours or not, or as
// `journalctl -o json` prints it. Needs no more memory for a line of any length.
[[nodiscard]] LogCount ReadText(std::istream& text, const TakeRecord& take);

}  // namespace Tvctl
