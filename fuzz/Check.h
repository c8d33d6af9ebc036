// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// What must hold for every input; the fuzzer takes the abort for a fault and keeps the input.
inline void Check(bool holds, const char* what, const std::string& detail = "") {
    if (!holds) {
        std::fprintf(stderr, "must hold: %s\n%s\n", what, detail.c_str());
        std::abort();
    }
}
