// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/system_info.h"

#include <optional>
#include <string>

#include "platform/linux/config/FeatureFile.h"

namespace {

using Platform::FeatureFile;

template <typename T>
int Give(const std::optional<T>& found, T* value) {
    if (!found) {
        return -1;
    }
    *value = *found;
    return 0;
}

}  // namespace

int system_info_get_custom_bool(const char* key, bool* value) {
    if (key == nullptr || value == nullptr) {
        return -1;
    }
    return Give(FeatureFile::Instance().GetBool(key), value);
}

int system_info_get_custom_int(const char* key, int* value) {
    if (key == nullptr || value == nullptr) {
        return -1;
    }
    return Give(FeatureFile::Instance().GetInt(key), value);
}

int system_info_get_value_int(system_info_key_e key, int* value) {
    if (value == nullptr) {
        return -1;
    }
    return Give(FeatureFile::Instance().GetInt("value/" + std::to_string(key)), value);
}
