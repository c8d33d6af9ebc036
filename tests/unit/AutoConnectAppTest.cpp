// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <deque>
#include <functional>

#include "autoconnect/src/AutoConnectApp.h"
#include "autoconnect/src/DbusInterface.h"
#include "common/CHandle.h"
#include "tests/unit/Phones.h"
#include "tests/unit/PlatformTest.h"

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

const std::string kBlockKey = "memory/bluetooth_nirvoui/musictvfail";
const std::string kPlus = "I service OnPrePareAndDoAutoConnect: +";
const std::string kWindow = "I service PrepareZemiAutoConnection: SetWakupTime for btautoconnect";

// The one instance of the process lives from the first of these tests to the end.
class AutoConnectAppTest : public ::testing::Test {
protected:
    AutoConnectAppTest() {
        Fake::Reset();
        auto& world = Fake::TheWorld();
        world.features["com.velmora/featureconf/display_rotator_supported"] = true;
        world.ambientMode = 1;
        world.ambientType = 1;
        world.devices = {{kA, {}}};
        Register({kA});
        Send(kMobileUpdateCommand, g_variant_new("(s)", Command("Y").c_str()));
        Fake::RunPending();
        Fake::ClearRecord();
    }
    ~AutoConnectAppTest() override {
        Fake::Advance(60000);
        EXPECT_THAT(Fake::Leftovers(), Each(StartsWith("watch on ")));
    }

    static std::string Command(const std::string& value) {
        return R"({"btMac":")" + kA + R"(","value":")" + value + R"("})";
    }
    void Send(const std::string& name, GVariant* parameters = g_variant_new("()")) {
        const GVariantPtr owned(g_variant_ref_sink(parameters));
        app.HandleDbusMessage(name, owned.get());
    }

    AutoConnectApp& app = AutoConnectApp::GetInstance();
};

TEST_F(AutoConnectAppTest, WakeUpStartsAnAttempt) {
    Send(kPrepareCommand, g_variant_new("(i)", 5));
    EXPECT_THAT(
        Fake::TakeStory("service"),
        ElementsAre(kPlus, kWindow, "g_timeout_add(10000)",
                    "W service IsWakeUpTime: Turn On TV : 1",
                    "I service DoZemiAutoConnection: Start ZEMI bluetooth auto connection",
                    "I service IsValidCondition: Ambient mode",
                    "I service StartAutoConnect: auto connection devices : " + kA + ", ",
                    "bt_adapter_le_start_scan()",
                    "I service StartLEScan: Start LE scan : ERROR_NONE", "g_timeout_add(5000)"));
    Fake::Advance(60000);
    Fake::TheWorld().adapterOn = false;
    Fake::ClearRecord();
    Send(kPrepareCommand);
    EXPECT_THAT(Fake::Story("service"), ElementsAre(kPlus, kWindow, "g_timeout_add(10000)"));
}

TEST_F(AutoConnectAppTest, RefusesOtherWakeUps) {
    struct Case {
        bool zemi;
        int reason;
        std::optional<Fake::Value> block;
        Texts lines;  // of each of the two steps
    };
    const Texts condition = {"W service CheckZemiAutoConnectCondition: Not support power reason",
                             "I service %s: This is not zemi auto connect condition"};
    const Case cases[] = {
        {false, 0, {}, {"I service %s: Not the zemi tv"}},
        {true, 41, {}, condition},
        {true, 94, 0, condition},
        {true, 95, {}, condition},
        {true, 0, 1, condition},
        {true, 93, {}, {}},
        {true, 96, 2, {}},
        {true, 0, std::string("1"), {}},  // of another type, so not read
    };
    for (const Case& c : cases) {
        Fake::TheWorld().features["com.velmora/featureconf/display_rotator_supported"] = c.zemi;
        Fake::TheWorld().wakeUpReason = c.reason;
        Fake::WriteKey(kBlockKey, c.block);
        for (const bool adapterOn : {true, false}) {
            Fake::TheWorld().adapterOn = adapterOn;
            Fake::ClearRecord();
            Send(kPrepareCommand);
            const Texts story = Fake::TakeStory("service");
            if (c.lines.empty()) {
                EXPECT_THAT(story, Contains(kWindow)) << c.reason;
                EXPECT_EQ(Fake::Scanning(), adapterOn);
                Fake::Advance(60000);
                continue;
            }
            Texts expected = {kPlus};
            for (const char* step : {"PrepareZemiAutoConnection", "DoZemiAutoConnection"}) {
                for (std::string line : c.lines) {
                    const std::size_t at = line.find("%s");
                    expected.push_back(at == std::string::npos ? line : line.replace(at, 2, step));
                }
                if (!adapterOn) {
                    break;
                }
            }
            EXPECT_EQ(story, expected) << c.reason;
        }
    }
}

