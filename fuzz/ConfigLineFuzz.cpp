// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "tools/tvctl/model/ConfigText.h"

// Lines of a file for tvctl conf load, and texts that tvctl conf list has to print as such lines.

namespace {

void CheckPrinted(const Platform::ConfigEntry& entry) {
    const std::string printed = Tvctl::LineOf(entry);
    Platform::ConfigEntry again;
    Check(Tvctl::ParseLine(printed, again).empty(), "a printed line can be read", printed);
    Check(again.key == entry.key && again.value.type == entry.value.type &&
              again.value.text == entry.value.text && again.value.number == entry.value.number,
          "a printed line says the same", printed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const std::string& line : LinesOf(data, size)) {
        CheckPrinted({"db/text", {Platform::ConfigType::kString, line, 0}});
        Platform::ConfigEntry entry;
        if (!Tvctl::ParseLine(line, entry).empty()) {
            Check(entry.key.empty() && entry.value.text.empty(), "a wrong line changes nothing");
            continue;
        }
        CheckPrinted(entry);
    }
    return 0;
}
