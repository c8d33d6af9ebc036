// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <csignal>

#include "common/CHandle.h"
#include "tests/e2e/Bench.h"

// A computer that stands in for a phone.

namespace {

class Beacon : public Bench {
protected:
    [[nodiscard]] bool IsDiscoverable() const {
        const GVariantPtr reply(g_dbus_connection_call_sync(
            Connection(), "org.bluez", "/org/bluez/hci0", "org.freedesktop.DBus.Properties", "Get",
            g_variant_new("(ss)", "org.bluez.Adapter1", "Discoverable"), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        return GStringPtr(g_variant_print(reply.get(), FALSE)).get() == std::string("(<true>,)");
    }
};

TEST_F(Beacon, SendsTheAddressTellsWhoConnectsAndLeavesNothingBehind) {
    StartSimulator(std::string(kAlicePhone) + "connects-by-itself-after-ms=1\n");
    AwaitEvent("phone Alice: connected");
    std::vector<std::string> said;
    std::optional<std::string> end;
    std::string error;
    const auto beacon = ScenarioRunner::ChildProcess::Start(
        {{BIN_DIR "/phone-beacon", "--pairable", "--address", "a0:11:22:33:44:02"}, {}},
        {[&said](const std::string& line) { said.push_back(line); }, nullptr,
         [&end](const std::string& how) { end = how; }},
        error);
    AwaitEvent("adapter: advertises 65535:00000000000000A011223344020000");
    EXPECT_TRUE(AwaitThat([&said] { return !said.empty(); }));
    EXPECT_TRUE(IsDiscoverable());
    GVariantPtr(g_dbus_connection_call_sync(
        Connection(), "org.bluez", "/org/bluez/hci0/dev_A0_11_22_33_44_01", "org.bluez.Device1",
        "Disconnect", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    EXPECT_TRUE(AwaitThat([&said] { return said.size() >= 2; }));
    EXPECT_THAT(said, testing::ElementsAre(std::string("hci0 advertises ") + kBen,
                                           std::string(kAlice) + " left"));
    beacon->Signal(SIGINT);
    AwaitEvent("adapter: advertises no more");
    EXPECT_TRUE(AwaitThat([&end] { return end.has_value(); }));
    EXPECT_EQ(end, "");
    EXPECT_FALSE(IsDiscoverable());
    EXPECT_THAT(Run("phone-beacon", {"--adapter", "hci7"}, "status 1"),
                testing::ElementsAre("phone-beacon: hci7 is not there"));
}

}  // namespace
