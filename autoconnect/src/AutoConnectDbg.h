// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/system_log.h"

// Log lines and call tracing, the one thing that every layer above the platform uses.
//
// The lines are an interface: other components and people search for them. Each reads
//
//     FILE: FUNCTION(LINE) > MESSAGE
//
// FILE is the base name of the source file, FUNCTION the bare function name. It goes to the main
// log buffer under the tag of its source file: "BT_APP_UTIL" in the utility layer, whose build
// defines BTLOG_TAG, and "BT_AUTO_CONNECT" everywhere else.
//
// What the priorities mean here:
//
//     BTLOG_DEBUG   entry and exit of traced functions, fine-grained traces
//     BTLOG_INFO    normal progress: decisions, values read
//     BTLOG_WARN    expected refusals
//     BTLOG_ERROR   failures of platform calls, and notices that begin with "<Not Error> "
//
// Each macro takes a printf format, a string literal without a newline, and its arguments. All are
// safe on any thread and before main.
//
// For example
//
//     void AutoConnectApp::InitDbus() {
//         BTLOG_TRACE();
//         ...
//
// with the tracer on line 59 writes when the function is entered and when it is left
//
//     AutoConnectDbg.h: ApiTracker(90) > IN >> [void AutoConnectApp::InitDbus()(59)]
//     AutoConnectDbg.h: ~ApiTracker(94) > OUT << [void AutoConnectApp::InitDbus()(59)]

#ifndef BTLOG_TAG
#define BTLOG_TAG "BT_AUTO_CONNECT"
#endif

// Where a log line comes from. A function that logs for its callers takes one: they pass
// BTLOG_HERE, and it writes with BTLOG_FOR, so that the line names the caller.
struct LogPlace {
    const char* file;  // without its folder
    const char* function;
    int line;
};

#define BTLOG_HERE (LogPlace{__FILE_NAME__, __func__, __LINE__})
#define BTLOG_FOR(place, priority, ...) \
    BTLOG_PRINT((place).file, (place).function, (place).line, BTLOG_TAG, priority, __VA_ARGS__)

// A line of this place, but under the number `line`.
#define BTLOG_AT(line, tag, priority, ...) \
    BTLOG_PRINT(__FILE_NAME__, __func__, line, tag, priority, __VA_ARGS__)

#define BTLOG_PRINT(file, function, line, tag, priority, format, ...)                        \
    static_cast<void>(__dlog_print(LOG_ID_MAIN, priority, tag, "%s: %s(%d) > " format, file, \
                                   function, line, ##__VA_ARGS__))

#define BTLOG_DEBUG(...) BTLOG_AT(__LINE__, BTLOG_TAG, DLOG_DEBUG, __VA_ARGS__)
#define BTLOG_INFO(...) BTLOG_AT(__LINE__, BTLOG_TAG, DLOG_INFO, __VA_ARGS__)
#define BTLOG_WARN(...) BTLOG_AT(__LINE__, BTLOG_TAG, DLOG_WARN, __VA_ARGS__)
#define BTLOG_ERROR(...) BTLOG_AT(__LINE__, BTLOG_TAG, DLOG_ERROR, __VA_ARGS__)

// Traces the enclosing function; stands as its first statement. The line it reports is its own.
#define BTLOG_TRACE() BTLOG_TRACE_AT(__LINE__)
// The same under a line number that readers of the log know, wherever the function stands by now.
#define BTLOG_TRACE_AT(line) const ApiTracker btlogTracker(__PRETTY_FUNCTION__, line)

// Its constructor logs that a function was entered, and its destructor that it was left, whichever
// way that happens. Its lines carry the service's tag wherever it stands, and
// line numbers that readers of the log know:
//
//     AutoConnectDbg.h: ApiTracker(90) > IN >> [SIGNATURE(LINE)]
//     AutoConnectDbg.h: ~ApiTracker(94) > OUT << [SIGNATURE(LINE)]
class ApiTracker {
public:
    // `signature` is the enclosing function's, as the compiler prints it; `line` is the source line
    // that declares the tracer.
    // NOLINTNEXTLINE(modernize-pass-by-value): the signature is fixed
    ApiTracker(const std::string& signature, int line) : m_signature(signature), m_line(line) {
        BTLOG_AT(90, "BT_AUTO_CONNECT", DLOG_DEBUG, "IN >> [%s(%d)]", m_signature.c_str(), m_line);
    }
    ~ApiTracker() {
        BTLOG_AT(94, "BT_AUTO_CONNECT", DLOG_DEBUG, "OUT << [%s(%d)]", m_signature.c_str(), m_line);
    }
    ApiTracker(const ApiTracker&) = delete;
    ApiTracker& operator=(const ApiTracker&) = delete;

private:
    std::string m_signature;
    int m_line;
};