TEST_F(AutoConnectAppTest, MobileUpdateReachesTheList) {
    Send(kMobileUpdateCommand, g_variant_new("(s)", Command("N").c_str()));
    EXPECT_EQ(Fake::TextKey(kSettingsKey), Settings({{kA, "N"}}));
    EXPECT_EQ(Fake::TakeStory("service").front(), "I service OnAutoConMobileUpdate: +");
    Fake::TheWorld().features.clear();
    Send(kMobileUpdateCommand, g_variant_new("(s)", Command("Y").c_str()));
    EXPECT_THAT(Fake::TakeStory("service"), ElementsAre("I service OnAutoConMobileUpdate: +"));
}

TEST_F(AutoConnectAppTest, MobileUpdateOfAnotherTypeIsOneError) {
    GVariant* others[] = {g_variant_new("()"), g_variant_new("(i)", 5),
                          g_variant_new("(ss)", "a", "b"), g_variant_new("(as)", nullptr),
                          g_variant_new_string("a")};
    for (GVariant* parameters : others) {
        Send(kMobileUpdateCommand, parameters);
        EXPECT_THAT(Fake::TakeStory(),
                    ElementsAre(StartsWith("E service OnAutoConMobileUpdate: ")));
    }
}

TEST_F(AutoConnectAppTest, StopBeforeTheStartDoesNothing) {
    app.CloseMainLoop();
    Send("Unknown");
    Send("prepareanddoautoconnect");
    EXPECT_THAT(Fake::Story(), ElementsAre());
    EXPECT_TRUE(Fake::WaitFor("IN >> [void AutoConnectApp::CloseMainLoop()", 3));
}

// Reads the record behind the last of the instance, in a process that does nothing else.
TEST(AutoConnectAppDeathTest, TracesItsEnd) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            std::atexit([] {
                std::fprintf(stderr, "%zu\n", Fake::Calls("vconf_ignore").size());
                for (const Fake::LogLine& line : Fake::Log()) {
                    std::fprintf(stderr, "%s\n", Fake::Text(line).c_str());
                }
            });
            AutoConnectApp::GetInstance();
            std::exit(0);
        },
        ::testing::ExitedWithCode(0),
        "^2\n(.*\n)*D service ApiTracker: IN >> .AutoConnectApp::~AutoConnectApp...30..\n"
        "(.*\n)*D service ~ApiTracker: OUT << .AutoConnectApp::~AutoConnectApp...30..\n");
}

// The service on a bus of its own, and a client. One run only: the service's loop and its
// subscriptions last as long as the process.
class OnTheBus : public AutoConnectAppTest {
protected:
    OnTheBus() {
        // Not GTestDBus: it forks this process, and the fork lacks its threads.
        m_bus.reset(
            g_subprocess_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                           G_SUBPROCESS_FLAGS_STDERR_SILENCE),
                             nullptr, "dbus-daemon", "--session", "--nofork", "--nopidfile",
                             "--print-address=1", nullptr));
        const GObjectPtr<GDataInputStream> output(
            g_data_input_stream_new(g_subprocess_get_stdout_pipe(m_bus.get())));
        const GStringPtr line(
            g_data_input_stream_read_line(output.get(), nullptr, nullptr, nullptr));
        const char* address = line.get();
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address, 1);
        m_client.reset(g_dbus_connection_new_for_address_sync(
            address,
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr));
        m_watchdog = g_timeout_add_seconds(
            20,
            [](gpointer) -> gboolean {
                ADD_FAILURE() << "the service does not stop";
                AutoConnectApp::GetInstance().CloseMainLoop();
                return G_SOURCE_CONTINUE;
            },
            nullptr);
    }
    ~OnTheBus() override {
        g_source_remove(m_watchdog);
        // The library would end the process with the bus.
        const GObjectPtr<GDBusConnection> shared(
            g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
        g_dbus_connection_set_exit_on_close(shared.get(), FALSE);
        m_client.reset();
        g_subprocess_force_exit(m_bus.get());
        g_subprocess_wait(m_bus.get(), nullptr, nullptr);
        unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    }

    void Emit(const char* path, const char* name, GVariant* parameters = nullptr) {
        g_dbus_connection_emit_signal(m_client.get(), nullptr, path, kInterfaceName, name,
                                      parameters, nullptr);
    }
    // The answer of the bus itself or of the service, whose object and interface have its name.
    [[nodiscard]] GVariantPtr Ask(const char* name, const char* method, GVariant* parameters) {
        const char* path =
            name == std::string(kServiceName) ? kObjectPath : "/org/freedesktop/DBus";
        return GVariantPtr(g_dbus_connection_call_sync(m_client.get(), name, path, name, method,
                                                       parameters, nullptr, G_DBUS_CALL_FLAGS_NONE,
                                                       1000, nullptr, nullptr));
    }
    static bool Logged(const std::string& text) {
        const std::vector<Fake::LogLine> log = Fake::Log();
        return std::any_of(log.begin(), log.end(), [&](const Fake::LogLine& line) {
            return line.message.find(text) != std::string::npos;
        });
    }
    // Runs the service; each step is taken once its cue is in the log.
    using Steps = std::deque<std::pair<std::string, std::function<void()>>>;
    void Run(Steps steps) {
        const guint source = g_idle_add(
            [](gpointer data) -> gboolean {
                auto* left = static_cast<Steps*>(data);
                if (!left->empty() && Logged(left->front().first)) {
                    left->front().second();
                    left->pop_front();
                }
                return G_SOURCE_CONTINUE;
            },
            &steps);
        app.StartMainLoop();
        g_source_remove(source);
        EXPECT_TRUE(steps.empty());
    }

    GObjectPtr<GSubprocess> m_bus;
    GObjectPtr<GDBusConnection> m_client;
    guint m_watchdog = 0;
};

