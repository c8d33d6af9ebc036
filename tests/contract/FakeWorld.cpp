// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include "common/AdvertisingData.h"
#include "tests/contract/World.h"
#include "tests/fake_platform/FakePlatform.h"

namespace {

class FakeWorld : public World {
public:
    FakeWorld() {
        Fake::Reset();
        Fake::HoldEvents(true);
        m_tv.adapterOn = false;
        m_tv.applications[kPlayer] = {};
        m_tv.features = {{"tv/flag", true}, {"tv/number", 7}, {"tv/text", std::string("seven")}};
    }
    ~FakeWorld() override { EXPECT_THAT(Fake::Leftovers(), testing::IsEmpty()); }

    bool Await(const Condition& condition) override {
        // Far more rounds than any chain of events is long, and time for another thread.
        for (int i = 0; i < 10000; ++i, Settle()) {
            if (condition()) {
                return true;
            }
            usleep(i < 100 ? 0 : 1000);
        }
        return false;
    }
    void Settle() override {
        Fake::RunPending();
        const bool runs = m_tv.applications[kPlayer].running;
        Fake::FinishLaunch(runs ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_APP_NOT_FOUND);
        for (const Phone& phone : kPhones) {
            const bool isUp = m_tv.adapterOn && phone.answer == Answer::kYes;
            Fake::FinishConnect(phone.address, isUp ? BT_ERROR_NONE : BT_ERROR_TIMED_OUT);
        }
    }
    void SetRaised(const std::string& /*event*/, bool raised) override {
        Fake::HoldEvents(!raised);
    }
    void StartPlayer() override { m_tv.applications[kPlayer].running = true; }
    void TurnOn() override {
        m_tv.adapterOn = true;
        for (const Phone& phone : kPhones) {
            if (phone.name != nullptr) {
                const std::string name = phone.name;
                Fake::Device& device = m_tv.devices[phone.address];
                device.name = name.empty() ? std::nullopt : std::optional(name);
                device.deviceClass = {4, 24};
                device.vendor = kVendor;
                device.product = kProduct;
            }
        }
    }
    void TurnOff() override {
        m_tv.adapterOn = false;
        if (Fake::Scanning()) {
            Fake::BreakScan(BT_ERROR_NOT_ENABLED);
        }
    }
    bool AddAdapter() override { return false; }
    bool Advertise(const ManufacturerEntries& entries) override {
        const bool isHeard = Fake::Scanning();
        for (const auto& [company, bytes] : entries) {
            Fake::Hear(MakeManufacturerPacket(company, bytes.data(), bytes.size()));
        }
        return isHeard;
    }
    void SetConnected(const Phone& phone, bool connected) override {
        m_tv.devices[phone.address].connected = connected;
        Fake::ConnectionEvent(BT_ERROR_NONE, connected, phone.address.c_str());
    }

private:
    Fake::World& m_tv = Fake::TheWorld();
};

}  // namespace

std::unique_ptr<World> MakeWorld() {
    return std::make_unique<FakeWorld>();
}
