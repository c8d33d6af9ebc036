// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "common/Source.h"
#include "tools/tv-sim/ObjectTree.h"

namespace TvSim {

// The devices that the adapter knows, Device1 each: bonded ones, and temporary ones that were heard
// and are forgotten some time after they were heard last.
class DeviceTable {
public:
    using CallHandler = std::function<void(const std::string& address, MethodCall call)>;

    // `onCall` takes the calls to every device. The tree must outlive the table.
    DeviceTable(ObjectTree& tree, std::string adapterPath, int forgetsAfterMs, CallHandler onCall);

    // Of an empty table.
    void SetAdapterPath(const std::string& path) { m_adapterPath = path; }
    [[nodiscard]] std::string PathOf(const std::string& address) const;

    // Adds what storage or a phone's own connection tells of a device; an object that is there
    // already is replaced.
    void AddBonded(const PhonePlan& phone);
    void SetConnected(const std::string& address, bool connected);
    // Removes the object with all below it.
    void Remove(const std::string& address);

    // A received advertisement, which the discovery lets through. With `duplicates` unchanged data
    // are told again.
    void Hear(const Advertisement& advertisement, bool duplicates);
    void OnDiscoveryStopped();
    void ForgetTemporary() {
        RemoveIf([](const Device&) { return true; });
    }
    void Clear();

private:
    struct Device {
        bool bonded = false;
        bool connectable = true;
        bool connected = false;
        std::optional<int> rssi;  // of this discovery
        gint64 heardAtUs = 0;
        ManufacturerData manufacturerData;
    };

    void AddHeard(const Advertisement& advertisement);
    void Add(const std::string& address, Properties properties);
    void ForgetOld();
    // Of the devices that are not bonded.
    void RemoveIf(const std::function<bool(const Device& device)>& condition);

    ObjectTree& m_tree;
    std::string m_adapterPath;
    int m_forgetsAfterMs;
    CallHandler m_onCall;
    std::map<std::string, Device> m_devices;  // by address
    Timer m_forgetTimer;
};

}  // namespace TvSim
