// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <iostream>

#include "tools/tvctl/commands/Commands.h"

int main(int argc, char** argv) {
    const Tvctl::ExitCode result =
        Tvctl::Run({Tvctl::WakeCommands(), Tvctl::DoctorCommands(), Tvctl::TraceCommands(),
                    Tvctl::PhoneCommands(), Tvctl::ConfCommands(), Tvctl::FeatureCommands(),
                    Tvctl::PowerCommands(), Tvctl::DeviceCommands()},
                   {argv + 1, argv + argc}, std::cout, std::cerr);
    if (!std::cout.flush()) {
        std::cerr << "tvctl: cannot write the result\n";
        return Tvctl::kFailed;
    }
    return result;
}
