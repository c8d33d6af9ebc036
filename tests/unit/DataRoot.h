// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

// A root folder of this process's own for the package's data. It is there before the static
// initialisers that read TV_ROOT, and goes when the process ends. For one source of an executable.
namespace DataRoot {

inline char folder[] = "/tmp/bt-autoconnect-test-XXXXXX";

[[gnu::constructor(101)]] static void Make() {
    if (mkdtemp(folder) == nullptr || chmod(folder, 0755) != 0 ||
        setenv("TV_ROOT", folder, 1) != 0) {
        std::abort();
    }
}

[[gnu::destructor(101)]] static void Remove() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace DataRoot
