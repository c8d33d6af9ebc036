// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "tests/recorder/Recorder.h"
#include "tests/recorder/Tv.h"
#include "utility/JsonUtil.h"

// What other components write and phones send, a line each: the phones' settings, the
// sound-mirroring phones, the packed masked addresses, then any number of AutoConMobileUpdate's
// parameters.

namespace {

constexpr const char* kSettingsKey = "db/nirvo/musictv_paired3";
constexpr const char* kMirroringKey = "db/nirvo/musictv_paired1";
constexpr const char* kPackedKey = "db/org.orlix.bleapp/added_mobile_keylist";

bool IsJson(const std::string& text) {
    try {
        Util::JsonUtil::StringToJson(text);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void CheckList(const MobileList& list) {
    const auto packed = list.GetAutoOnOffDevices();
    for (const std::string& address : list.GetList()) {
        Check(address.size() == 17 || address.empty(), "a phone has an address", address);
        Check(list.Exist(address), "a listed phone is registered", address);
    }
    Check(list.GetList().empty() || !packed.empty(), "a listed phone may switch the TV on");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> lines = LinesOf(data, size);
    lines.resize(std::max<std::size_t>(lines.size(), 3));
    static const bool isReset = (Tv::Reset(), true);
    static_cast<void>(isReset);
    Tv::SetKey(kSettingsKey, lines[0]);
    Tv::SetKey(kMirroringKey, lines[1]);
    Tv::SetKey(kPackedKey, lines[2]);
    {
        MobileList list;
        CheckList(list);
        for (std::size_t i = 3; i < lines.size(); ++i) {
            const bool wasJson = IsJson(Tv::TextKey(kSettingsKey));
            list.UpdateList(lines[i]);
            CheckList(list);
            Check(!wasJson || IsJson(Tv::TextKey(kSettingsKey)), "the settings stay readable",
                  Tv::TextKey(kSettingsKey));
        }
        // The other components swap what they say.
        Tv::SetKey(kMirroringKey, lines[0]);
        Tv::SetKey(kPackedKey, lines[1]);
        Tv::RunPending();
        CheckList(list);
    }
    const auto leftovers = Recorder::Leftovers();
    Check(leftovers.empty(), "nothing is left on the platform",
          leftovers.empty() ? "" : leftovers[0]);
    // What is kept would look like a leak.
    Recorder::Reset();
    return 0;
}
