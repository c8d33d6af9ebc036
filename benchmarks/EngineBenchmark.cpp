// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>

#include <cstdio>

#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "common/AdvertisingData.h"
#include "tests/fake_platform/FakePlatform.h"

// What the registered list and an advertisement cost, and how that grows. Compare the rows of one
// run; the absolute times include the fake platform's record of each log line.

namespace {

std::string Address(int i) {
    char text[18];
    std::snprintf(text, sizeof text, "A0:00:00:%02X:%02X:%02X", (i >> 16) & 0xFF, (i >> 8) & 0xFF,
                  i & 0xFF);
    return text;
}

// A TV with that many qualifying phones.
void RegisterPhones(int count) {
    Fake::Reset();
    std::string settings = "[";
    std::string masks;
    for (int i = 0; i < count; ++i) {
        settings += (i == 0 ? "" : ",") + std::string("{\"address\":\"") + Address(i) +
                    "\",\"value\":\"Y\"}";
        masks += MobileList::GetXorMac(Address(i)) + ",";
    }
    Fake::TheWorld().keys["db/nirvo/musictv_paired3"] = settings + "]";
    Fake::TheWorld().keys["db/org.orlix.bleapp/added_mobile_keylist"] = masks;
    Fake::ClearRecord();
}

void BM_RebuildList(benchmark::State& state) {
    RegisterPhones(static_cast<int>(state.range(0)));
    MobileList list;
    for (auto _ : state) {
        list.UpdateList();
        state.PauseTiming();
        Fake::ClearRecord();
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_RebuildList)->RangeMultiplier(4)->Range(16, 4096)->Complexity();

void BM_LookUpStranger(benchmark::State& state) {
    RegisterPhones(static_cast<int>(state.range(0)));
    const MobileList list;
    Fake::ClearRecord();
    const std::string stranger = "B0:00:00:00:00:01";
    for (auto _ : state) {
        benchmark::DoNotOptimize(list.Exist(stranger));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LookUpStranger)->RangeMultiplier(16)->Range(16, 4096)->Complexity();

// An advertisement with that many other structures in front of the manufacturer's.
void BM_FindManufacturerData(benchmark::State& state) {
    std::vector<std::uint8_t> packet;
    for (int i = 0; i < state.range(0); ++i) {
        packet.insert(packet.end(), {2, 0x01, 0x06});
    }
    const std::uint8_t content[16] = {};
    const auto last = MakeManufacturerPacket(0xFFFF, content, sizeof content);
    packet.insert(packet.end(), last.begin(), last.end());
    for (auto _ : state) {
        benchmark::DoNotOptimize(FindManufacturerData(packet.data(), packet.size()));
    }
}
BENCHMARK(BM_FindManufacturerData)->Arg(0)->Arg(3)->Arg(70);

}  // namespace
