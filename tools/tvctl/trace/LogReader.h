// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

namespace Tvctl {

// One line that the service wrote.
struct LogRecord {
    std::int64_t timeUs = 0;  // only the difference of two is meaningful: of which zone is unknown
    std::string when;         // the time as it reads in the log
    std::string tag;
    std::string file;  // empty, like the function, for a line of the platform
    std::string function;
    std::string message;  // valid UTF-8; may hold control characters
};

// Reads the service's log out of a stream: as it comes on standard error, colours or not, or as
// journalctl prints it with -o short, short-precise, short-iso or short-iso-precise. Whatever else
// stands in the stream is passed over and counted. Needs no more memory for a line of any length.
class LogReader {
public:
    // The stream stays the caller's and must outlive the reader.
    explicit LogReader(std::istream& stream) : m_stream(stream) {}

    // The next line of the service, nothing at the end.
    [[nodiscard]] std::optional<LogRecord> Next();
    // How many lines were of another kind so far.
    [[nodiscard]] std::size_t Skipped() const { return m_skipped; }

private:
    bool ReadLine(std::string& line);

    std::istream& m_stream;
    std::size_t m_skipped = 0;
};

}  // namespace Tvctl
