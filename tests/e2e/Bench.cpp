// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/Bench.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iostream>
#include <utility>

#include "platform/linux/application/ApplicationBus.h"

using ScenarioRunner::ChildProcess;

namespace {

void Check(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

bool Holds(const std::string& line, const std::string& text) {
    return line.find(text) != std::string::npos;
}

}  // namespace

Bench::Bench(const std::string& mediaPlayer)
    : m_bus(mediaPlayer, [this](const std::string& line) { m_playerLog.all.push_back(line); }),
      m_connection(g_dbus_connection_new_for_address_sync(
          m_bus.folder.BusAddress().c_str(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, nullptr, nullptr)) {
    Check(m_connection != nullptr, "the bus cannot be reached");
}

Bench::~Bench() {
    if (!HasFailure()) {
        return;
    }
    for (const Lines* lines : {&m_events, &m_playerLog, &m_log}) {
        for (const std::string& line : lines->all) {
            std::cerr << line << "\n";
        }
    }
}

Bench::ChildPtr Bench::Start(const std::string& program, std::vector<std::string> arguments,
                             ChildProcess::Handlers handlers) {
    arguments.insert(arguments.begin(), std::string(BIN_DIR) + "/" + program);
    std::string error;
    ChildPtr child = ChildProcess::Start({std::move(arguments), {}}, std::move(handlers), error);
    Check(child != nullptr, program + ": " + error);
    return child;
}

void Bench::StartSimulator(const std::string& scenario) {
    const std::string file = m_bus.folder.Path() + "/scenario.ini";
    Check(g_file_set_contents(file.c_str(), scenario.c_str(), -1, nullptr) != FALSE, file);
    m_simulator = Start(
        "tv-sim", {"--scenario", file},
        {[this](const std::string& line) { m_events.all.push_back(line); }, nullptr, nullptr});
    m_isSimulated = true;
    AwaitEvent("bus: name org.bluez acquired");
    if (!Holds(scenario, "present=false")) {
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
    m_service = Start("bt-autoconnect", {},
                      {nullptr,
                       [this](const std::string& line) {
                           m_log.all.push_back(line);
                           std::ofstream(LogFile(), std::ios::app) << line << "\n";
                       },
                       [this](const std::string& how) { m_serviceEnd = how; }});
    // The two come in either order.
    const std::size_t start = m_log.read;
    AwaitLog("Name acquired com.velmora.tv.bt.autoconnect");
    m_log.read = start;
    AwaitLog(m_isSimulated ? "bluetoothd is there" : "bluetoothd is not on the bus");
}

std::pair<std::vector<std::string>, std::string> Bench::RunToEnd(
    const std::string& program, std::vector<std::string> arguments) {
    std::vector<std::string> output;
    std::optional<std::string> end;
    std::string error;
    arguments.insert(arguments.begin(), program);
    const ChildPtr child =
        ChildProcess::Start({std::move(arguments), {}},
                            {[&output](const std::string& line) { output.push_back(line); },
                             nullptr, [&end](const std::string& how) { end = how; }},
                            error);
    Check(child != nullptr && AwaitThat([&end] { return end.has_value(); }), program + " " + error);
    return {output, *end};
}

std::vector<std::string> Bench::Run(const std::string& program,
                                    const std::vector<std::string>& arguments,
                                    const std::string& wantedEnd) {
    std::vector<std::string> output;
    std::string complaint;
    std::optional<std::string> end;
    const ChildPtr child = Start(program, arguments,
                                 {[&output](const std::string& line) { output.push_back(line); },
                                  [&complaint](const std::string& line) { complaint = line; },
                                  [&end](const std::string& how) { end = how; }});
    Check(AwaitThat([&end] { return end.has_value(); }), program + " hangs");
    Check(*end == wantedEnd, program + " ended with '" + *end + "': " + complaint);
    if (!wantedEnd.empty()) {
        output.push_back(complaint);
    }
    return output;
}

std::vector<std::string> Bench::Tvctl(const std::vector<std::string>& arguments) {
    return Run("tvctl", arguments, "");
}

std::string Bench::TvctlFailure(const std::vector<std::string>& arguments, const char* end) {
    std::string text;
    for (const std::string& line : Run("tvctl", arguments, end)) {
        text += line + "\n";
    }
    return text;
}

void Bench::SetUpTv(const std::vector<std::string>& phones) {
    Tvctl({"feature", "set", "com.velmora/featureconf/display_rotator_supported", "true"});
    Tvctl({"power", "set", "ambient-mode", "1"});
    Tvctl({"power", "set", "ambient-type", "3"});  // of a special type as well
    for (const std::string& phone : phones) {
        Tvctl({"phone", "add", phone});
    }
}

void Bench::StartAll(const std::string& scenario, const std::vector<std::string>& phones) {
    SetUpTv(phones);
    StartSimulator(kAlicePhone + scenario);
    StartService();
}

void Bench::ExpectMusic() {
    Wake();
    AwaitEvent("phone Alice: plays");
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

std::string Bench::Ask(const char* whom, const char* path, const char* interface,
                       const char* method, GVariant* arguments) {
    GErrorPtr error;
    const GVariantPtr reply(g_dbus_connection_call_sync(
        m_connection.get(), whom, path, interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, kDeadlineMs, nullptr, Out(error)));
    const GStringPtr name(error ? g_dbus_error_get_remote_error(error.get()) : nullptr);
    return name ? name.get() : error ? error->message : "";
}

void Bench::LaunchPlay(const std::string& phone) {
    EXPECT_EQ(Ask("com.velmora.tv.bmp", "/com/velmora/tv/bmp", Platform::kApplicationInterface,
                  "ActivateAction",
                  Platform::LaunchArguments({{"c", "\xC3\xA4"}, {"cmd", "play"}}, phone)),
              "");
}

void Bench::Own(const char* name, bool own) {
    EXPECT_EQ(Ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                  own ? "RequestName" : "ReleaseName",
                  own ? g_variant_new("(su)", name, 0U) : g_variant_new("(s)", name)),
              "");
}

void Bench::Discover(const char* pattern) {
    const auto ask = [this](const char* method, GVariant* arguments) {
        EXPECT_EQ(Ask("org.bluez", "/org/bluez/hci0", "org.bluez.Adapter1", method, arguments), "");
    };
    ask("SetDiscoveryFilter", g_variant_new_parsed("({'Pattern': <%s>},)", pattern));
    ask("StartDiscovery", nullptr);
}

std::string Bench::Call(const char* method) {
    return Ask("com.velmora.tv.bt.autoconnect", "/com/velmora/tv/bt/autoconnect",
               "com.velmora.tv.bt.autoconnect", method, nullptr);
}

void Bench::Await(Lines& lines, const std::string& text) {
    const auto hasCome = [&] {
        while (lines.read < lines.all.size()) {
            if (Holds(lines.all[lines.read++], text)) {
                return true;
            }
        }
        return false;
    };
    ASSERT_TRUE(AwaitThat(hasCome)) << "never came: " << text;
}

std::string Bench::AwaitEnd() {
    return AwaitThat([this] { return m_serviceEnd.has_value(); }) ? *m_serviceEnd : "runs on";
}

std::size_t Bench::Count(const Lines& lines, const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(lines.all.begin(), lines.all.end(),
                      [&](const std::string& line) { return Holds(line, text); }));
}
