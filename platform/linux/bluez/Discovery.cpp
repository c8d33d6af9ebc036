// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Discovery.h"

#include <cstring>
#include <utility>

#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Error.h"

namespace Bluez {

namespace {

// For each answer. What was not answered by then may have been done all the same.
constexpr int kAnswerMs = 10000;
// The kernel may be busy with another start or stop; it is soon done.
constexpr int kFirstPauseMs = 300;
constexpr int kLongestPauseMs = 60000;

bool IsUnclear(const GError& error) {
    return IsInProgress(error) || ErrorCode(error) == BT_ERROR_TIMED_OUT;
}

// After any other refusal of a stop the session may go on. (bluez src/adapter.c)
bool HadNothingToStop(const GError& error) {
    const bt_error_e code = ErrorCode(error);
    return code == BT_ERROR_NOT_ENABLED || code == BT_ERROR_REMOTE_DEVICE_NOT_FOUND ||
           std::strstr(error.message, "No discovery started") != nullptr;
}

}  // namespace

Discovery::Discovery(const Mirror& mirror, std::string adapter,
                     std::function<void(const GError*)> told, std::function<void()> whenQuiet)
    : m_mirror(mirror),
      m_adapter(std::move(adapter)),
      m_told(std::move(told)),
      m_whenQuiet(std::move(whenQuiet)),
      m_pause(kFirstPauseMs, kLongestPauseMs) {}

void Discovery::SetWanted(bool isWanted) {
    m_isWanted = isWanted;
    m_pause.Reset();
    Follow();
}

void Discovery::Follow() {
    if (m_call || (m_isWanted && m_session == Session::kRuns)) {
        return;
    }
    if (m_session != Session::kNone) {
        Ask("StopDiscovery", nullptr, &Discovery::OnStopped);
    } else if (m_isWanted) {
        SetFilter();
    } else {
        m_whenQuiet();
    }
}

void Discovery::FollowLater(const GError& error) {
    PLATFORM_DEBUG("discovery on %s is asked for again: %s", m_adapter.c_str(),
                   Platform::DescribeError(error).c_str());
    m_session = Session::kUnclear;
    m_again = Timer::Once(m_pause.Next(), [this] { Follow(); });
}

// DuplicateData: without it a phone whose bytes are those of its last visit is not reported again.
// Pattern: the empty one fits everybody. Without it bluetoothd reports to all programs only who
// fits the pattern of another one. Older ones do not know it.
void Discovery::SetFilter() {
    const char* const filter =
        m_hasPattern ? "({'Transport': <'le'>, 'DuplicateData': <true>, 'Pattern': <''>},)"
                     : "({'Transport': <'le'>, 'DuplicateData': <true>},)";
    Ask("SetDiscoveryFilter", g_variant_new_parsed(filter), &Discovery::OnFilterSet);
}

// bluetoothd does not tell which program it is, nor what it asked for.
void Discovery::TellOfOthers() const {
    const Adapter* adapter = m_mirror.FindAdapter(m_adapter);
    if (adapter != nullptr && adapter->isDiscovering) {
        PLATFORM_WARN(
            "LE scan on %s: another program discovers there already, phones may be missed",
            m_adapter.c_str());
    }
}

void Discovery::Ask(const char* method, GVariant* arguments,
                    void (Discovery::*then)(const GError* error)) {
    m_call = Call(m_mirror.Connection(), m_adapter, kAdapterInterface, method, arguments, kAnswerMs,
                  [this, then](GVariant* /*reply*/, const GError* error) {
                      m_call.Drop();
                      if (error != nullptr && IsUnclear(*error)) {
                          FollowLater(*error);
                      } else {
                          (this->*then)(error);
                      }
                  });
}

void Discovery::OnFilterSet(const GError* error) {
    if (error == nullptr && m_isWanted) {
        TellOfOthers();
        Ask("StartDiscovery", nullptr, &Discovery::OnStarted);
    } else if (error != nullptr && m_hasPattern &&
               ErrorCode(*error) == BT_ERROR_INVALID_PARAMETER) {
        m_hasPattern = false;
        Follow();
    } else {
        Tell(error);
    }
}

void Discovery::OnStarted(const GError* error) {
    if (error == nullptr) {
        m_session = Session::kRuns;
    }
    Tell(error);
}

void Discovery::OnStopped(const GError* error) {
    if (error != nullptr && !HadNothingToStop(*error)) {
        FollowLater(*error);
        return;
    }
    m_session = Session::kNone;
    Follow();
}

// Whoever is told may want something else at once.
void Discovery::Tell(const GError* error) {
    if (m_isWanted) {
        m_isWanted = error == nullptr;
        m_told(error);
    }
    Follow();
}

}  // namespace Bluez
