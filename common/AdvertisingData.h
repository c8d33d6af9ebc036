// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Address.h"

// Advertising-data structures as a Bluetooth LE packet carries them: one byte of length, which
// counts what follows, one byte of type, then the content (Bluetooth Core Specification, Vol 3,
// Part C, 11). Any device may send them, so a length may be wrong and a structure may end outside
// the packet.

// A manufacturer-specific structure: the company identifier and the bytes after it, which may be
// none. `data` points into the packet that was searched.
struct ManufacturerData {
    std::uint16_t company;
    const std::uint8_t* data;
    std::size_t size;
};

constexpr std::uint8_t kManufacturerDataType = 0xFF;
// Type and company identifier, the part of a structure's length that is not content.
constexpr std::size_t kManufacturerHeaderSize = 3;
// A packet of extended advertising data has 255 bytes, one of which is its one structure's length.
constexpr std::size_t kMaxManufacturerContent = 255 - 1 - kManufacturerHeaderSize;

// How a phone identifies itself in such content, which then has at least kPhoneDataSize bytes: by
// its Bluetooth address, most significant byte first.
constexpr std::size_t kPhoneDataSize = 15;
constexpr std::size_t kPhoneAddressStart = 7;
constexpr std::size_t kPhoneAddressSize = 6;
// That address in upper case; empty when the content is too short to name a phone.
inline std::string PhoneAddressIn(const std::uint8_t* content, std::size_t size) {
    return size < kPhoneDataSize ? "" : FormatAddress(content + kPhoneAddressStart);
}

// A company identifier that no company has.
constexpr std::uint16_t kNoCompany = 0xFFFF;

// Such content for the phone with that address; its other bytes are 0.
inline std::vector<std::uint8_t> MakePhoneContent(const std::string& address) {
    std::vector<std::uint8_t> content(kPhoneDataSize, 0);
    const AddressBytes bytes = ParseAddressBytes(address);
    std::copy(bytes.begin(), bytes.end(), content.begin() + kPhoneAddressStart);
    return content;
}

// The first manufacturer-specific structure that is complete within the `size` bytes at `packet`
// (NULL when size is 0). A length of 0 ends the data early: the rest is padding.
inline std::optional<ManufacturerData> FindManufacturerData(const std::uint8_t* packet,
                                                            std::size_t size) {
    std::size_t at = 0;
    while (at < size && packet[at] != 0) {
        const std::size_t length = packet[at];
        if (length > size - at - 1) {
            return std::nullopt;
        }
        const std::uint8_t* structure = packet + at + 1;
        if (structure[0] == kManufacturerDataType && length >= kManufacturerHeaderSize) {
            const auto company = static_cast<std::uint16_t>(structure[1] | (structure[2] << 8));
            return ManufacturerData{company, structure + kManufacturerHeaderSize,
                                    length - kManufacturerHeaderSize};
        }
        at += 1 + length;
    }
    return std::nullopt;
}

// A packet that holds one manufacturer-specific structure. Empty when `size` is more than
// kMaxManufacturerContent.
inline std::vector<std::uint8_t> MakeManufacturerPacket(std::uint16_t company,
                                                        const std::uint8_t* data,
                                                        std::size_t size) {
    std::vector<std::uint8_t> packet;
    if (size > kMaxManufacturerContent) {
        return packet;
    }
    packet.reserve(1 + kManufacturerHeaderSize + size);
    packet.push_back(static_cast<std::uint8_t>(kManufacturerHeaderSize + size));
    packet.push_back(kManufacturerDataType);
    packet.push_back(static_cast<std::uint8_t>(company & 0xFF));
    packet.push_back(static_cast<std::uint8_t>(company >> 8));
    packet.insert(packet.end(), data, data + size);
    return packet;
}
