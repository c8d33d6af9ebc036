// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <systemd/sd-journal.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/CHandle.h"
#include "tools/tvctl/trace/LogLine.h"
#include "tools/tvctl/trace/LogReader.h"

namespace Tvctl {

// Reads the entries of the service's and the media player's units in a journal.
class JournalReader : public LogReader {
public:
    JournalReader(const LogSource& source, TakeRecord take);

    void Read() override;
    void Wait(int ms) override;
    [[nodiscard]] bool IsOver() const override { return !m_count.failure.empty(); }
    [[nodiscard]] LogCount Count() const override { return m_count; }

private:
    // Negative: an error number.
    [[nodiscard]] int Open();
    [[nodiscard]] int Select();
    void LoadEntry();
    [[nodiscard]] std::string FieldOf(std::string_view name) const;
    [[nodiscard]] std::string GroupThatMay() const;
    [[nodiscard]] std::string WhyUnreadable(int error) const;

    LogSource m_source;
    TakeRecord m_take;
    CPtr<sd_journal, sd_journal_close> m_journal;
    std::string m_entry;              // the fields of the last one, "NAME=VALUE" each
    std::vector<std::size_t> m_ends;  // of each of them
    LineParser m_parser;
    LogCount m_count;
};

}  // namespace Tvctl
