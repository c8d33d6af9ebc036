// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/Source.h"

namespace Platform {

// Gives memory back to the system after much of it was needed for a moment. The C library keeps
// what was freed for the next time, which for a crowd of devices may never come. Main loop only.
class MemoryTrim {
public:
    // Much was freed, or soon will be: trims once nothing was freed for 2 s.
    void Soon();

private:
    void Schedule();

    Timer m_pause;
    bool m_isAskedAgain = false;
};

}  // namespace Platform
