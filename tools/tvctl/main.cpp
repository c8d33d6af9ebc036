// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <string>
#include <vector>

#include "tools/tvctl/Tvctl.h"

int main(int argc, char** argv) {
    return Tvctl::Run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
