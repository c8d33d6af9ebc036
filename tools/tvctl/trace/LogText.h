// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "tools/tvctl/trace/LogLine.h"
#include "tools/tvctl/trace/LogRecord.h"

namespace Tvctl {

// A log of lines, of which parts come one after the other. Gives each line of the service to
// `take`; whatever else is there is passed over and counted. Needs no more memory for a line of any
// length.
class LogText {
public:
    LogText(LineParser& parser, TakeRecord take) : m_parser(parser), m_take(std::move(take)) {}

    void Add(std::string_view part);
    // The last line may lack its end.
    void End();
    // How many lines were the service's, and how many of another kind.
    [[nodiscard]] std::size_t Records() const { return m_records; }
    [[nodiscard]] std::size_t Skipped() const { return m_skipped; }

private:
    void TakeLine(std::string_view line);

    LineParser& m_parser;
    TakeRecord m_take;
    std::string m_begun;  // of a line whose rest has not come; of one that is too long, its begin
    std::size_t m_records = 0;
    std::size_t m_skipped = 0;
};

}  // namespace Tvctl
