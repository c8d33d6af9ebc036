// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <type_traits>

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

namespace AutoConnectDbg {

// Where in `path` the part behind its last '/' begins.
constexpr std::size_t BaseNameOffset(const char* path) {
    std::size_t offset = 0;
    for (std::size_t i = 0; path[i] != '\0'; ++i) {
        if (path[i] == '/') {
            offset = i + 1;
        }
    }
    return offset;
}

}  // namespace AutoConnectDbg

// The base name of this source file, cut out by the compiler.
#define BTLOG_FILE                                 \
    (&__FILE__[std::integral_constant<std::size_t, \
                                      AutoConnectDbg::BaseNameOffset(__FILE__)>::value])

#define BTLOG_AT(line, tag, priority, format, ...)                                                 \
    static_cast<void>(__dlog_print(LOG_ID_MAIN, priority, tag, "%s: %s(%d) > " format, BTLOG_FILE, \
                                   __func__, line, ##__VA_ARGS__))
#define BTLOG_TAGGED(tag, priority, ...) BTLOG_AT(__LINE__, tag, priority, __VA_ARGS__)

#define BTLOG_DEBUG(...) BTLOG_TAGGED(BTLOG_TAG, DLOG_DEBUG, __VA_ARGS__)
#define BTLOG_INFO(...) BTLOG_TAGGED(BTLOG_TAG, DLOG_INFO, __VA_ARGS__)
#define BTLOG_WARN(...) BTLOG_TAGGED(BTLOG_TAG, DLOG_WARN, __VA_ARGS__)
#define BTLOG_ERROR(...) BTLOG_TAGGED(BTLOG_TAG, DLOG_ERROR, __VA_ARGS__)

// Traces the enclosing function; stands as its first statement. The line it reports is its own.
#define BTLOG_TRACE() BTLOG_TRACE_AT(__LINE__)
// The same under a line number that readers of the log know, wherever the function stands by now.
#define BTLOG_TRACE_AT(line) const ApiTracker btlogTracker(__PRETTY_FUNCTION__, line)

// Logs that a function was entered when it is made, and that it was left when it is destroyed,
// which is on every way out of the scope. Its lines carry the service's tag wherever it stands, and
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
