// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/PhoneRegistry.h"

#include <algorithm>
#include <exception>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "common/Address.h"
#include "platform/linux/config/ConfigStore.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"
#include "utility/VconfUtil.h"

namespace Tvctl {

namespace {

using Platform::ConfigLookup;
using Platform::ConfigStatus;
using Platform::ConfigStore;
using Platform::ConfigType;

constexpr size_t kSettingsId = Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3;
constexpr size_t kMasksId = Util::VCONF_KEY_DB_ORG_ORLIX_BLEAPP_ADDED_MOBILE_KEYLIST;
constexpr char kMaskSeparator = ',';
// Others write the keys too; each attempt begins with what they wrote.
constexpr int kMaxAttempts = 20;

const std::string& KeyName(size_t id) {
    return Util::VconfUtil::keys[id];
}

bool IsSamePhone(const std::string& a, const std::string& b) {
    return Util::CommonUtil::ToCapital(a) == Util::CommonUtil::ToCapital(b);
}

bool Contains(const std::vector<std::string>& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

std::string Pack(const std::vector<std::string>& masks) {
    std::string packed;
    for (const std::string& mask : masks) {
        packed += mask + kMaskSeparator;
    }
    return packed;
}

// A stored string, "" when the key is not set; nothing, with the reason, when it cannot be read.
std::optional<std::string> ReadKey(size_t id, int64_t& revision, std::string& reason) {
    const std::string& key = KeyName(id);
    const ConfigLookup lookup = ConfigStore::Instance().Lookup(key);
    revision = lookup.revision;
    if (lookup.status == ConfigStatus::kAbsent || lookup.status == ConfigStatus::kNoFile) {
        return "";
    }
    if (lookup.status != ConfigStatus::kOk) {
        reason = ConfigStore::Instance().LastFailure(key);
        return std::nullopt;
    }
    if (lookup.value.type != ConfigType::kString) {
        reason = key + " is not a string and is not changed";
        return std::nullopt;
    }
    return lookup.value.text;
}

ConfigStatus WriteKey(size_t id, const std::string& text, int64_t revision) {
    return ConfigStore::Instance().Store(KeyName(id), {ConfigType::kString, text, 0}, revision);
}

}  // namespace

bool PhoneRegistry::Fail(const std::string& reason) {
    m_failure = reason;
    return false;
}

bool PhoneRegistry::LoadSettings() {
    const auto text = ReadKey(kSettingsId, m_settingsRevision, m_failure);
    if (!text) {
        return false;
    }
    m_settings = Json::Value(Json::arrayValue);
    const std::string& key = KeyName(kSettingsId);
    try {
        if (!text->empty()) {
            m_settings = Util::JsonUtil::StringToJson(*text);
        }
    } catch (const std::exception& exception) {
        std::string message = exception.what();
        std::replace(message.begin(), message.end(), '\n', ' ');
        return Fail(key + " is not JSON and is not changed: " + message);
    }
    const bool isList =
        m_settings.isArray() &&
        std::all_of(m_settings.begin(), m_settings.end(), [](const Json::Value& phone) {
            return phone.isObject() && phone["address"].isString() &&
                   (phone["value"].isString() || phone["value"].isNull());
        });
    return isList ||
           Fail(key + " is not a list of phones with address and value, and is not changed");
}

bool PhoneRegistry::LoadMasks() {
    const auto text = ReadKey(kMasksId, m_masksRevision, m_failure);
    if (!text) {
        return false;
    }
    const size_t tail = text->size() % Conditions::kPackedStride;
    if (tail != 0 && tail != kAddressLength) {
        return Fail(KeyName(kMasksId) + " ends within a masked address and is not changed");
    }
    m_masks.clear();
    for (size_t at = 0; at < text->size(); at += Conditions::kPackedStride) {
        m_masks.push_back(text->substr(at, kAddressLength));
    }
    return true;
}

PhoneRegistry::Outcome PhoneRegistry::Add(const std::string& address, bool enabled) {
    return Change([&] { AddTo(address, enabled ? "Y" : "N"); });
}

PhoneRegistry::Outcome PhoneRegistry::Remove(const std::string& address) {
    return Change([&] { RemoveFrom(address); });
}

PhoneRegistry::Outcome PhoneRegistry::Change(const std::function<void()>& edit) {
    bool isHalfDone = false;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        if (!LoadSettings() || !LoadMasks()) {
            return Outcome::kFailed;
        }
        const Json::Value settings = m_settings;
        const std::vector<std::string> masks = m_masks;
        edit();
        const bool hasNewSettings = m_settings != settings;
        if (!hasNewSettings && m_masks == masks && !isHalfDone) {
            return Outcome::kNothingToDo;
        }
        ConfigStatus status = ConfigStatus::kOk;
        if (hasNewSettings) {
            status =
                WriteKey(kSettingsId, Util::JsonUtil::JsonToString(m_settings), m_settingsRevision);
            isHalfDone = isHalfDone || status == ConfigStatus::kOk;
        }
        if (status == ConfigStatus::kOk) {
            // Written even when it stays the same, and last: it is the key that the service
            // watches, and with it the service reads both.
            status = WriteKey(kMasksId, Pack(m_masks), m_masksRevision);
        }
        if (status == ConfigStatus::kOk) {
            return Outcome::kDone;
        }
        if (status != ConfigStatus::kChanged) {
            // The keys are in the same file.
            m_failure = ConfigStore::Instance().LastFailure(KeyName(kMasksId));
            return Outcome::kFailed;
        }
    }
    m_failure = "other programs keep changing the keys; gave up";
    return Outcome::kFailed;
}

void PhoneRegistry::AddTo(const std::string& address, const char* value) {
    std::string spelling = Util::CommonUtil::ToCapital(address);
    bool isThere = false;
    for (Json::Value& phone : m_settings) {
        if (IsSamePhone(phone["address"].asString(), address)) {
            isThere = true;
            spelling = phone["address"].asString();
            phone["value"] = value;
        }
    }
    if (!isThere) {
        m_settings.append(Util::Object({{"address", spelling}, {"value", value}}));
    }
    const std::string mask = MobileList::GetXorMac(spelling);
    if (!Contains(m_masks, mask)) {
        m_masks.push_back(mask);
    }
}

void PhoneRegistry::RemoveFrom(const std::string& address) {
    Json::Value kept(Json::arrayValue);
    for (const Json::Value& phone : m_settings) {
        if (!IsSamePhone(phone["address"].asString(), address)) {
            kept.append(phone);
        }
    }
    m_settings = kept;
    const auto end =
        std::remove_if(m_masks.begin(), m_masks.end(), [&address](const std::string& mask) {
            return IsSamePhone(MobileList::GetXorMac(mask), address);
        });
    m_masks.erase(end, m_masks.end());
}

std::optional<std::vector<Phone>> PhoneRegistry::List() {
    if (!LoadSettings() || !LoadMasks()) {
        return std::nullopt;
    }
    std::vector<Phone> phones;
    for (const Json::Value& phone : std::as_const(m_settings)) {
        const std::string address = phone["address"].asString();
        phones.push_back({address, phone["value"].asString(),
                          Contains(m_masks, MobileList::GetXorMac(address))});
    }
    for (const std::string& mask : m_masks) {
        const std::string address = MobileList::GetXorMac(mask);
        const bool isListed = std::any_of(phones.begin(), phones.end(), [&](const Phone& phone) {
            return phone.address == address;
        });
        if (!isListed) {
            phones.push_back({address, std::nullopt, true});
        }
    }
    return phones;
}

std::optional<Phone> PhoneRegistry::Find(const std::string& address) {
    for (const Phone& phone : List().value_or(std::vector<Phone>())) {
        if (IsSamePhone(phone.address, address)) {
            return phone;
        }
    }
    return std::nullopt;
}

}  // namespace Tvctl
