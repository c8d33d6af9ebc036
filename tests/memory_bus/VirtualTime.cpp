// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/memory_bus/VirtualTime.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <utility>

namespace {

constexpr gint64 kUsPerMs = 1000;
constexpr gint64 kNsPerUs = 1000;
constexpr int kIdleMs = 1800000;
// Times of zero mean "never" to some.
constexpr gint64 kStartUs = G_USEC_PER_SEC;

std::atomic<gint64> theNowUs{kStartUs};

std::function<void()>& OnIdle() {
    static std::function<void()> onIdle;
    return onIdle;
}

gint Poll(GPollFD* entries, guint count, gint timeoutMs) noexcept {
    // Each turn of the loop has a time of its own, as it would have.
    ++theNowUs;
    const int ready = poll(reinterpret_cast<pollfd*>(entries), count, 0);
    if (ready == 0 && (timeoutMs < 0 || timeoutMs > kIdleMs)) {
        OnIdle()();
    } else if (ready == 0) {
        theNowUs += timeoutMs * kUsPerMs;
    }
    return ready;
}

}  // namespace

gint64 VirtualTime::NowMs() {
    return (theNowUs - kStartUs) / kUsPerMs;
}

void VirtualTime::Begin(std::function<void()> onIdle) {
    OnIdle() = std::move(onIdle);
    g_main_context_set_poll_func(nullptr, Poll);
}

// In place of the C library's. The other clocks go on as they are.
extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    if (clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    }
    const gint64 us = theNowUs;
    now->tv_sec = us / G_USEC_PER_SEC;
    now->tv_nsec = us % G_USEC_PER_SEC * kNsPerUs;
    return 0;
}

int nanosleep(const timespec* time, timespec* /*left*/) {
    theNowUs += time->tv_sec * G_USEC_PER_SEC + time->tv_nsec / kNsPerUs;
    return 0;
}

int clock_nanosleep(clockid_t /*clock*/, int flags, const timespec* time, timespec* left) {
    return flags == 0 ? nanosleep(time, left) : EINVAL;
}

}  // extern "C"
