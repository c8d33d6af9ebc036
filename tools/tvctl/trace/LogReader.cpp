// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LogReader.h"

#include <glib.h>
#include <json/json.h>
#include <systemd/sd-journal.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>

#include "common/CHandle.h"
#include "common/PrintableText.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

using DateTimePtr = CPtr<GDateTime, g_date_time_unref>;
using JournalPtr = CPtr<sd_journal, sd_journal_close>;
// The text of one field of a journal's entry, "" when the entry has none.
using FieldReader = std::function<std::string(const char* name)>;

// Longer than any line of the service, which cuts its messages at 16 KiB and escapes a byte with
// four characters, and than the JSON of such a message.
constexpr std::size_t kMaxLineBytes = 131072;
constexpr const char* kUnit = "bt-autoconnect.service";
constexpr const char* kTags[] = {"BT_AUTO_CONNECT", "BT_APP_UTIL", "TV_PLATFORM"};
// "2026-11-21 07:00:01.000", in front of " I TAG: " in the service's own lines.
constexpr std::size_t kTimeLength = 23;
constexpr std::size_t kTagBegin = kTimeLength + 3;

// Valid UTF-8 without a terminal's colours.
std::string Clean(const std::string& text) {
    const std::string plain = WithoutColours(text);
    return GStringPtr(g_utf8_make_valid(plain.data(), static_cast<gssize>(plain.size()))).get();
}

// The layers above the platform write "FILE: FUNCTION(LINE) > MESSAGE". False when `tag` is not
// one of the service's, or the text is not like that.
bool TakeMessage(const std::string& tag, const std::string& text, LogRecord& record) {
    if (std::find(std::begin(kTags), std::end(kTags), tag) == std::end(kTags)) {
        return false;
    }
    if (tag == "TV_PLATFORM") {
        record.message = text;
        return true;
    }
    const std::size_t colon = text.find(": ");
    const std::size_t bracket = text.find('(', colon);
    const std::size_t end = text.find(") > ", bracket);
    if (end == std::string::npos) {
        return false;
    }
    record.file = text.substr(0, colon);
    record.function = text.substr(colon + 2, bracket - colon - 2);
    record.message = text.substr(end + 4);
    return true;
}

// A line of the service's own form. The zone of its time is not known.
std::optional<LogRecord> ParseLine(const std::string& line) {
    const std::size_t colon = line.find(": ", kTagBegin);
    if (colon == std::string::npos || line[kTimeLength] != ' ' || line[kTagBegin - 1] != ' ') {
        return std::nullopt;
    }
    LogRecord record;
    record.when = line.substr(0, kTimeLength);
    const CPtr<GTimeZone, g_time_zone_unref> zone(g_time_zone_new_utc());
    const DateTimePtr time(g_date_time_new_from_iso8601(record.when.c_str(), zone.get()));
    const std::string tag = line.substr(kTagBegin, colon - kTagBegin);
    if (time == nullptr || !TakeMessage(tag, line.substr(colon + 2), record)) {
        return std::nullopt;
    }
    record.timeUs =
        g_date_time_to_unix(time.get()) * G_USEC_PER_SEC + g_date_time_get_microsecond(time.get());
    return record;
}

// An entry of a journal. Where the service's standard error was passed on to the journal line by
// line, the message is a line of the service's own form.
std::optional<LogRecord> ParseEntry(const FieldReader& field) {
    const std::string message = Clean(field("MESSAGE"));
    LogRecord record;
    if (!TakeMessage(field("SYSLOG_IDENTIFIER"), message, record)) {
        return ParseLine(message);
    }
    const std::string sent = field("_SOURCE_REALTIME_TIMESTAMP");
    const std::string received = field("__REALTIME_TIMESTAMP");
    record.timeUs = g_ascii_strtoll((sent.empty() ? received : sent).c_str(), nullptr, 10);
    const DateTimePtr time(g_date_time_new_from_unix_local(record.timeUs / G_USEC_PER_SEC));
    if (record.timeUs <= 0 || time == nullptr) {
        return std::nullopt;
    }
    const std::string fraction = std::to_string(1000 + record.timeUs % G_USEC_PER_SEC / 1000);
    record.when =
        GStringPtr(g_date_time_format(time.get(), "%Y-%m-%d %H:%M:%S.")).get() + fraction.substr(1);
    return record;
}

// A field that is not plain text is an array of its bytes.
std::string TextOf(const Json::Value& value) {
    if (value.isString()) {
        return value.asString();
    }
    std::string text;
    for (const Json::Value& byte : value) {
        text += byte.isInt() ? static_cast<char>(byte.asInt()) : '?';
    }
    return text;
}

