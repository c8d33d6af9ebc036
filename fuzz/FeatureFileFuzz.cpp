// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Check.h"
#include "fuzz/ScratchFile.h"
#include "platform/linux/config/FeatureFile.h"

// A features.conf that is read, and into which a feature is written.

namespace {

using Platform::FeatureFile;
using Features = std::vector<FeatureFile::Feature>;

constexpr const char* kKey = "com.velmora/featureconf/display_rotator_supported";

std::string ValueOf(const Features& features, const std::string& key) {
    for (const FeatureFile::Feature& feature : features) {
        if (feature.key == key) {
            return feature.value;
        }
    }
    return "(none)";
}

// The feature is in the file for the next reader, and the others are as they were.
void CheckWritten(const std::string& path, const Features& before) {
    FeatureFile file(path);
    Check(file.GetInt(kKey) == 94, "a feature that was written is there");
    const auto after = file.List();
    Check(after.has_value(), "a file that was written can be read");
    for (const FeatureFile::Feature& feature : before) {
        Check(feature.key == kKey || ValueOf(*after, feature.key) == ValueOf(before, feature.key),
              "writing a feature keeps the others", feature.key);
    }
}

// A feature can be changed if its name is one that a feature may have.
void CheckChange(const std::string& path, const std::string& key) {
    const bool isValid = FeatureFile::IsValidKey(key);
    Check(FeatureFile(path).Set(key, "95") == isValid, "a feature with a valid name is written",
          key);
    Check(!isValid || FeatureFile(path).GetInt(key) == 95, "a feature that was changed is there",
          key);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // A file that is not understood is worth a line for an operator, not millions of them here.
    g_setenv("TV_LOG_LEVEL", "error", FALSE);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ScratchFile scratch("features.conf");
    const std::string& path = scratch.Hold(data, size);
    FeatureFile file(path);
    const auto features = file.List();
    Check(features.has_value() == file.LastFailure().empty(), "a failure has a reason");
    for (const FeatureFile::Feature& feature : features.value_or(Features())) {
        static_cast<void>(file.GetBool(feature.key));
        static_cast<void>(file.GetInt(feature.key));
    }
    const bool isWritten = file.Set(kKey, "94");
    Check(isWritten == features.has_value(), "a file that is understood can be written");
    if (isWritten) {
        CheckWritten(path, *features);
    }
    if (isWritten && !features->empty()) {
        CheckChange(path, features->back().key);
    }
    return 0;
}
