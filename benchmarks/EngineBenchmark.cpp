// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "common/AdvertisingData.h"
#include "platform/config_store.h"
#include "platform/linux/base/PlatformLog.h"

// What the registered list and an advertisement cost, and how that grows, without the log and
// without the storing of the list.

extern "C" {
int __real_vconf_set_str(const char* key, const char* value);
int __wrap_vconf_set_str(const char* /*key*/, const char* /*value*/) {
    return 0;
}
}

namespace {

// The root folder of this process, in memory if possible, and no log.
struct Host {
    Host() {
        std::error_code error;
        folder = std::filesystem::is_directory("/dev/shm", error) ? "/dev/shm" : "/tmp";
        folder += "/engine-benchmark-XXXXXX";
        if (mkdtemp(folder.data()) == nullptr || setenv("TV_ROOT", folder.c_str(), 1) != 0) {
            std::abort();
        }
        Platform::SetLogThreshold(DLOG_ERROR + 1);
    }
    ~Host() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string folder;
} const theHost;

std::string Address(int i) {
    char text[18];
    std::snprintf(text, sizeof text, "A0:00:00:%02X:%02X:%02X", (i >> 16) & 0xFF, (i >> 8) & 0xFF,
                  i & 0xFF);
    return text;
}

// A TV with that many qualifying phones.
void RegisterPhones(int count) {
    std::string settings = "[";
    std::string masks;
    for (int i = 0; i < count; ++i) {
        settings += (i == 0 ? "" : ",") + std::string("{\"address\":\"") + Address(i) +
                    "\",\"value\":\"Y\"}";
        masks += MobileList::GetXorMac(Address(i)) + ",";
    }
    __real_vconf_set_str("db/nirvo/musictv_paired3", (settings + "]").c_str());
    __real_vconf_set_str("db/org.orlix.bleapp/added_mobile_keylist", masks.c_str());
}

void BM_RebuildList(benchmark::State& state) {
    RegisterPhones(static_cast<int>(state.range(0)));
    MobileList list;
    for (auto _ : state) {
        list.UpdateList();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_RebuildList)->RangeMultiplier(4)->Range(16, 4096)->Complexity();

void BM_LookUpStranger(benchmark::State& state) {
    RegisterPhones(static_cast<int>(state.range(0)));
    const MobileList list;
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
