// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LogReader.h"

#include <glib.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "common/CHandle.h"

namespace Tvctl {

namespace {

// Longer than any line of the service, which cuts its messages at 16 KiB and escapes a byte with
// four characters.
constexpr std::size_t kMaxLineBytes = 98304;
constexpr const char* kTags[] = {"BT_AUTO_CONNECT", "BT_APP_UTIL", "TV_PLATFORM"};
constexpr const char* kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
// Stands for the year that -o short leaves out; a leap year, so that it has every day.
constexpr int kUnknownYear = 2000;

// A text that is taken off piece by piece from its front.
class Cursor {
public:
    explicit Cursor(const std::string& text) : m_text(text) {}

    [[nodiscard]] std::size_t Position() const { return m_at; }
    [[nodiscard]] std::string Rest() const { return m_text.substr(m_at); }

    bool Take(char expected) {
        if (m_at >= m_text.size() || m_text[m_at] != expected) {
            return false;
        }
        ++m_at;
        return true;
    }

    // A number of that many digits; false without.
    bool TakeNumber(int digits, int& number) {
        number = 0;
        for (int i = 0; i < digits; ++i, ++m_at) {
            if (m_at >= m_text.size() || g_ascii_isdigit(m_text[m_at]) == FALSE) {
                return false;
            }
            number = number * 10 + (m_text[m_at] - '0');
        }
        return true;
    }

    // What stands before the next `separator`, which is taken, too; false when there is none.
    bool TakeUntil(const char* separator, std::string& piece) {
        const std::size_t end = m_text.find(separator, m_at);
        if (end == std::string::npos) {
            return false;
        }
        piece = m_text.substr(m_at, end - m_at);
        m_at = end + std::char_traits<char>::length(separator);
        return true;
    }

private:
    const std::string& m_text;
    std::size_t m_at = 0;
};

// A terminal's colours and other sequences "ESC [ ... letter" go.
std::string WithoutColours(const std::string& line) {
    std::string plain;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '\x1B' || i + 1 >= line.size() || line[i + 1] != '[') {
            plain += line[i];
            continue;
        }
        for (i += 2; i < line.size() && (line[i] < '@' || line[i] > '~'); ++i) {
        }
    }
    return plain;
}

