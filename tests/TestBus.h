// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "common/CHandle.h"
#include "common/Source.h"
#include "tools/scenario-runner/ChildProcess.h"
#include "tools/scenario-runner/Workspace.h"

// For the slowest machine under the slowest sanitizer; nothing on the way comes near it.
constexpr int kDeadlineMs = 60000;

// Lets this process work until the condition holds; false when it never does.
[[nodiscard]] inline bool AwaitThat(const std::function<bool()>& condition) {
    bool isLate = false;
    const Timer deadline = Timer::Once(kDeadlineMs, [&isLate] { isLate = true; });
    while (!condition() && !isLate) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return !isLate;
}

// A bus with a root folder, both of its own, which the platform in this process takes for the
// system's when it looks for them.
struct TestBus {
    using ChildProcess = ScenarioRunner::ChildProcess;

    // `onError` gets what the bus and what it starts write to standard error.
    explicit TestBus(const std::string& mediaPlayer,
                     std::function<void(const std::string&)> onError = {})
        : folder(ScenarioRunner::Workspace::Make(mediaPlayer, error).value()) {
        setenv("TV_ROOT", folder.Root().c_str(), 1);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", folder.BusAddress().c_str(), 1);
        bool isUp = false;
        process = ChildProcess::Start(
            {{"dbus-daemon", "--config-file=" + folder.BusConfiguration(), "--nofork",
              "--nopidfile", "--print-address=1"},
             {}},
            {[&isUp](const std::string&) { isUp = true; }, std::move(onError), nullptr}, error);
        EXPECT_TRUE(AwaitThat([&isUp] { return isUp; })) << error;
    }

    std::string error;
    ScenarioRunner::Workspace folder;
    std::unique_ptr<ChildProcess> process;
};