std::optional<LogRecord> ParseJson(const std::string& line) {
    try {
        const Json::Value entry = Util::JsonUtil::StringToJson(line);
        return ParseEntry([&entry](const char* name) { return TextOf(entry[name]); });
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

// False at the end. Of a line that is too long only so much is kept as shows that it is.
bool ReadLine(std::istream& text, std::string& line) {
    line.clear();
    char character = 0;
    while (text.get(character) && character != '\n') {
        if (line.size() <= kMaxLineBytes) {
            line += character;
        }
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return text.good() || !line.empty();
}

void Count(const std::optional<LogRecord>& record, const TakeRecord& take, LogCount& count) {
    if (record) {
        take(*record);
    }
    ++(record ? count.records : count.skipped);
}

// Negative: an error number.
int Open(const LogSource& source, JournalPtr& journal) {
    if (source.kind == LogSource::Kind::kMachine) {
        return sd_journal_open(Out(journal), SD_JOURNAL_LOCAL_ONLY | SD_JOURNAL_SYSTEM);
    }
    if (source.kind == LogSource::Kind::kDirectory) {
        return sd_journal_open_directory(Out(journal), source.path.c_str(), 0);
    }
    const char* files[] = {source.path.c_str(), nullptr};
    return sd_journal_open_files(Out(journal), files, 0);
}

// Limits what is read to the service and, in this machine's journal, to the time since its boot.
int Select(LogSource::Kind kind, sd_journal* journal) {
    sd_id128_t boot = {};
    int result = sd_journal_add_match(journal, (std::string("_SYSTEMD_UNIT=") + kUnit).c_str(), 0);
    if (kind != LogSource::Kind::kMachine || result < 0 ||
        (result = sd_id128_get_boot(&boot)) < 0) {
        return result;
    }
    const GStringPtr match(
        g_strdup_printf("_BOOT_ID=" SD_ID128_FORMAT_STR, SD_ID128_FORMAT_VAL(boot)));
    return sd_journal_add_match(journal, match.get(), 0);
}

std::string FieldOf(sd_journal* journal, const std::string& name) {
    std::uint64_t received = 0;
    if (name == "__REALTIME_TIMESTAMP") {
        return sd_journal_get_realtime_usec(journal, &received) < 0 ? "" : std::to_string(received);
    }
    const void* data = nullptr;
    std::size_t size = 0;
    if (sd_journal_get_data(journal, name.c_str(), &data, &size) < 0) {
        return "";
    }
    const std::string field(static_cast<const char*>(data), size);
    return field.substr(std::min(size, name.size() + 1));  // "NAME=" stands before it
}

// The files of this machine's journal that the user may not read are left out without an error.
bool MayRead(sd_journal* journal) {
    return sd_journal_has_runtime_files(journal) > 0 ||
           sd_journal_has_persistent_files(journal) > 0;
}

LogCount ReadJournal(const LogSource& source, const TakeRecord& take) {
    LogCount count;
    JournalPtr journal;
    int result = Open(source, journal);
    if (result >= 0 && source.kind == LogSource::Kind::kMachine && !MayRead(journal.get())) {
        count.failure = NameOf(source) +
                        " cannot be read: there is none, or only root and the group"
                        " systemd-journal may read it";
        return count;
    }
    if (result >= 0) {
        result = Select(source.kind, journal.get());
    }
    while (result >= 0 && (result = sd_journal_next(journal.get())) > 0) {
        const auto field = [&journal](const char* name) { return FieldOf(journal.get(), name); };
        Count(ParseEntry(field), take, count);
    }
    if (result < 0) {
        count.failure = NameOf(source) + " cannot be read as a journal: " + std::strerror(-result);
    }
    return count;
}

}  // namespace

std::string NameOf(const LogSource& source) {
    if (source.kind == LogSource::Kind::kMachine) {
        return std::string("the journal of ") + kUnit;
    }
    return source.kind == LogSource::Kind::kText && source.path == "-" ? "standard input"
                                                                       : source.path;
}

LogCount ReadLog(const LogSource& source, const TakeRecord& take) {
    if (source.kind != LogSource::Kind::kText) {
        return ReadJournal(source, take);
    }
    if (source.path == "-") {
        return ReadText(std::cin, take);
    }
    LogCount count;
    std::ifstream text(source.path, std::ios::binary);
    if (text) {
        count = ReadText(text, take);
    }
    if (!text.eof()) {
        count.failure = source.path + ": " + std::strerror(errno);
    }
    return count;
}

LogCount ReadText(std::istream& text, const TakeRecord& take) {
    LogCount count;
    for (std::string line; ReadLine(text, line);) {
        if (line.size() > kMaxLineBytes) {
            ++count.skipped;
        } else {
            Count(line[0] == '{' ? ParseJson(line) : ParseLine(Clean(line)), take, count);
        }
    }
    return count;
}

}  // namespace Tvctl
