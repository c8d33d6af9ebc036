// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/event_wait.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "platform/linux/base/PathWatch.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/base/RootPath.h"

namespace {

using Clock = std::chrono::steady_clock;

// An event is raised while its file exists, below the folder of what does not survive a reboot:
// the package's processes see no other one's /tmp.
bool IsRaised(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

// False when the time is over.
bool WaitReadable(int fd, Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
        return false;
    }
    pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, static_cast<int>(left)) != 0;
}

}  // namespace

int LwipcWaitEvent(const char* path, int timeout_ms) {
    if (path == nullptr || path[0] != '/' || timeout_ms < 0) {
        return -EINVAL;
    }
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    const std::string file = Platform::RunFolder() + path;
    if (IsRaised(file)) {
        return 0;
    }
    Platform::PathWatch watch(file);
    while (watch.IsValid()) {
        // Asked after the watch stands, so that an event raised in between is not missed.
        if (IsRaised(file)) {
            return 0;
        }
        if (!WaitReadable(watch.Fd(), deadline)) {
            return -ETIMEDOUT;
        }
        static_cast<void>(watch.Consume());
    }
    PLATFORM_WARN("cannot wait for the event %s: %s", file.c_str(), std::strerror(watch.Error()));
    return -EIO;
}
