// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/LogLine.h"

#include <json/json.h>

#include <algorithm>
#include <ctime>
#include <exception>
#include <optional>

#include "common/PrintableText.h"
#include "platform/linux/base/LogFields.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

constexpr std::string_view kTags[] = {"BT_AUTO_CONNECT", "BT_APP_UTIL"};
constexpr std::string_view kPlatformTag = "TV_PLATFORM";
constexpr std::string_view kPlayerTag = "MEDIA_PLAYER";
// In front of " I TAG: " in the service's own lines; 0 stands for a digit.
constexpr std::string_view kTimeForm = "0000-00-00 00:00:00.000";
constexpr std::size_t kTagBegin = kTimeForm.size() + 3;

bool IsOfService(std::string_view tag) {
    return std::find(std::begin(kTags), std::end(kTags), tag) != std::end(kTags);
}

// The layers above the platform write "FILE: FUNCTION(LINE) > MESSAGE".
bool SplitMessage(std::string_view text, LogRecord& record) {
    const std::size_t colon = text.find(": ");
    const std::size_t bracket = text.find('(', colon);
    const std::size_t end = text.find(") > ", bracket);
    if (end == std::string_view::npos) {
        return false;
    }
    record.file = text.substr(0, colon);
    record.function = text.substr(colon + 2, bracket - colon - 2);
    record.message = text.substr(end + 4);
    return true;
}

// An event's line in the words that this version has for it, from the fields of an entry, whose own
// text another version wrote. Empty where the entry is no event that is known, or the fields do not
// hold all that the line does.
std::string TextFromFields(const LineParser::FieldReader& field) {
    const std::string id = field(Platform::kMessageIdField.data());
    const auto* const event =
        std::find_if(std::begin(Platform::kLogEvents), std::end(Platform::kLogEvents),
                     [&id](const Platform::LogEvent& known) { return known.id == id; });
    if (event == std::end(Platform::kLogEvents)) {
        return "";
    }
    std::string text;
    std::size_t argument = 0;
    for (std::size_t i = 0; i < event->text.size(); ++i) {
        if (event->text[i] != '%') {
            text += event->text[i];
            continue;
        }
        ++i;
        const bool isKnown = argument < event->fields.size() && !event->fields[argument].empty();
        if (!isKnown && (argument > 0 || event->first.empty())) {
            return "";
        }
        text += isKnown ? field(event->fields[argument].data()) : std::string(event->first);
        ++argument;
    }
    return text;
}

// False when `tag` is none of the service's, or the text is not as it should be with this tag.
bool TakeMessage(std::string_view tag, std::string_view text, LogRecord& record) {
    if (tag == kPlatformTag || tag == kPlayerTag) {
        record.file = tag == kPlayerTag ? kPlayerFile : "";
        record.function = "";
        record.message = text;
        return true;
    }
    return IsOfService(tag) && SplitMessage(text, record);
}

