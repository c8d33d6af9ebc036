// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/LogLine.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "common/PrintableText.h"

namespace Platform {

namespace {

// What a line of the layers above begins with: file, function and line number of its caller.
constexpr std::string_view kPlaceForm = "%s: %s(%d) > ";
constexpr char kAside = PLATFORM_PLACE_ASIDE[0];

bool BeginsWith(std::string_view text, std::string_view beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// As the C library prints it.
const char* OrNull(const char* text) {
    return text == nullptr ? "(null)" : text;
}

// The digits of a number.
class Number {
public:
    explicit Number(int number)
        : m_size(std::to_chars(m_digits.data(), m_digits.data() + m_digits.size(), number).ptr -
                 m_digits.data()) {}
    [[nodiscard]] std::string_view Text() const {
        return {m_digits.data(), static_cast<std::size_t>(m_size)};
    }

private:
    std::array<char, 12> m_digits;
    std::ptrdiff_t m_size;
};

// `value` is a text of this program.
void AppendField(std::string& out, std::string_view name, std::string_view value) {
    out += name;
    out += '=';
    out += value;
    out += '\n';
}

// `value` may be a text from outside.
void AppendValue(std::string& out, std::string_view name, std::string_view value) {
    out += name;
    out += '=';
    AppendPrintable(out, value);
    out += '\n';
}

// A byte finds the few rows whose texts are as long as a line's.
constexpr auto kTextSizes = [] {
    std::array<unsigned char, std::size(kLogEvents)> sizes = {};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        sizes[i] = static_cast<unsigned char>(kLogEvents[i].text.size());
    }
    return sizes;
}();

}  // namespace

LogLine::LogLine(const char* format, va_list arguments) {
    va_list rest;
    va_copy(rest, arguments);
    AppendPlace(format, rest);
    m_format = format;
    AppendFormatted(format, rest);
    va_end(rest);
}

void LogLine::Append(std::string_view text) {
    if (m_size < m_buffer.size()) {
        std::memcpy(&m_buffer[m_size], text.data(),
                    std::min(text.size(), m_buffer.size() - m_size));
    }
    m_size += text.size();
}

// NOLINTBEGIN(clang-analyzer-valist.Uninitialized): the constructor copies the arguments

// Takes the place out of `arguments` and leaves the rest of `format`.
void LogLine::AppendPlace(const char*& format, va_list& arguments) {
    const bool isAside = *format == kAside;
    if (!BeginsWith(format + (isAside ? 1 : 0), kPlaceForm)) {
        return;
    }
    format += kPlaceForm.size() + (isAside ? 1 : 0);
    m_place.file = OrNull(va_arg(arguments, const char*));
    m_place.function = OrNull(va_arg(arguments, const char*));
    m_place.line = va_arg(arguments, int);
    if (!isAside) {
        Append(m_place.file);
        Append(": ");
        Append(m_place.function);
        Append("(");
        Append(Number(m_place.line).Text());
        Append(") > ");
    }
}

// "%s" and "%d", which are all that most lines have, are done here; the C library does the rest.
void LogLine::AppendFormatted(const char* format, va_list& arguments) {
    for (std::size_t argument = 0;; ++argument) {
        const char* const conversion = strchrnul(format, '%');
        Append({format, static_cast<std::size_t>(conversion - format)});
        if (*conversion == '\0') {
            return;
        }
        const std::size_t begin = m_size;
        if (conversion[1] == 's') {
            Append(OrNull(va_arg(arguments, const char*)));
        } else if (conversion[1] == 'd') {
            Append(Number(va_arg(arguments, int)).Text());
        } else {
            const std::size_t used = std::min(m_size, m_buffer.size());
            const int length =
                vsnprintf(m_buffer.data() + used, m_buffer.size() - used, conversion, arguments);
            m_size += static_cast<std::size_t>(std::max(length, 0));
            Append(length < 0 ? conversion : "");
            return;
        }
        if (argument < m_values.size()) {
            m_values[argument] = From(begin);
        }
        format = conversion + 2;
    }
}

// NOLINTEND(clang-analyzer-valist.Uninitialized)

std::string_view LogLine::From(std::size_t begin) const {
    const std::size_t end = std::min(m_size, kMaxBytes);
    begin = std::min(begin, end);
    return {m_buffer.data() + begin, end - begin};
}

const LogEvent* LogLine::FindEvent() const {
    const int size = static_cast<int>(m_format.size());
    const unsigned char* const end = kTextSizes.data() + kTextSizes.size();
    const unsigned char* at = kTextSizes.data();
    while ((at = std::find(at, end, size)) != end) {
        const LogEvent& event = kLogEvents[at - kTextSizes.data()];
        if (event.text == m_format &&
            (event.function.empty() || event.function == m_place.function) &&
            (event.first.empty() || event.first == m_values[0])) {
            return &event;
        }
        ++at;
    }
    return nullptr;
}

void LogLine::AppendText(std::string& out) const {
    std::size_t kept = m_size;
    if (m_size > kMaxBytes) {
        kept = kMaxBytes;
        // A character is not cut in half; a run of continuation bytes longer than one is no UTF-8.
        for (int step = 0; step < 3 && (static_cast<unsigned char>(m_buffer[kept]) & 0xC0) == 0x80;
             ++step) {
            --kept;
        }
    }
    AppendPrintable(out, {m_buffer.data(), kept});
    if (kept < m_size) {
        out += " [cut: " + std::to_string(m_size - kept) + " more bytes]";
    }
}

void LogLine::AppendFields(std::string& out) const {
    if (m_place.file != nullptr) {
        // A tracer's line is of the function that it traces, which its arguments name.
        const bool isTracer = EndsWith(m_place.function, "ApiTracker");
        if (!isTracer) {
            AppendField(out, "CODE_FILE", m_place.file);
        }
        AppendField(out, "CODE_LINE", isTracer ? m_values[1] : Number(m_place.line).Text());
        AppendField(out, "CODE_FUNC", isTracer ? m_values[0] : m_place.function);
    }
    const LogEvent* const event = FindEvent();
    if (event == nullptr) {
        return;
    }
    AppendField(out, kMessageIdField, event->id);
    AppendField(out, kEventField, event->name);
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (!event->fields[i].empty()) {
            AppendValue(out, event->fields[i], m_values[i]);
        }
    }
    if (!event->reason.empty()) {
        AppendField(out, kReasonField, event->reason);
    }
}

}  // namespace Platform
