// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/Bench.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <utility>

#include "common/Source.h"
#include "platform/linux/application/ApplicationBus.h"

using ScenarioRunner::ChildProcess;

namespace {

// For the slowest machine under the slowest sanitizer; nothing on the way comes near it.
constexpr int kDeadlineMs = 60000;

void Check(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

}  // namespace

Bench::Bench(std::string mediaPlayer) {
    if (mediaPlayer.find('/') == std::string::npos) {
        mediaPlayer = std::string(BIN_DIR) + "/" + mediaPlayer;
    }
    std::string error;
    auto workspace = ScenarioRunner::Workspace::Make(mediaPlayer, error);
    Check(workspace.has_value(), error);
    m_workspace.emplace(std::move(*workspace));
    // For what the test itself writes through the platform.
    setenv("TV_ROOT", Root().c_str(), 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", m_workspace->BusAddress().c_str(), 1);
    bool isUp = false;
    m_bus = Start("dbus-daemon",
                  {"--config-file=" + m_workspace->BusConfiguration(), "--nofork", "--nopidfile",
                   "--print-address=1"},
                  {[&isUp](const std::string&) { isUp = true; },
                   [this](const std::string& line) { m_playerLog.all.push_back(line); }, nullptr});
    Check(AwaitThat([&isUp] { return isUp; }), "no bus");
    GErrorPtr failure;
    m_connection.reset(g_dbus_connection_new_for_address_sync(
        m_workspace->BusAddress().c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, Out(failure)));
    Check(m_connection != nullptr, "the bus cannot be reached");
}

Bench::~Bench() {
    if (HasFailure()) {
        ShowLogs();
    }
    m_service.reset();
    m_simulator.reset();
    m_bus.reset();
}

Bench::ChildPtr Bench::Start(const std::string& program, std::vector<std::string> arguments,
                             ChildProcess::Handlers handlers) {
    arguments.insert(arguments.begin(), program);
    std::string error;
    ChildPtr child = ChildProcess::Start({std::move(arguments), {}}, std::move(handlers), error);
    Check(child != nullptr, program + ": " + error);
    return child;
}

void Bench::StartSimulator(const std::string& scenario) {
    const std::string file = m_workspace->Path() + "/scenario.ini";
    Check(g_file_set_contents(file.c_str(), scenario.c_str(), -1, nullptr) != FALSE, file);
    m_simulator = Start(
        std::string(BIN_DIR) + "/tv-sim", {"--scenario", file},
        {[this](const std::string& line) { m_events.all.push_back(line); }, nullptr, nullptr});
    m_isSimulated = true;
    AwaitEvent("bus: name org.bluez acquired");
    if (scenario.find("[adapter]") == std::string::npos) {
        AwaitEvent("adapter: powered on");
    }
}

std::unique_ptr<TvSim::Simulator> Bench::Simulate(TvSim::Scenario scenario) {
    auto simulator =
        std::make_unique<TvSim::Simulator>(std::move(scenario), m_connection.get(),
                                           [this](const std::string& who, const std::string& what) {
                                               m_events.all.push_back(who + ": " + what);
                                           });
    m_isSimulated = true;
    AwaitEvent("adapter: powered on");
    return simulator;
}

void Bench::KillSimulator() {
    m_simulator->Signal(SIGKILL);
    Check(AwaitThat([this] { return !m_simulator->Running(); }), "the simulator lives on");
}

void Bench::StartService() {
    m_serviceEnd.reset();
    m_service = Start(std::string(BIN_DIR) + "/bt-autoconnect", {},
                      {nullptr, [this](const std::string& line) { m_log.all.push_back(line); },
                       [this](const std::string& how) { m_serviceEnd = how; }});
    // The two come in either order.
    const std::size_t start = m_log.read;
    AwaitLog("Name acquired com.velmora.tv.bt.autoconnect");
    m_log.read = start;
    AwaitLog(m_isSimulated ? "bluetoothd is there" : "bluetoothd is not on the bus");
}

void Bench::RunTvctl(const std::vector<std::string>& arguments, TvctlRun& run) {
    const ChildPtr tvctl = Start(std::string(BIN_DIR) + "/tvctl", arguments,
                                 {[&run](const std::string& line) { run.output.push_back(line); },
                                  [&run](const std::string& line) { run.complaint = line; },
                                  [&run](const std::string& how) { run.end = how; }});
    Check(AwaitThat([&run] { return run.end.has_value(); }), "tvctl hangs");
}

std::vector<std::string> Bench::Tvctl(const std::vector<std::string>& arguments) {
    TvctlRun run;
    RunTvctl(arguments, run);
    Check(run.end->empty(), "tvctl " + arguments.front() + ": " + run.complaint);
    return run.output;
}

std::string Bench::TvctlFailure(const std::vector<std::string>& arguments, const char* end) {
    TvctlRun run;
    RunTvctl(arguments, run);
    Check(run.end == end, "tvctl " + arguments.front() + " ended with " + *run.end);
    std::string text;
    for (const std::string& line : run.output) {
        text += line + "\n";
    }
    return text + run.complaint;
}

void Bench::SetUpTv(const std::vector<std::string>& phones) {
    Tvctl({"feature", "set", "com.velmora/featureconf/display_rotator_supported", "true"});
    Tvctl({"power", "set", "ambient-mode", "1"});
    Tvctl({"power", "set", "ambient-type", "1"});
    for (const std::string& phone : phones) {
        Tvctl({"phone", "add", phone});
    }
}

void Bench::Emit(const char* name, GVariant* parameters, const char* path, const char* interface) {
    ASSERT_TRUE(g_dbus_connection_emit_signal(m_connection.get(), nullptr, path, interface, name,
                                              parameters, nullptr));
    ASSERT_TRUE(g_dbus_connection_flush_sync(m_connection.get(), nullptr, nullptr));
}

void Bench::Stall(int ms) {
    m_service->Signal(SIGSTOP);
    bool isOver = false;
    const Timer end = Timer::Once(ms, [&isOver] { isOver = true; });
    EXPECT_TRUE(AwaitThat([&isOver] { return isOver; }));
    m_service->Signal(SIGCONT);
}

void Bench::LaunchPlay(const std::string& phone) {
    GErrorPtr error;
    const GVariantPtr reply(
        g_dbus_connection_call_sync(m_connection.get(), "com.velmora.tv.bmp", "/com/velmora/tv/bmp",
                                    Platform::kApplicationInterface, "ActivateAction",
                                    Platform::LaunchArguments({{"cmd", "play"}}, phone), nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, kDeadlineMs, nullptr, Out(error)));
    ASSERT_TRUE(reply) << error->message;
}

void Bench::BecomeDaemon() {
    ASSERT_TRUE(GVariantPtr(g_dbus_connection_call_sync(
        m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", "org.bluez", 0U), nullptr, G_DBUS_CALL_FLAGS_NONE,
        kDeadlineMs, nullptr, nullptr)));
}

void Bench::Discover(const char* pattern) {
    const auto ask = [this](const char* method, GVariant* arguments) {
        const GVariantPtr reply(g_dbus_connection_call_sync(
            m_connection.get(), "org.bluez", "/org/bluez/hci0", "org.bluez.Adapter1", method,
            arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, kDeadlineMs, nullptr, nullptr));
        Check(reply != nullptr, method);
    };
    ask("SetDiscoveryFilter", g_variant_new_parsed("({'Pattern': <%s>},)", pattern));
    ask("StartDiscovery", nullptr);
}

std::string Bench::Call(const char* method) {
    GErrorPtr error;
    const GVariantPtr reply(g_dbus_connection_call_sync(
        m_connection.get(), "com.velmora.tv.bt.autoconnect", "/com/velmora/tv/bt/autoconnect",
        "com.velmora.tv.bt.autoconnect", method, nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE,
        kDeadlineMs, nullptr, Out(error)));
    const GStringPtr name(error ? g_dbus_error_get_remote_error(error.get()) : nullptr);
    return name ? name.get() : "";
}

bool Bench::AwaitThat(const std::function<bool()>& condition) {
    bool isLate = false;
    const Timer deadline = Timer::Once(kDeadlineMs, [&isLate] { isLate = true; });
    while (!condition() && !isLate) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return !isLate;
}

void Bench::Await(Lines& lines, const std::string& text) {
    ASSERT_TRUE(AwaitThat([&] {
        while (lines.read < lines.all.size()) {
            if (lines.all[lines.read++].find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    })) << "never came: "
        << text;
}

void Bench::AwaitLog(const std::string& text) {
    Await(m_log, text);
}

void Bench::AwaitEvent(const std::string& text) {
    Await(m_events, text);
}

void Bench::AwaitPlayer(const std::string& text) {
    Await(m_playerLog, text);
}

std::string Bench::AwaitEnd() {
    return AwaitThat([this] { return m_serviceEnd.has_value(); }) ? *m_serviceEnd : "runs on";
}

std::size_t Bench::Count(const Lines& lines, const std::string& text) {
    std::size_t count = 0;
    for (const std::string& line : lines.all) {
        count += line.find(text) != std::string::npos ? 1 : 0;
    }
    return count;
}

void Bench::ShowLogs() const {
    for (const Lines* lines : {&m_events, &m_playerLog, &m_log}) {
        for (const std::string& line : lines->all) {
            std::cerr << line << "\n";
        }
    }
}
