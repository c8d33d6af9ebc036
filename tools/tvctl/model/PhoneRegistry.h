// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Tvctl {

// A phone as the two keys of the registered phones describe it.
struct Phone {
    std::string address;                 // as it is spelled there
    std::optional<std::string> setting;  // "Y" enables; nothing when the settings lack the phone
    bool hasPower = false;               // may switch the TV on and off: its mask is there

    [[nodiscard]] bool Qualifies() const { return setting == "Y" && hasPower; }
};

// The registered phones in the configuration store: the phones' settings as JSON, and the packed
// masked addresses of those that may switch the TV on. A phone is connected when both hold it.
// What else the keys hold is kept; keys that cannot be understood are not changed.
class PhoneRegistry {
public:
    enum class Outcome { kDone, kNothingToDo, kFailed };

    // Makes the phone qualify, or with `enabled` false only lack its setting. A new phone is stored
    // in upper case; one that is there keeps its spelling, which the phone's own commands have.
    [[nodiscard]] Outcome Add(const std::string& address, bool enabled);
    [[nodiscard]] Outcome Remove(const std::string& address);

    // All phones that one of the keys has, the settings' first.
    [[nodiscard]] std::optional<std::vector<Phone>> List();

    // The phone with that address in any spelling. Nothing when there is none, or on failure.
    [[nodiscard]] std::optional<Phone> Find(const std::string& address);

    // Why a call failed; empty when none did.
    [[nodiscard]] const std::string& Failure() const { return m_failure; }

private:
    [[nodiscard]] bool LoadSettings();
    [[nodiscard]] bool LoadMasks();
    // Lets `edit` change what was read, and writes it if it changed.
    [[nodiscard]] Outcome Change(const std::function<void()>& edit);
    void AddTo(const std::string& address, const char* value);
    void RemoveFrom(const std::string& address);
    [[nodiscard]] bool Fail(const std::string& reason);

    Json::Value m_settings;
    int64_t m_settingsRevision = 0;
    std::vector<std::string> m_masks;
    int64_t m_masksRevision = 0;
    std::string m_failure;
};

}  // namespace Tvctl
