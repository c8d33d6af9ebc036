// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/MemoryTrim.h"

#include <malloc.h>

namespace Platform {

namespace {

constexpr int kQuietMs = 2000;

}  // namespace

void MemoryTrim::Soon() {
    m_isAskedAgain = m_pause.IsRunning();
    if (!m_isAskedAgain) {
        Schedule();
    }
}

void MemoryTrim::Schedule() {
    m_isAskedAgain = false;
    m_pause = Timer::Once(kQuietMs, [this] {
        if (m_isAskedAgain) {
            Schedule();
        } else {
            m_pause.Cancel();
            malloc_trim(0);
        }
    });
}

}  // namespace Platform
