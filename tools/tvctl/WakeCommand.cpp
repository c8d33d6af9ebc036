// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/WakeCommand.h"

#include "autoconnect/src/DbusInterface.h"
#include "tools/tvctl/ServiceSignal.h"

namespace Tvctl {

CommandGroup WakeCommand::Group() {
    return {"wake",
            "tell the service that the TV woke up",
            {{"",
              "",
              "Sends the signal that the TV sends around a wake-up",
              "The service then looks for a registered phone, connects it and has it play.\n"
              "Fails when the service does not run.\n",
              {},
              0,
              0,
              Wake}}};
}

ExitCode WakeCommand::Wake(const Arguments& /*arguments*/, Console& console) {
    const SignalResult result = SendToService(kPrepareCommand, nullptr);
    if (!result.isHeard) {
        return console.Fail(result.reason);
    }
    if (console.IsJson()) {
        Json::Value json;
        json["signal"] = kPrepareCommand;
        console.Print(json);
    }
    return kDone;
}

}  // namespace Tvctl
