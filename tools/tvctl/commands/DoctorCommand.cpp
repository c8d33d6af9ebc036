// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/DoctorCommand.h"

#include "tools/tvctl/model/Diagnosis.h"

namespace Tvctl {

CommandGroup DoctorCommand::Group() {
    return {
        "doctor",
        "what stands between a wake-up and music",
        {{"",
          "",
          "Looks at every condition, in the order in which the service meets them",
          "Each with what was found and, where it does not hold, what would make it hold. Done\n"
          "when all hold.\n",
          {},
          0,
          0,
          Examine}}};
}

ExitCode DoctorCommand::Examine(const Arguments& /*arguments*/, Console& console) {
    Json::Value json(Json::arrayValue);
    int broken = 0;
    for (const Finding& finding : Diagnose(Tvctl::Examine())) {
        broken += finding.holds ? 0 : 1;
        Json::Value item;
        item["condition"] = finding.condition;
        item["holds"] = finding.holds;
        item["found"] = finding.found;
        item["remedy"] = finding.remedy;
        json.append(item);
        if (!console.IsJson()) {
            console.PrintLine((finding.holds ? "ok    " : "FAIL  ") + finding.condition + ": " +
                              finding.found);
            if (!finding.holds) {
                console.PrintLine("      -> " + finding.remedy);
            }
        }
    }
    if (console.IsJson()) {
        console.Print(json);
    }
    return broken == 0 ? kDone
                       : console.Fail(std::to_string(broken) + " of " +
                                      std::to_string(json.size()) + " conditions do not hold");
}

}  // namespace Tvctl
