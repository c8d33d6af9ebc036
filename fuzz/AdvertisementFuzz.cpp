// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"
#include "common/AdvertisingData.h"
#include "fuzz/Check.h"
#include "tests/Phones.h"
#include "tests/recorder/Recorder.h"
#include "tests/recorder/Tv.h"

// Advertisements heard one after the other during a scan: each a byte of length and the packet.

namespace {

using Bytes = std::vector<unsigned char>;

constexpr const char* kPhone = "A0:B1:C2:D3:E4:F5";
const Bytes kPhoneBytes = {0xA0, 0xB1, 0xC2, 0xD3, 0xE4, 0xF5};

// The same one for each input.
void StartWorld() {
    Tv::Reset();
    Tv::SetState("ambient_mode", 1);
    Tv::SetState("ambient_type", 1);
    TvSim::PhonePlan phone = Tv::QuietPhone(kPhone);
    phone.connect.kind = TvSim::ConnectAnswer::Kind::kNever;
    Tv::StartBluez({phone});
    Register({kPhone});
}

// What is found lies within the packet, and makes a packet in which it is found again.
void CheckParser(const Bytes& packet) {
    const auto found = FindManufacturerData(packet.data(), packet.size());
    if (!found) {
        return;
    }
    Check(found->data + found->size <= packet.data() + packet.size(), "the data is the packet's");
    const auto made = MakeManufacturerPacket(found->company, found->data, found->size);
    Check(made.empty() == (found->size > kMaxManufacturerContent), "what fits makes a packet");
    const auto again = FindManufacturerData(made.data(), made.size());
    Check(made.empty() || (again && again->company == found->company &&
                           std::equal(found->data, found->data + found->size, again->data,
                                      again->data + again->size)),
          "the packet says the same");
}

// Whether the scan goes on. A phone is connected by an advertisement that carries its address, and
// by no other.
bool CheckEngine(CBtAutoConnect& engine, const Bytes& packet) {
    const auto found = FindManufacturerData(packet.data(), packet.size());
    const bool names = found && found->size >= 15 &&
                       std::equal(kPhoneBytes.begin(), kPhoneBytes.end(), found->data + 7);
    Recorder::ClearRecord();
    Hear(CBtAutoConnect::OnLeScanResult, packet, &engine);
    Check(Recorder::Calls("bt_audio_connect").size() == (names ? 1U : 0U),
          "the phone that is named is connected");
    return !names;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isStarted = (StartWorld(), true);
    static_cast<void>(isStarted);
    bool isScanning = true;
    {
        CBtAutoConnect engine;
        engine.StartAutoConnect();
        for (std::size_t at = 0; at < size && isScanning;) {
            const std::size_t length = std::min<std::size_t>(data[at], size - at - 1);
            const Bytes packet(data + at + 1, data + at + 1 + length);
            CheckParser(packet);
            isScanning = CheckEngine(engine, packet);
            at += 1 + length;
        }
        engine.StopLEScan();
    }
    Tv::RunPending();
    if (!isScanning) {
        Tv::Advance(15000);  // until the attempt to connect has ended
    }
    const auto leftovers = Recorder::Leftovers();
    Check(leftovers.empty(), "nothing is left on the platform",
          leftovers.empty() ? "" : leftovers[0]);
    // What is kept would look like a leak.
    Recorder::Reset();
    return 0;
}
