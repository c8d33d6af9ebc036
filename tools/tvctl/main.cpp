// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <string>
#include <vector>

#include "tools/tvctl/Tvctl.h"

int main(int argc, char** argv) {
    const Tvctl::ExitCode result =
        Tvctl::Run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
    if (!std::cout.flush()) {
        std::cerr << "tvctl: the result cannot be written\n";
        return Tvctl::kFailed;
    }
    return result;
}
