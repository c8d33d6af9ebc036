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
// masked addresses change or a phone sends its setting; the settings key itself is not watched. The
// masked addresses of the list are written to a fourth key for other components.
//
// Failures are logged; what was done before the failure stays. Main loop's thread only.
class MobileList {
public:
    // Builds the list and subscribes to changes of the masked addresses and of the sound-mirroring
    // phones.
    MobileList();
    ~MobileList();
    MobileList(const MobileList&) = delete;
    MobileList& operator=(const MobileList&) = delete;

    // Rebuilds the list from the keys and writes its masked addresses.
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

    // The masked form of a 17-character address: each character except the first and the last is
    // combined with its position by exclusive or. Any other length gives an empty text and is
    // logged. Applied twice it gives the address again.
    static std::string GetXorMac(const std::string& address);
    // A copy with 'a' to 'z' in upper case.
    static std::string ToCapital(const std::string& text);

    // Key-change callbacks; `data` is the list.
    static void OnAutoOnOffMobileListVconfKeyChanged(keynode_t* node, void* data) noexcept;
    static void OnSMDeviceListVconfKeyChanged(keynode_t* node, void* data) noexcept;

private:
    std::vector<std::string> m_list;
    std::unordered_set<std::string> m_registered;  // the same addresses, for Exist
};
