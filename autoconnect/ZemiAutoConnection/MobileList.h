// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "platform/config_store.h"

// The phones that may be connected automatically, in the order in which they are tried. A phone is
// on the list when its owner enabled it ("value" is "Y" in the phones' settings) and it may switch
// the TV on and off (its masked address is among the packed ones); phones that mirror the TV's
// sound come first. It is built from three keys of the configuration store and rebuilt when the
// masked addresses change or a phone sends its setting; the settings key itself is not watched. Its
// own masked addresses are written back for other components.
//
// Failures are logged and leave what the failing step had reached. Main loop's thread only.
class MobileList {
public:
    // Builds the list and subscribes to changes of the masked addresses and of the sound-mirroring
    // phones.
    MobileList();
    ~MobileList();
    MobileList(const MobileList&) = delete;
    MobileList& operator=(const MobileList&) = delete;

    // Rebuilds the list from the keys and writes the masked addresses back.
    void UpdateList();

    // Applies a phone's own command to the phones' settings, then rebuilds the list. `cmd` is a
    // JSON object with the strings "btMac" (the phone's address) and "value" ("Y" enables).
    void UpdateList(const std::string& cmd);
    void UpdateInternalMobileList(const std::string& cmd);

    // The masked addresses of the phones with automatic power on and off.
    [[nodiscard]] std::vector<std::string> GetAutoOnOffDevices() const;
    // The addresses of the sound-mirroring phones, by priority.
    [[nodiscard]] std::vector<std::string> GetSoundMirroringDevices() const;

    // Exchanges the sound-mirroring phones with those at the front of the list.
    void ReorderDeviceList();

    // Whether `address`, in upper case, is on the list.
    [[nodiscard]] bool Exist(const std::string& address) const;
    // The addresses in connection order, in upper case.
    [[nodiscard]] std::vector<std::string> GetList() const { return m_list; }

    // The masked form of a 17-character address: each character but the first and the last is
    // combined with its position by exclusive or. Empty for any other length, logged. Applied twice
    // it gives the address back.
    static std::string GetXorMac(const std::string& address);
    // A copy with 'a' to 'z' in upper case.
    static std::string ToCapital(const std::string& text);

    // Key-change callbacks; `data` is the list.
    static void OnAutoOnOffMobileListVconfKeyChanged(keynode_t* node, void* data) noexcept;
    static void OnSMDeviceListVconfKeyChanged(keynode_t* node, void* data) noexcept;

private:
    void Append(const std::string& address);
    void WriteAutoConnectList(const std::string& value) const;

    std::vector<std::string> m_list;
    std::unordered_set<std::string> m_registered;  // the same addresses, for Exist
    std::string m_autoConnectListKey;
    std::string m_mobileSettingKey;
    std::string m_soundMirroringKey;
    std::string m_autoOnOffKey;
};