TEST_F(OnTheBus, ServesSignalsUntilAnUnknownOne) {
    // At first another has the name, for which the service waits; signals reach it nevertheless.
    ASSERT_TRUE(
        Ask("org.freedesktop.DBus", "RequestName", g_variant_new("(su)", kServiceName, 0U)));
    const std::string waiting = "OUT << [static void AutoConnectApp::OnNameLost";
    Run({{waiting,
          [this] {
              Emit("/com/velmora/tv/bt/other", "UpdateList");
              Emit(kObjectPath, kMobileUpdateCommand, g_variant_new("(s)", Command("N").c_str()));
          }},
         {"AutoConMobileUpdate recieved",
          [this] {
              EXPECT_TRUE(
                  Ask("org.freedesktop.DBus", "ReleaseName", g_variant_new("(s)", kServiceName)));
          }},
         {"Name acquired", [this] {
              EXPECT_FALSE(Ask(kServiceName, kPrepareCommand, nullptr));
              Emit(kObjectPath, kMobileUpdateCommand, g_variant_new("(i)", 5));
              Fake::ConnectionEvent(BT_ERROR_NONE, true, kB.c_str());
              Emit(kObjectPath, "UpdateList");
          }}});
    EXPECT_EQ(Fake::TextKey(kSettingsKey), Settings({{kA, "N"}}));
    EXPECT_TRUE(Logged("IN >> [void AutoConnectApp::InitDbus()(59)]"));
    const Texts story = Fake::Story("service");
    ASSERT_GE(story.size(), 4U);
    EXPECT_THAT(story[0], StartsWith("I service OnBusAcquired: pThis->m_IntrospectionData:0x"));
    EXPECT_THAT(story[1], StartsWith("I service OnBusAcquired: pThis->m_IntrospectionData->path:"));
    EXPECT_EQ(story[2], std::string("I service OnBusAcquired: pThis->m_IntrospectionData->"
                                    "interfaces[0]:") +
                            kInterfaceName);
    EXPECT_EQ(story[3], "I service OnSiganl: AutoConMobileUpdate recieved");
    EXPECT_EQ(story.back(), "I service OnSiganl: UpdateList recieved");
    EXPECT_THAT(
        story,
        AllOf(Contains(std::string("I service OnNameAcquired: Name acquired ") + kServiceName),
              Contains("I service OnAudioSinkConnected: result : 0, address : " + kB),
              Not(Contains(kPlus)), Not(Contains(HasSubstr("methodName")))));
    const GVariantPtr owned =
        Ask("org.freedesktop.DBus", "NameHasOwner", g_variant_new("(s)", kServiceName));
    gboolean hasOwner = TRUE;
    g_variant_get(owned.get(), "(b)", &hasOwner);
    EXPECT_FALSE(hasOwner);
}

}  // namespace
