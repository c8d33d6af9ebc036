// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>

#include "platform/linux/application/LaunchReceiver.h"
#include "tests/TestBus.h"
#include "tests/contract/World.h"
#include "tools/tv-sim/Simulator.h"

namespace {

// The root folder and the system bus of this process, which the platform looks up once.
struct Host : TestBus {
    static Host& Get() {
        static Host host;
        return host;
    }
    Host() : TestBus("/bin/true"), connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr)) {
        std::filesystem::create_directories(folder.Root() + "/etc/tv-platform");
        std::ofstream(folder.Root() + "/etc/tv-platform/features.conf")
            << "[tv]\nflag=true\nnumber=7\ntext=seven\n";
    }

    GObjectPtr<GDBusConnection> connection;
};

TvSim::PhonePlan PlanOf(const Phone& phone) {
    TvSim::PhonePlan plan = TvSim::MakePhone(phone.address, phone.address);
    plan.bonded = phone.name != nullptr;
    plan.name = plan.bonded ? phone.name : "";
    plan.deviceClass = 0x240418;
    plan.modalias = "usb:v04E8p9000d0100";
    plan.advertises = false;
    if (phone.answer == Answer::kNo) {
        plan.connect = {TvSim::ConnectAnswer::Kind::kRefuse, "org.bluez.Error.Failed", "refused"};
    } else if (phone.answer == Answer::kNone) {
        plan.connect.kind = TvSim::ConnectAnswer::Kind::kNever;
    }
    return plan;
}

// What the second adapter has to tell, in this order; the phone is kPhones[2].
constexpr const char* kOtherAdaptersObjects[] = {
    "(objectpath '/org/bluez/hci1', {'org.bluez.Adapter1': {'Powered': <true>}})",
    "(objectpath '/org/bluez/hci1/dev_A0_00_00_00_00_0C', {'org.bluez.Device1': "
    "{'Address': <'A0:00:00:00:00:0C'>, 'Paired': <true>, 'Bonded': <true>, 'Connected': <true>, "
    "'RSSI': <int16 -60>, 'ManufacturerData': <{uint16 5: <b'too long to be left out'>}>}})",
    "(objectpath '/org/bluez/hci1/dev_A0_00_00_00_00_0C/fd0', {'org.bluez.MediaTransport1': "
    "{'Device': <objectpath '/org/bluez/hci1/dev_A0_00_00_00_00_0C'>, "
    "'UUID': <'0000110b-0000-1000-8000-00805f9b34fb'>}})"};

class LinuxWorld : public World {
public:
    ~LinuxWorld() override {
        m_simulator.reset();
        Settle();
    }

    bool Await(const Condition& condition) override { return AwaitThat(condition); }
    // What was sent before a question is there before its answer; three times, because one thing
    // leads to another.
    void Settle() final {
        GDBusConnection* bus = m_host.connection.get();
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(GVariantPtr(g_dbus_connection_call_sync(
                bus, g_dbus_connection_get_unique_name(bus), "/", "org.freedesktop.DBus.Peer",
                "Ping", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, kDeadlineMs, nullptr, nullptr)));
            while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
            }
        }
    }
    void SetRaised(const std::string& event, bool raised) override {
        const std::string file = m_host.folder.Root() + "/run/tv-platform" + event;
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        EXPECT_TRUE(raised ? std::ofstream(file).is_open() : std::filesystem::remove(file));
    }
    void StartPlayer() override {
        m_player.emplace(
            kPlayer, [](const Platform::Launch&) {}, nullptr);
        EXPECT_TRUE(AwaitThat([] { return Platform::IsRunning(kPlayer) == true; }));
    }
    void TurnOn() override {
        if (m_simulator == nullptr) {
            TvSim::Scenario scenario;
            scenario.faults.silentMethods = {"Disconnect"};
            for (const Phone& phone : kPhones) {
                scenario.phones.push_back(PlanOf(phone));
            }
            m_simulator = std::make_unique<TvSim::Simulator>(scenario, m_host.connection.get());
        }
        m_simulator->SetAdapterPowered(TvSim::Which::kFirst, true);
        bt_adapter_state_e state = BT_ADAPTER_DISABLED;
        EXPECT_TRUE(AwaitThat(
            [&] { return bt_adapter_get_state(&state) == 0 && state == BT_ADAPTER_ENABLED; }));
        Settle();
    }
    void TurnOff() override { m_simulator->SetAdapterPowered(TvSim::Which::kFirst, false); }
    bool AddAdapter() override {
        for (const char* object : kOtherAdaptersObjects) {
            EXPECT_TRUE(g_dbus_connection_emit_signal(
                m_host.connection.get(), nullptr, "/", "org.freedesktop.DBus.ObjectManager",
                "InterfacesAdded", g_variant_new_parsed(object), nullptr));
        }
        Settle();
        return true;
    }
    bool Advertise(const ManufacturerEntries& entries) override {
        return m_simulator->Advertise({"5E:00:00:00:00:01", true, true, -60, entries});
    }
    bool AdvertiseIdentity(const Phone& phone) override {
        return m_simulator->Advertise({phone.address, false, true, -60, {}});
    }
    void SetConnected(const Phone& phone, bool connected) override {
        TvSim::Phone* simulated = m_simulator->FindPhone(phone.address);
        connected ? static_cast<void>(simulated->ConnectByItself()) : simulated->Disconnect();
    }

private:
    Host& m_host = Host::Get();
    std::optional<Platform::LaunchReceiver> m_player;
    std::unique_ptr<TvSim::Simulator> m_simulator;
};

}  // namespace

std::unique_ptr<World> MakeWorld() {
    return std::make_unique<LinuxWorld>();
}
