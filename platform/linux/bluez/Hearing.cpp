// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Hearing.h"

#include <utility>

#include "common/Address.h"
#include "common/AdvertisingData.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/config/FeatureFile.h"

namespace Bluez {

namespace {

// In a second; together far less than the journal takes of one service.
constexpr int kTooShort = 20;
constexpr int kStrangers = 100;
// Of a scan that does not end.
constexpr std::size_t kMostTaken = 4096;

}  // namespace

bool Hearing::TakesSightings() {
    return Platform::FeatureFile::Instance().GetBool(kSightingsFeature).value_or(true);
}

void Hearing::Begin(const std::string& adapter) {
    m_adapter = adapter;
    m_takesSightings = TakesSightings();
    m_room = {};
    m_taken.clear();
    m_isFloodTold = false;
}

std::vector<Hearing::Packet> Hearing::Take(const std::string& path, GVariant* manufacturerData) {
    Refill();
    std::vector<Packet> taken;
    if (manufacturerData != nullptr) {
        TakeEntries(path, manufacturerData, taken);
    }
    const Device* device = m_takesSightings ? m_mirror.FindDevice(path) : nullptr;
    if (device != nullptr && device->HoldsBond() && IsBondedOnesTurn(device->address)) {
        const std::vector<std::uint8_t> content = MakePhoneContent(device->address);
        taken.push_back(MakeManufacturerPacket(kNoCompany, content.data(), content.size()));
    }
    return taken;
}

void Hearing::TakeEntries(const std::string& path, GVariant* manufacturerData,
                          std::vector<Packet>& taken) {
    Packet tooShort;
    bool hasLong = false;
    GVariantIter iter;
    g_variant_iter_init(&iter, manufacturerData);
    guint16 company = 0;
    GVariant* content = nullptr;
    while (g_variant_iter_loop(&iter, "{qv}", &company, &content)) {
        if (!g_variant_is_of_type(content, G_VARIANT_TYPE_BYTESTRING)) {
            continue;
        }
        gsize size = 0;
        const auto* bytes = static_cast<const std::uint8_t*>(
            g_variant_get_fixed_array(content, &size, sizeof(std::uint8_t)));
        // Empty when no packet has room for that.
        Packet packet = MakeManufacturerPacket(company, bytes, size);
        if (size < kPhoneDataSize) {
            tooShort = std::move(packet);
        } else if (!packet.empty()) {
            hasLong = true;
            if (IsBondedOnesTurn(PhoneAddressIn(bytes, size)) ||
                HasRoom(path, packet, m_room.strangers)) {
                taken.push_back(std::move(packet));
            }
        }
    }
    if (!hasLong && !tooShort.empty() && HasRoom(path, tooShort, m_room.tooShort)) {
        taken.push_back(std::move(tooShort));
    }
}

void Hearing::Refill() {
    const gint64 nowUs = g_get_monotonic_time();
    if (nowUs - m_room.startUs < G_USEC_PER_SEC) {
        return;
    }
    m_room = {nowUs, kTooShort, kStrangers, {}};
    for (const std::string& path : m_mirror.BondedDevices(m_adapter)) {
        m_room.bonded.insert(m_mirror.FindDevice(path)->address);
    }
    if (m_taken.size() > kMostTaken) {
        m_taken.clear();
    }
}

bool Hearing::IsBondedOnesTurn(const std::string& address) {
    return m_room.bonded.erase(address) != 0;
}

bool Hearing::HasRoom(const std::string& path, const Packet& packet, int& room) {
    std::string key = path + '/' + std::string(packet.begin(), packet.end());
    if (m_taken.count(key) != 0) {
        return false;
    }
    if (room == 0) {
        if (!std::exchange(m_isFloodTold, true)) {
            PLATFORM_WARN(
                "a flood of advertisements: at most %d in a second are looked at, and "
                "those of bonded phones",
                kTooShort + kStrangers);
        }
        return false;
    }
    --room;
    m_taken.insert(std::move(key));
    return true;
}

}  // namespace Bluez
