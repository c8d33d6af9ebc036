// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/tvctl/commands/CommandLine.h"

namespace Tvctl {

// The registered phones.
class PhoneCommand {
public:
    [[nodiscard]] static CommandGroup Group();

private:
    static ExitCode Add(const Arguments& arguments, Console& console);
    static ExitCode Remove(const Arguments& arguments, Console& console);
    static ExitCode List(const Arguments& arguments, Console& console);
    // As the phone itself would: through the service.
    static ExitCode SendSetting(const std::string& address, const char* value, Console& console);
};

}  // namespace Tvctl
