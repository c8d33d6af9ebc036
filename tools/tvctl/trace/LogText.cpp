// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LogText.h"

#include <algorithm>

namespace Tvctl {

namespace {

// Longer than any line of the service, which cuts its messages at 16 KiB and escapes a byte with
// four characters, and than the JSON of such a message.
constexpr std::size_t kMaxLineBytes = 131072;

}  // namespace

void LogText::Add(std::string_view part) {
    while (!part.empty()) {
        const std::size_t end = part.find('\n');
        const std::string_view line = part.substr(0, end);
        if (end != std::string_view::npos && m_begun.empty()) {
            TakeLine(line);
        } else {
            // Of a line that is too long only so much is kept as shows that it is.
            m_begun += line.substr(0, kMaxLineBytes + 1 - std::min(kMaxLineBytes, m_begun.size()));
            if (end != std::string_view::npos) {
                End();
            }
        }
        part.remove_prefix(end == std::string_view::npos ? part.size() : end + 1);
    }
}

void LogText::End() {
    if (!m_begun.empty()) {
        TakeLine(m_begun);
        m_begun.clear();
    }
}

void LogText::TakeLine(std::string_view line) {
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    LogRecord record;
    const bool isRecord = line.size() <= kMaxLineBytes && m_parser.Parse(line, record);
    if (isRecord) {
        m_take(record);
    }
    ++(isRecord ? m_records : m_skipped);
}

}  // namespace Tvctl
