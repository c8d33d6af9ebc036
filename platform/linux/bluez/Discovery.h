// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "common/Source.h"
#include "platform/linux/base/GrowingPause.h"
#include "platform/linux/bluez/Call.h"
#include "platform/linux/bluez/Mirror.h"

namespace Bluez {

// The discovery session of this process on one adapter: bluetoothd keeps one for each bus
// connection. It is brought to what is wanted by one call at a time; an answer counts however late
// it comes, and what it left behind is stopped when nobody wants it any more. It goes with its
// adapter. Main loop only.
class Discovery {
public:
    // `mirror` must outlive it. `told` hears of a wanted session that it runs (NULL), or why it
    // does not; `whenQuiet` that there is none and that nothing is under way.
    Discovery(const Mirror& mirror, std::string adapter, std::function<void(const GError*)> told,
              std::function<void()> whenQuiet);

    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;

    void SetWanted(bool isWanted);
    [[nodiscard]] bool IsQuiet() const { return !m_call && m_session == Session::kNone; }

private:
    // kUnclear: bluetoothd was busy, or did not answer in time.
    enum class Session { kNone, kRuns, kUnclear };

    // Does the next thing towards what is wanted.
    void Follow();
    void FollowLater(const GError& error);
    void SetFilter();
    void TellOfOthers() const;
    void Ask(const char* method, GVariant* arguments, void (Discovery::*then)(const GError* error));
    void OnFilterSet(const GError* error);
    void OnStarted(const GError* error);
    void OnStopped(const GError* error);
    void Tell(const GError* error);

    const Mirror& m_mirror;
    std::string m_adapter;
    std::function<void(const GError*)> m_told;
    std::function<void()> m_whenQuiet;
    bool m_isWanted = false;
    bool m_hasPattern = true;  // in the filter
    Session m_session = Session::kNone;
    Platform::GrowingPause m_pause;
    Call m_call;
    Timer m_again;
};

}  // namespace Bluez
