// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/Tvctl.h"

#include "tools/tvctl/commands/CommandLine.h"
#include "tools/tvctl/commands/ConfCommand.h"
#include "tools/tvctl/commands/DeviceCommand.h"
#include "tools/tvctl/commands/DoctorCommand.h"
#include "tools/tvctl/commands/FeatureCommand.h"
#include "tools/tvctl/commands/PhoneCommand.h"
#include "tools/tvctl/commands/PowerCommand.h"
#include "tools/tvctl/commands/WakeCommand.h"
#include "tools/tvctl/trace/TraceCommand.h"

namespace Tvctl {

ExitCode Run(const std::vector<std::string>& words, std::ostream& out, std::ostream& err) {
    const CommandLine commandLine({WakeCommand::Group(), DoctorCommand::Group(),
                                   TraceCommand::Group(), PhoneCommand::Group(),
                                   ConfCommand::Group(), FeatureCommand::Group(),
                                   PowerCommand::Group(), DeviceCommand::Group()});
    return commandLine.Run(words, out, err);
}

}  // namespace Tvctl