int Digits(std::string_view text, std::size_t begin, std::size_t count) {
    int number = 0;
    for (const char digit : text.substr(begin, count)) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

// Much faster than GDateTime, which takes most of the time to read a log.
std::optional<std::int64_t> ParseOwnTime(std::string_view text) {
    const auto fits = [](char form, char c) {
        return form == '0' ? g_ascii_isdigit(c) : form == c;
    };
    if (!std::equal(kTimeForm.begin(), kTimeForm.end(), text.begin(), text.end(), fits)) {
        return std::nullopt;
    }
    std::tm time = {};
    time.tm_year = Digits(text, 0, 4) - 1900;
    time.tm_mon = Digits(text, 5, 2) - 1;
    time.tm_mday = Digits(text, 8, 2);
    time.tm_hour = Digits(text, 11, 2);
    time.tm_min = Digits(text, 14, 2);
    time.tm_sec = Digits(text, 17, 2);
    return std::int64_t{timegm(&time)} * G_USEC_PER_SEC + std::int64_t{Digits(text, 20, 3)} * 1000;
}

// What loggers write: seconds, a date with a time, or the same without the year.
std::optional<std::int64_t> ParseAnyTime(const std::string& text) {
    char* end = nullptr;
    const double seconds = g_ascii_strtod(text.c_str(), &end);
    if (end != text.c_str() && *end == '\0' && seconds > -1e12 && seconds < 1e12) {
        return static_cast<std::int64_t>(seconds * G_USEC_PER_SEC);
    }
    const CPtr<GTimeZone, g_time_zone_unref> zone(g_time_zone_new_utc());
    const bool hasYear = text.find('-') >= 4;
    // A year with a 29th of February.
    const CPtr<GDateTime, g_date_time_unref> time(
        g_date_time_new_from_iso8601((hasYear ? text : "2000-" + text).c_str(), zone.get()));
    if (time == nullptr) {
        return std::nullopt;
    }
    return g_date_time_to_unix(time.get()) * G_USEC_PER_SEC +
           g_date_time_get_microsecond(time.get());
}

bool ParseOwnLine(std::string_view line, LogRecord& record) {
    const std::size_t colon = line.find(": ", kTagBegin);
    if (colon == std::string_view::npos || line[kTimeForm.size()] != ' ' ||
        line[kTagBegin - 1] != ' ') {
        return false;
    }
    record.when = line.substr(0, kTimeForm.size());
    const auto time = ParseOwnTime(record.when);
    record.timeUs = time.value_or(0);
    return time &&
           TakeMessage(line.substr(kTagBegin, colon - kTagBegin), line.substr(colon + 2), record);
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

}  // namespace

bool LineParser::SetPattern(const std::string& pattern, std::string& failure) {
    GErrorPtr error;
    m_pattern.reset(g_regex_new(pattern.c_str(), G_REGEX_OPTIMIZE, {}, Out(error)));
    if (m_pattern == nullptr) {
        failure = error->message;
    } else if (g_regex_get_string_number(m_pattern.get(), "text") < 0) {
        failure = "it has no group (?<text>...)";
    }
    return failure.empty();
}

bool LineParser::Parse(std::string_view line, LogRecord& record) {
    if (m_pattern != nullptr) {
        return ParseByPattern(line, record);
    }
    return !line.empty() && line[0] == '{' ? ParseJson(line, record)
                                           : ParseOwnLine(Clean(line), record);
}

bool LineParser::ParseEntry(const FieldReader& field, LogRecord& record) {
    const std::string text = field("MESSAGE");
    m_message = Clean(text);
    if (TakeFields(field, record) || TakeMessage(field("SYSLOG_IDENTIFIER"), m_message, record)) {
        const std::string sent = field("_SOURCE_REALTIME_TIMESTAMP");
        record.timeUs = g_ascii_strtoll(
            (sent.empty() ? field("__REALTIME_TIMESTAMP") : sent).c_str(), nullptr, 10);
        record.when = "";
        if (record.timeUs <= 0) {
            return false;
        }
    } else if (!ParseOwnLine(m_message, record)) {
        return false;
    }
    record.machine = m_machine = field("_MACHINE_ID");
    record.host = m_host = Clean(field("_HOSTNAME"));
    record.boot = m_boot = field("_BOOT_ID");
    return true;
}

// The fields of an event, of which the platform's and the media player's have no place in a source.
bool LineParser::TakeFields(const FieldReader& field, LogRecord& record) {
    const std::string tag = field("SYSLOG_IDENTIFIER");
    const std::string text = TextFromFields(field);
    if (text.empty()) {
        return false;
    }
    m_event = Clean(text);
    if (!IsOfService(tag)) {
        return TakeMessage(tag, m_event, record);
    }
    record.file = m_file = field("CODE_FILE");
    record.function = m_function = field("CODE_FUNC");
    record.message = m_event;
    return true;
}

bool LineParser::ParseJson(std::string_view line, LogRecord& record) {
    try {
        const Json::Value entry = Util::JsonUtil::StringToJson(std::string(line));
        return ParseEntry([&entry](const char* name) { return TextOf(entry[name]); }, record);
    } catch (const std::exception&) {
        return false;
    }
}

// Without a tag, what does not look like a line of the layers above is the platform's.
bool LineParser::ParseByPattern(std::string_view line, LogRecord& record) {
    m_message = Clean(line);
    GMatchInfo* raw = nullptr;
    const bool isMatch = g_regex_match(m_pattern.get(), m_message.c_str(), {}, &raw) != FALSE;
    const CPtr<GMatchInfo, g_match_info_free> match(raw);
    if (!isMatch) {
        return false;
    }
    const auto group = [&match](const char* name) {
        const GStringPtr text(g_match_info_fetch_named(match.get(), name));
        return std::string(text == nullptr ? "" : text.get());
    };
    m_time = group("time");
    const auto time = m_time.empty() ? std::optional<std::int64_t>(0) : ParseAnyTime(m_time);
    const std::string tag = group("tag");
    m_text = group("text");
    record.timeUs = time.value_or(0);
    record.when = m_time;
    record.machine = m_machine = group("machine");
    record.host = m_host = group("host");
    if (!time || !tag.empty()) {
        return time && TakeMessage(tag, m_text, record);
    }
    return SplitMessage(m_text, record) || TakeMessage(kPlatformTag, m_text, record);
}

std::string_view LineParser::Clean(std::string_view text) {
    const auto size = static_cast<gssize>(text.size());
    const bool isPlain = text.find('\x1B') == std::string_view::npos;
    if (isPlain && g_utf8_validate(text.data(), size, nullptr) != FALSE) {
        return text;
    }
    const std::string plain = WithoutColours(text);
    m_text = GStringPtr(g_utf8_make_valid(plain.data(), static_cast<gssize>(plain.size()))).get();
    return m_text;
}

}  // namespace Tvctl
