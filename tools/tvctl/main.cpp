// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

#include "tools/tvctl/commands/Commands.h"

namespace {

Tvctl::Console::Style StyleOfOutput() {
    const char* terminal = std::getenv("TERM");
    const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    // https://no-color.org
    const char* noColour = std::getenv("NO_COLOR");
    const bool isUnwanted = noColour != nullptr && *noColour != '\0';
    const bool isAble = terminal != nullptr && std::string_view(terminal) != "dumb";
    return {false, isTerminal, isTerminal && isAble && !isUnwanted};
}

}  // namespace

int main(int argc, char** argv) {
    const Tvctl::ExitCode result =
        Tvctl::Run({Tvctl::WakeCommands(), Tvctl::DoctorCommands(), Tvctl::TraceCommands(),
                    Tvctl::PhoneCommands(), Tvctl::ConfCommands(), Tvctl::FeatureCommands(),
                    Tvctl::PowerCommands(), Tvctl::DeviceCommands()},
                   {argv + 1, argv + argc}, std::cout, std::cerr, StyleOfOutput());
    if (!std::cout.flush()) {
        std::cerr << "tvctl: cannot write the result\n";
        return Tvctl::kFailed;
    }
    return result;
}