std::string MakeValid(const std::string& text) {
    return GStringPtr(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

bool TakeClock(Cursor& cursor, tm& time) {
    return cursor.TakeNumber(2, time.tm_hour) && cursor.Take(':') &&
           cursor.TakeNumber(2, time.tm_min) && cursor.Take(':') &&
           cursor.TakeNumber(2, time.tm_sec) && time.tm_hour < 24 && time.tm_min < 60 &&
           time.tm_sec <= 60;
}

// The decimals of the second as microseconds; 0 where there are none.
int TakeFraction(Cursor& cursor) {
    if (!cursor.Take('.')) {
        return 0;
    }
    int fraction = 0;
    int digit = 0;
    for (int unit = 100000; cursor.TakeNumber(1, digit); unit /= 10) {
        fraction += digit * unit;
    }
    return fraction;
}

bool TakeIsoDate(Cursor& cursor, tm& time) {
    int year = 0;
    int month = 0;
    if (!cursor.TakeNumber(4, year) || !cursor.Take('-') || !cursor.TakeNumber(2, month) ||
        !cursor.Take('-') || !cursor.TakeNumber(2, time.tm_mday)) {
        return false;
    }
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    return month >= 1 && month <= 12 && time.tm_mday >= 1 && time.tm_mday <= 31;
}

// "Nov 21", or "Nov  1".
bool TakeShortDate(Cursor& cursor, tm& time) {
    std::string name;
    if (!cursor.TakeUntil(" ", name) || name.size() != 3) {
        return false;
    }
    const std::size_t month = std::string(kMonths).find(name);
    const int digits = cursor.Take(' ') ? 1 : 2;
    time.tm_year = kUnknownYear - 1900;
    time.tm_mon = static_cast<int>(month / 3);
    return month != std::string::npos && month % 3 == 0 &&
           cursor.TakeNumber(digits, time.tm_mday) && time.tm_mday >= 1 && time.tm_mday <= 31 &&
           cursor.Take(' ');
}

// As a person reads it: a blank before the time of day, and no more than three decimals.
std::string WithMilliseconds(std::string when) {
    const std::size_t point = when.rfind('.');
    if (point != std::string::npos && point + 4 < when.size()) {
        when.resize(point + 4);
    }
    if (when.size() > 10 && when[10] == 'T') {
        when[10] = ' ';
    }
    return when;
}

// The text behind the time at the front of `line`, which goes into the record; nothing when there
// is none.
std::optional<std::string> TakeTime(const std::string& line, LogRecord& record) {
    Cursor cursor(line);
    tm time = {};
    const bool isIso = !line.empty() && g_ascii_isdigit(line[0]) != FALSE;
    if (isIso) {
        if (!TakeIsoDate(cursor, time) || (!cursor.Take(' ') && !cursor.Take('T'))) {
            return std::nullopt;
        }
    } else if (!TakeShortDate(cursor, time)) {
        return std::nullopt;
    }
    if (!TakeClock(cursor, time)) {
        return std::nullopt;
    }
    const int fraction = TakeFraction(cursor);
    record.when = WithMilliseconds(line.substr(0, cursor.Position()));
    record.timeUs = std::int64_t{timegm(&time)} * G_USEC_PER_SEC + fraction;
    std::string zone;
    if (!cursor.TakeUntil(" ", zone)) {
        return std::nullopt;
    }
    return cursor.Rest();
}

// "FILE: FUNCTION(LINE) > MESSAGE" of the layers above the platform.
bool TakePlace(const std::string& text, LogRecord& record) {
    Cursor cursor(text);
    std::string number;
    const bool hasPlace = cursor.TakeUntil(": ", record.file) &&
                          cursor.TakeUntil("(", record.function) &&
                          cursor.TakeUntil(") > ", number);
    record.message = cursor.Rest();
    return hasPlace;
}

bool TakeMessage(const std::string& tag, const std::string& text, LogRecord& record) {
    for (const char* known : kTags) {
        if (tag != known) {
            continue;
        }
        record.tag = tag;
        if (tag == "TV_PLATFORM") {
            record.message = text;
            return true;
        }
        return TakePlace(text, record);
    }
    return false;
}

// "LETTER TAG: text", as the service itself writes it.
bool TakeOwnForm(const std::string& text, LogRecord& record) {
    std::string tag;
    Cursor cursor(text);
    return text.size() > 2 && text[1] == ' ' && cursor.TakeUntil(" ", tag) &&
           cursor.TakeUntil(": ", tag) && TakeMessage(tag, cursor.Rest(), record);
}

// "HOST IDENTIFIER[PROCESS]: text". Where standard error was passed on to the journal line by line,
// the text is one of the service's own form with a time of its own.
bool TakeJournalForm(const std::string& text, LogRecord& record) {
    Cursor cursor(text);
    std::string host;
    std::string identifier;
    if (!cursor.TakeUntil(" ", host) || !cursor.TakeUntil(": ", identifier)) {
        return false;
    }
    const std::string tag = identifier.substr(0, identifier.find('['));
    if (TakeMessage(tag, cursor.Rest(), record)) {
        return true;
    }
    const auto rest = TakeTime(cursor.Rest(), record);
    return rest && TakeOwnForm(*rest, record);
}

std::optional<LogRecord> Parse(const std::string& line) {
    LogRecord record;
    const auto rest = TakeTime(MakeValid(WithoutColours(line)), record);
    if (!rest || (!TakeOwnForm(*rest, record) && !TakeJournalForm(*rest, record))) {
        return std::nullopt;
    }
    return record;
}

}  // namespace

std::optional<LogRecord> LogReader::Next() {
    std::string line;
    while (ReadLine(line)) {
        if (line.size() <= kMaxLineBytes) {
            if (auto record = Parse(line)) {
                return record;
            }
        }
        ++m_skipped;
    }
    return std::nullopt;
}

// Of a line that is too long only so much is kept as shows that it is.
bool LogReader::ReadLine(std::string& line) {
    line.clear();
    std::streambuf* const buffer = m_stream.rdbuf();
    int character = buffer->sbumpc();
    if (character == EOF) {
        return false;
    }
    for (; character != EOF && character != '\n'; character = buffer->sbumpc()) {
        if (line.size() <= kMaxLineBytes) {
            line += static_cast<char>(character);
        }
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return true;
}

}  // namespace Tvctl
