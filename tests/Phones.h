// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/bluetooth.h"
#include "tests/recorder/Tv.h"

// Phones as other components of the TV write them to the configuration store.

constexpr const char* kMirroringKey = "db/nirvo/musictv_paired1";
constexpr const char* kSettingsKey = "db/nirvo/musictv_paired3";
constexpr const char* kResultKey = "db/nirvo/auto_connect_mobile_list";
constexpr const char* kOnOffKey = "db/org.orlix.bleapp/added_mobile_keylist";

const std::string kA = "A0:B1:C2:D3:E4:F5";
const std::string kB = "B0:00:00:00:00:0B";
const std::string kC = "C0:00:00:00:00:0C";

inline std::string Masked(std::string address) {
    for (std::size_t i = 1; i < 16; ++i) {
        address[i] = static_cast<char>(address[i] ^ static_cast<char>(i));
    }
    return address;
}

inline std::string Joined(const std::vector<std::string>& texts, const std::string& separator) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : separator) + text;
    }
    return joined;
}

// "[{"address":"...","value":"Y"},...]"; the other key's list has the shape of `Mirroring`.
inline std::string Settings(const std::vector<std::pair<std::string, std::string>>& phones) {
    std::vector<std::string> elements;
    for (const auto& [address, value] : phones) {
        elements.push_back(R"({"address":")" + address + R"(","value":")" + value + R"("})");
    }
    return "[" + Joined(elements, ",") + "]";
}

inline std::string Mirroring(const std::vector<std::string>& phones) {
    std::vector<std::string> elements;
    for (const std::string& address : phones) {
        elements.push_back(R"({"address":")" + address + R"("})");
    }
    return R"({"devices":[)" + Joined(elements, ",") + "]}";
}

inline std::vector<std::string> MaskedAll(std::vector<std::string> phones) {
    for (std::string& address : phones) {
        address = Masked(address);
    }
    return phones;
}

inline std::string Enabled(const std::vector<std::string>& phones) {
    std::vector<std::pair<std::string, std::string>> settings;
    for (const std::string& address : phones) {
        settings.emplace_back(address, "Y");
    }
    return Settings(settings);
}

// The phones that qualify for automatic connection, in this order.
inline void Register(const std::vector<std::string>& phones) {
    Tv::SetKey(kSettingsKey, Enabled(phones));
    Tv::SetKey(kOnOffKey, Joined(MaskedAll(phones), ";"));
    Tv::SetKey(kMirroringKey, Mirroring({}));
}

// Hands an advertisement over as the platform does, in a buffer of its exact size.
inline void Hear(bt_adapter_le_scan_result_cb onResult, std::vector<unsigned char> packet,
                 void* userData) {
    packet.shrink_to_fit();
    std::string address = "5E:00:00:00:00:01";
    bt_adapter_le_device_scan_result_info_s info = {address.data(),
                                                    -40,
                                                    static_cast<int>(packet.size()),
                                                    reinterpret_cast<char*>(packet.data()),
                                                    0,
                                                    nullptr};
    onResult(BT_ERROR_NONE, &info, userData);
}
