// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/MobileList.h"

#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/AutoConnectDbg.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"
#include "utility/VconfUtil.h"

namespace {

using Conditions::kAddressLength;
using Conditions::kPackedStride;

constexpr const char* kEnabled = "Y";

std::string ReadKey(int id) {
    std::string value;
    Util::VconfUtil::GetVconf(id, value);
    return value;
}

// jsoncpp would iterate over the members of an object, and find nothing in a number or a text, so
// a key of the wrong shape must be refused before it passes for an empty list.
const Json::Value& RequireArray(const Json::Value& value, const char* what) {
    if (!value.isArray()) {
        Json::throwLogicError(std::string(what) + " is not an array");
    }
    return value;
}

// The address of an entry of the settings, as it is stored, if its owner enabled it and it is among
// the masked addresses.
std::optional<std::string> FindQualifying(const Json::Value& entry,
                                          const std::unordered_set<std::string>& maskedAddresses) {
    if (entry["value"].asString() != kEnabled) {
        return std::nullopt;
    }
    const std::string address = entry["address"].asString();
    return maskedAddresses.count(MobileList::GetXorMac(address)) == 0 ? std::nullopt
                                                                      : std::optional(address);
}

Json::Value MakeSetting(const Json::Value& address, const Json::Value& value) {
    Json::Value setting(Json::objectValue);
    setting["address"] = address;
    setting["value"] = value;
    return setting;
}

// Positions of each address in a list, so that looking one up does not walk the list.
class PositionIndex {
public:
    explicit PositionIndex(const std::vector<std::string>& list) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            m_positions[Util::CommonUtil::ToCapital(list[i])].insert(i);
        }
    }

    // The first position of `address` at or behind `from`, or `none`.
    [[nodiscard]] std::size_t Find(const std::string& address, std::size_t from,
                                   std::size_t none) const {
        const auto entry = m_positions.find(address);
        if (entry == m_positions.end()) {
            return none;
        }
        const auto position = entry->second.lower_bound(from);
        return position == entry->second.end() ? none : *position;
    }

    void Move(const std::string& address, std::size_t from, std::size_t to) {
        std::set<std::size_t>& positions = m_positions[address];
        positions.erase(from);
        positions.insert(to);
    }

private:
    std::unordered_map<std::string, std::set<std::size_t>> m_positions;
};

}  // namespace

MobileList::MobileList()
    : m_autoConnectListKey(
          Util::VconfUtil::keys[Util::VCONF_KEY_DB_NIRVO_AUTO_CONNECT_MOBILE_LIST]),
      m_mobileSettingKey(Util::VconfUtil::keys[Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3]),
      m_soundMirroringKey(Util::VconfUtil::keys[Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED1]),
      m_autoOnOffKey(
          Util::VconfUtil::keys[Util::VCONF_KEY_DB_ORG_ORLIX_BLEAPP_ADDED_MOBILE_KEYLIST]) {
    UpdateList();
    vconf_notify_key_changed(m_autoOnOffKey.c_str(), OnAutoOnOffMobileListVconfKeyChanged, this);
    vconf_notify_key_changed(m_soundMirroringKey.c_str(), OnSMDeviceListVconfKeyChanged, this);
}

MobileList::~MobileList() {
    vconf_ignore_key_changed(m_autoOnOffKey.c_str(), OnAutoOnOffMobileListVconfKeyChanged);
    vconf_ignore_key_changed(m_soundMirroringKey.c_str(), OnSMDeviceListVconfKeyChanged);
}

