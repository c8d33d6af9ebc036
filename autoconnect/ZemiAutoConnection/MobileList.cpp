// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/ZemiAutoConnection/MobileList.h"

#include <set>
#include <unordered_map>
#include <utility>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/AutoConnectDbg.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"
#include "utility/VconfUtil.h"

namespace {

constexpr const char* kEnabled = "Y";

constexpr int kAutoConnectList = Util::VCONF_KEY_DB_NIRVO_AUTO_CONNECT_MOBILE_LIST;
constexpr int kMobileSettings = Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3;
constexpr int kSoundMirroring = Util::VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED1;
constexpr int kAutoOnOff = Util::VCONF_KEY_DB_ORG_ORLIX_BLEAPP_ADDED_MOBILE_KEYLIST;

const char* KeyOf(int id) {
    return Util::VconfUtil::keys[static_cast<std::size_t>(id)].c_str();
}

std::string ReadKey(int id) {
    std::string value;
    Util::VconfUtil::GetVconf(id, value);
    return value;
}

// jsoncpp would iterate over the members of an object, and find nothing in a number or a text. So
// anything but an array is refused here, or it would count as an empty list.
const Json::Value& RequireArray(const Json::Value& value, int key) {
    if (!value.isArray()) {
        Json::throwLogicError(std::string(KeyOf(key)) + " is not an array");
    }
    return value;
}

Json::Value MakeSetting(const Json::Value& address, const Json::Value& value) {
    return Util::Object({{"address", address}, {"value", value}});
}

void LogDevices(const LogPlace& place, const char* title, const std::vector<std::string>& list) {
    BTLOG_FOR(place, DLOG_DEBUG, "%s", title);
    for (const std::string& address : list) {
        BTLOG_FOR(place, DLOG_DEBUG, "device : %s", address.c_str());
    }
}

}  // namespace

MobileList::MobileList() {
    UpdateList();
    vconf_notify_key_changed(KeyOf(kAutoOnOff), OnAutoOnOffMobileListVconfKeyChanged, this);
    vconf_notify_key_changed(KeyOf(kSoundMirroring), OnSMDeviceListVconfKeyChanged, this);
}

MobileList::~MobileList() {
    vconf_ignore_key_changed(KeyOf(kAutoOnOff), OnAutoOnOffMobileListVconfKeyChanged);
    vconf_ignore_key_changed(KeyOf(kSoundMirroring), OnSMDeviceListVconfKeyChanged);
}

void MobileList::UpdateList() {
    BTLOG_INFO("");
    m_list.clear();
    m_registered.clear();
    try {
        const std::string settings = ReadKey(kMobileSettings);
        if (settings.empty()) {
            BTLOG_WARN("No device which enable bt auto connection");
            Util::VconfUtil::SetVconf(kAutoConnectList, "");
            return;
        }
        const Json::Value phones = Util::JsonUtil::StringToJson(settings);
        const std::vector<std::string> autoOnOffDevices = GetAutoOnOffDevices();
        if (autoOnOffDevices.empty()) {
            BTLOG_WARN("AutoOnOffDevices is empty");
            Util::VconfUtil::SetVconf(kAutoConnectList, "");
            return;
        }
        const std::unordered_set<std::string> qualifying(autoOnOffDevices.begin(),
                                                         autoOnOffDevices.end());
        std::string value;
        for (const Json::Value& phone : RequireArray(phones, kMobileSettings)) {
            if (phone["value"].asString() != kEnabled) {
                continue;
            }
            const std::string address = phone["address"].asString();
            if (qualifying.count(GetXorMac(address)) == 0) {
                continue;
            }
            BTLOG_INFO("%s enable auto on/off and bt auto connection", address.c_str());
            m_list.push_back(ToCapital(address));
            m_registered.insert(m_list.back());
            // Masked a second time on purpose: the log has GetXorMac's line before and after.
            value += (value.empty() ? "" : ",") + GetXorMac(address);
        }
        ReorderDeviceList();
        Util::VconfUtil::SetVconf(kAutoConnectList, value);
        BTLOG_WARN("%s : %s", KeyOf(kAutoConnectList), value.c_str());
    } catch (const Json::Exception& e) {
        BTLOG_ERROR("Json exception : %s", e.what());
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
}

void MobileList::UpdateList(const std::string& cmd) {
    UpdateInternalMobileList(cmd);
    UpdateList();
}

void MobileList::UpdateInternalMobileList(const std::string& cmd) {
    BTLOG_INFO("cmd from mobile : %s", cmd.c_str());
    try {
        const Json::Value stored = Util::JsonUtil::StringToJson(ReadKey(kMobileSettings));
        const Json::Value command = Util::JsonUtil::StringToJson(cmd);
        if (!command.isMember("btMac") || !command.isMember("value")) {
            BTLOG_WARN("No object");
            return;
        }
        const std::string address = command["btMac"].asString();
        const std::string value = command["value"].asString();
        Json::Value phones(Json::arrayValue);
        bool isStored = false;
        for (const Json::Value& phone : RequireArray(stored, kMobileSettings)) {
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
        // Not JsonToString: it would add its trace lines to the log of each command.
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        Util::VconfUtil::SetVconf(kMobileSettings, Json::writeString(writer, phones));
    } catch (const Json::Exception& e) {
        BTLOG_ERROR("Json exception : %s", e.what());
    } catch (const std::exception& e) {
        BTLOG_ERROR("exception : %s", e.what());
    }
}

std::vector<std::string> MobileList::GetAutoOnOffDevices() const {
    std::vector<std::string> devices;
    const std::string packed = ReadKey(kAutoOnOff);
    if (packed.empty()) {
        BTLOG_WARN("No auto on/off devices");
        return devices;
    }
    for (std::size_t start = 0; start < packed.size(); start += Conditions::kPackedStride) {
        devices.push_back(packed.substr(start, kAddressLength));
    }
    return devices;
}

std::vector<std::string> MobileList::GetSoundMirroringDevices() const {
    std::vector<std::string> devices;
    try {
        const Json::Value root = Util::JsonUtil::StringToJson(ReadKey(kSoundMirroring));
        const Json::Value& list = root["devices"];
        if (!list.isNull()) {
            RequireArray(list, kSoundMirroring);
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
    LogDevices(BTLOG_HERE, "before reorder", m_list);
    // Where each address stands, so that looking one up does not walk the list. Positions before
    // `front` are not looked at again.
    std::unordered_map<std::string, std::set<std::size_t>> positions;
    for (std::size_t i = 0; i < m_list.size(); ++i) {
        positions[m_list[i]].insert(i);
    }
    std::size_t front = 0;
    for (const std::string& device : soundMirroringDevices) {
        std::set<std::size_t>& candidates = positions[ToCapital(device)];
        const auto candidate = candidates.lower_bound(front);
        if (candidate == candidates.end()) {
            continue;
        }
        const std::size_t found = *candidate;
        BTLOG_INFO("swap %s and %s", m_list[front].c_str(), m_list[found].c_str());
        // The two phones change places, so the order of the others may change.
        positions[m_list[front]].insert(found);
        candidates.erase(found);
        std::swap(m_list[front], m_list[found]);
        ++front;
    }
    LogDevices(BTLOG_HERE, "after reorder", m_list);
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
