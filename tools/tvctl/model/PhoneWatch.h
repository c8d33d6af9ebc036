// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/bluetooth.h"
#include "tools/tvctl/model/PhoneRegistry.h"

namespace Tvctl {

// An advertisement that names a device, as the platform hands it to the service.
struct Sighting {
    int atMs = 0;         // since the scan began
    std::string address;  // upper case, of whom it names
    std::string sender;   // the address that it came from
    int rssi = 0;         // dBm; 127: unknown
    bool isRegistered = false;
    bool isBonded = false;
};

// Listens with the platform's scan to what the service would hear after a wake-up.
class PhoneWatch {
public:
    explicit PhoneWatch(std::vector<Phone> phones) : m_phones(std::move(phones)) {}

    // Tells of each sighting of a registered or a bonded device. Ends after that time, or when the
    // process is to end. Why it could not listen; empty when it did.
    [[nodiscard]] std::string Listen(int seconds, std::function<void(const Sighting&)> tell);

    [[nodiscard]] const std::vector<Phone>& Phones() const { return m_phones; }
    // Why the service would not have connected this phone during the scan, what helps included;
    // empty when it would have.
    [[nodiscard]] std::string WhyNot(const Phone& phone) const;
    // Results of the scan that were told of nobody: they name no device that is known here.
    [[nodiscard]] int OthersHeard() const { return m_othersHeard; }

private:
    static void OnResult(int result, bt_adapter_le_device_scan_result_info_s* info,
                         void* self) noexcept;
    void Take(const bt_adapter_le_device_scan_result_info_s& info);

    std::vector<Phone> m_phones;
    std::function<void(const Sighting&)> m_tell;
    gint64 m_startUs = 0;
    std::set<std::string> m_heard;  // addresses
    int m_othersHeard = 0;
    std::string m_failure;
    bool m_isOver = false;
};

}  // namespace Tvctl
