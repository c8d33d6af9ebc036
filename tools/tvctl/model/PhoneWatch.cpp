// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/model/PhoneWatch.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "common/AdvertisingData.h"
#include "common/CHandle.h"
#include "common/Source.h"
#include "platform/linux/bluez/Hearing.h"
#include "platform/linux/bluez/Inspection.h"
#include "utility/CommonUtil.h"

namespace Tvctl {

std::string PhoneWatch::Listen(int seconds, std::function<void(const Sighting&)> tell) {
    m_failure = Bluez::AwaitAdapter();
    if (!m_failure.empty()) {
        return m_failure;
    }
    m_tell = std::move(tell);
    m_startUs = g_get_monotonic_time();
    if (const int result = bt_adapter_le_start_scan(OnResult, this); result != BT_ERROR_NONE) {
        return std::string("the scan does not start: ") + Util::CommonUtil::ERR_STR(result);
    }
    const auto end = [this] { m_isOver = true; };
    const Timer timer = Timer::Once(seconds * 1000, end);
    const Source interrupt = Source::OnSignal(SIGINT, end);
    const Source terminate = Source::OnSignal(SIGTERM, end);
    while (!m_isOver) {
        g_main_context_iteration(nullptr, TRUE);
    }
    bt_adapter_le_stop_scan();
    return m_failure;
}

void PhoneWatch::OnResult(int result, bt_adapter_le_device_scan_result_info_s* info,
                          void* self) noexcept {
    auto* watch = static_cast<PhoneWatch*>(self);
    if (result == BT_ERROR_NONE) {
        watch->Take(*info);
    } else {
        watch->m_failure = std::string("the scan ended: ") + Util::CommonUtil::ERR_STR(result);
        watch->m_isOver = true;
    }
}

void PhoneWatch::Take(const bt_adapter_le_device_scan_result_info_s& info) {
    int company = 0;
    int size = 0;
    MallocPtr<char> data;
    if (bt_adapter_le_get_scan_result_manufacturer_data(
            &info, BT_ADAPTER_LE_PACKET_ADVERTISING, &company, Out(data), &size) != BT_ERROR_NONE) {
        return;
    }
    Sighting sighting;
    sighting.address = PhoneAddressIn(reinterpret_cast<const std::uint8_t*>(data.get()),
                                      static_cast<std::size_t>(size));
    sighting.isRegistered =
        std::any_of(m_phones.begin(), m_phones.end(), [&sighting](const Phone& phone) {
            return Util::CommonUtil::ToCapital(phone.address) == sighting.address;
        });
    sighting.isBonded = Bluez::StateOf(sighting.address).isBonded;
    if (!sighting.isRegistered && !sighting.isBonded) {
        ++m_othersHeard;
        return;
    }
    sighting.atMs = static_cast<int>((g_get_monotonic_time() - m_startUs) / 1000);
    sighting.sender = info.remote_address;
    sighting.rssi = info.rssi;
    m_heard.insert(sighting.address);
    m_tell(sighting);
}

std::string PhoneWatch::WhyNot(const Phone& phone) const {
    const std::string address = Util::CommonUtil::ToCapital(phone.address);
    if (!phone.Qualifies()) {
        return phone.setting == "Y" ? "may not switch the TV on: tvctl phone add " + address
                                    : "its setting is off: tvctl phone on " + address;
    }
    if (!Bluez::StateOf(address).isBonded) {
        return "not bonded: bluetoothctl pair " + address;
    }
    if (m_heard.count(address) != 0) {
        return "";
    }
    return Bluez::Hearing::TakesSightings()
               ? "not heard: it is off or away, or sends nothing that names it"
               : std::string("not heard: it sends nothing that names it, or is away; ") +
                     Bluez::Hearing::kSightingsFeature + " is false";
}

}  // namespace Tvctl
