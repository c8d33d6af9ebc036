// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tools/tvctl/trace/LogRecord.h"

namespace Tvctl {

// Where a log is, and which part of it is meant.
struct LogSource {
    enum class Kind {
        kMachine,    // this machine's journal
        kDirectory,  // a folder of journal files
        kJournal,    // a journal file
        kText,       // a text file; standard input where the path is "-"
    };

    Kind kind = Kind::kMachine;
    std::string path;
    // Of a journal: "all", an id, or on this machine 0 for this boot, -1 for the one before ...
    std::string boot = {};
    std::string pattern = {};  // of a text: see LineParser; empty for the service's own form
    bool onlyNew = false;      // what is there already is passed over
};

// What messages call it.
[[nodiscard]] std::string NameOf(const LogSource& source);

// A log that is read from its begin, or followed from its end. Gives the lines of the service, of
// the platform and of the media player in their order; of a journal, the entries of their units.
class LogReader {
public:
    virtual ~LogReader() = default;

    // Gives all that is there by now. Of a pipe, waits for its end if it is not followed.
    virtual void Read() = 0;
    // Waits until there may be more, for so long at most.
    virtual void Wait(int ms) = 0;
    // Whether nothing more can come.
    [[nodiscard]] virtual bool IsOver() const = 0;
    [[nodiscard]] virtual LogCount Count() const = 0;
};

// Never null; the failure to open a log is the first thing that its count tells.
[[nodiscard]] std::unique_ptr<LogReader> OpenLog(const LogSource& source, TakeRecord take);

}  // namespace Tvctl