void MobileList::UpdateList() {
    BTLOG_INFO("");
    m_list.clear();
    m_registered.clear();
    try {
        const std::string settings = ReadKey(Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3);
        if (settings.empty()) {
            BTLOG_WARN("No device which enable bt auto connection");
            WriteAutoConnectList("");
            return;
        }
        const Json::Value phones = Util::JsonUtil::StringToJson(settings);
        const std::vector<std::string> autoOnOffDevices = GetAutoOnOffDevices();
        if (autoOnOffDevices.empty()) {
            BTLOG_WARN("AutoOnOffDevices is empty");
            WriteAutoConnectList("");
            return;
        }
        const std::unordered_set<std::string> qualifying(autoOnOffDevices.begin(),
                                                         autoOnOffDevices.end());
        std::string value;
        for (const Json::Value& phone : RequireArray(phones, m_mobileSettingKey.c_str())) {
            if (const auto address = FindQualifying(phone, qualifying)) {
                BTLOG_INFO("%s enable auto on/off and bt auto connection", address->c_str());
                Append(*address);
                // Masked once more and not kept: readers of the log find its line on both sides.
                value += (value.empty() ? "" : ",") + GetXorMac(*address);
            }
        }
        ReorderDeviceList();
        WriteAutoConnectList(value);
        BTLOG_WARN("%s : %s", m_autoConnectListKey.c_str(), value.c_str());
    } catch (const Json::Exception& e) {
        BTLOG_ERROR("Json exception : %s", e.what());
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
}

void MobileList::Append(const std::string& address) {
    m_list.push_back(ToCapital(address));
    m_registered.insert(m_list.back());
}

void MobileList::WriteAutoConnectList(const std::string& value) const {
    Util::VconfUtil::SetVconf(Util::VCONF_KEY_DB_NIRVO_AUTO_CONNECT_MOBILE_LIST, value);
}

void MobileList::UpdateList(const std::string& cmd) {
    UpdateInternalMobileList(cmd);
    UpdateList();
}

void MobileList::UpdateInternalMobileList(const std::string& cmd) {
    BTLOG_INFO("cmd from mobile : %s", cmd.c_str());
    try {
        const Json::Value stored =
            Util::JsonUtil::StringToJson(ReadKey(Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3));
        const Json::Value command = Util::JsonUtil::StringToJson(cmd);
        if (!command.isMember("btMac") || !command.isMember("value")) {
            BTLOG_WARN("No object");
            return;
        }
        const std::string address = command["btMac"].asString();
        const std::string value = command["value"].asString();
        Json::Value phones(Json::arrayValue);
        bool isStored = false;
        for (const Json::Value& phone : RequireArray(stored, m_mobileSettingKey.c_str())) {
            const bool isMeant = phone["address"].asString() == address;
            if (isMeant) {
                BTLOG_INFO("device is alreay in internal list");
                isStored = true;
            }
            phones.append(
                MakeSetting(phone["address"], isMeant ? Json::Value(value) : phone["value"]));
        }
        if (!isStored) {
            BTLOG_INFO("new device. add it");
            phones.append(MakeSetting(address, value));
        }
        // Not JsonToString, whose trace would stand in the log of each command.
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        Util::VconfUtil::SetVconf(Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3,
                                  Json::writeString(writer, phones));
    } catch (const Json::Exception& e) {
        BTLOG_ERROR("Json exception : %s", e.what());
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
}

std::vector<std::string> MobileList::GetAutoOnOffDevices() const {
    std::vector<std::string> devices;
    const std::string packed = ReadKey(Util::VCONF_KEY_DB_ORG_ORLIX_BLEAPP_ADDED_MOBILE_KEYLIST);
    if (packed.empty()) {
        BTLOG_WARN("No auto on/off devices");
        return devices;
    }
    for (std::size_t start = 0; start < packed.size(); start += kPackedStride) {
        devices.push_back(packed.substr(start, kAddressLength));
    }
    return devices;
}

std::vector<std::string> MobileList::GetSoundMirroringDevices() const {
    std::vector<std::string> devices;
    try {
        const Json::Value root =
            Util::JsonUtil::StringToJson(ReadKey(Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED1));
        const Json::Value& list = root["devices"];
        if (!list.isNull()) {
            RequireArray(list, m_soundMirroringKey.c_str());
        }
        BTLOG_DEBUG("soundmirroring device list");
        for (const Json::Value& device : list) {
            devices.push_back(device["address"].asString());
            BTLOG_DEBUG("device : %s", devices.back().c_str());
        }
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
    return devices;
}

void MobileList::ReorderDeviceList() {
    const std::vector<std::string> soundMirroringDevices = GetSoundMirroringDevices();
    BTLOG_DEBUG("before reorder");
    for (const std::string& address : m_list) {
        BTLOG_DEBUG("device : %s", address.c_str());
    }
    PositionIndex index(m_list);
    std::size_t front = 0;
    for (const std::string& device : soundMirroringDevices) {
        const std::string address = ToCapital(device);
        const std::size_t found = index.Find(address, front, m_list.size());
        if (found == m_list.size()) {
            continue;
        }
        BTLOG_INFO("swap %s and %s", m_list[front].c_str(), m_list[found].c_str());
        // The exchanged phone takes the other's place, so the rest may change its order.
        index.Move(m_list[front], front, found);
        index.Move(m_list[found], found, front);
        std::swap(m_list[front], m_list[found]);
        ++front;
    }
    BTLOG_DEBUG("after reorder");
    for (const std::string& address : m_list) {
        BTLOG_DEBUG("device : %s", address.c_str());
    }
}

bool MobileList::Exist(const std::string& address) const {
    if (m_registered.count(address) == 0) {
        return false;
    }
    BTLOG_INFO("Found %s in list", address.c_str());
    return true;
}

std::string MobileList::GetXorMac(const std::string& address) {
    if (address.size() != kAddressLength) {
        BTLOG_ERROR("input buffer size is not 17");
        return "";
    }
    std::string masked = address;
    for (std::size_t i = 1; i < kAddressLength - 1; ++i) {
        masked[i] = static_cast<char>(static_cast<unsigned char>(masked[i]) ^ i);
    }
    BTLOG_INFO("org : %s, xored : %s", address.c_str(), masked.c_str());
    return masked;
}

std::string MobileList::ToCapital(const std::string& text) {
    return Util::CommonUtil::ToCapital(text);
}

void MobileList::OnAutoOnOffMobileListVconfKeyChanged(keynode_t* /*node*/, void* data) noexcept {
    if (data == nullptr) {
        BTLOG_ERROR("DATA IS NULL");
        return;
    }
    BTLOG_INFO("+");
    static_cast<MobileList*>(data)->UpdateList();
}

void MobileList::OnSMDeviceListVconfKeyChanged(keynode_t* /*node*/, void* data) noexcept {
    if (data == nullptr) {
        BTLOG_ERROR("DATA IS NULL");
        return;
    }
    BTLOG_INFO("+");
    static_cast<MobileList*>(data)->ReorderDeviceList();
}
