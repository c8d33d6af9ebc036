// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/model/Diagnosis.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

ExitCode ShowDiagnosis(const Arguments& /*arguments*/, Console& console) {
    Json::Value json(Json::arrayValue);
    std::vector<Row> rows;
    int broken = 0;
    for (const Finding& finding : Diagnose(Examine())) {
        json.append(Util::Object({{"condition", finding.condition},
                                  {"holds", finding.holds},
                                  {"found", finding.found},
                                  {"remedy", finding.remedy}}));
        rows.push_back(
            {{(finding.holds ? "ok    " : "FAIL  ") + finding.condition + ": " + finding.found},
             finding.holds ? Tone::kGood : Tone::kBad});
        if (!finding.holds) {
            ++broken;
            rows.push_back({{"      -> " + finding.remedy}, Tone::kHint});
        }
    }
    console.ShowRows(json, rows);
    return broken == 0 ? kDone
                       : console.Fail(std::to_string(broken) + " of " +
                                      std::to_string(json.size()) + " conditions do not hold");
}

}  // namespace

CommandGroup DoctorCommands() {
    return {"doctor",
            "why a phone would not be connected, and what helps",
            {{"", "", "Checks each condition, in the order in which the service checks them",
              ShowDiagnosis,
              "Shows each finding and, if it fails, a fix. Fails if any condition fails.\n"}}};
}

}  // namespace Tvctl
