// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/ScenarioRun.h"

#include <csignal>

#include "autoconnect/src/DbusInterface.h"
#include "common/PrintableText.h"

namespace ScenarioRunner {
namespace {

constexpr char kProductLine[] = "com.velmora/featureconf/display_rotator_supported";
// Nothing before the wake-up takes longer on any machine that still works.
constexpr int kStartMs = 20000;
constexpr int kStopMs = 3000;

std::string Seconds(gint64 us) {
    const gint64 tenths = (us + 50000) / 100000;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

using Children = std::vector<ChildProcess*>;

void SignalAll(const Children& children, int signal) {
    for (ChildProcess* child : children) {
        if (child != nullptr) {
            child->Signal(signal);
        }
    }
}

bool AnyRuns(const Children& children) {
    return std::any_of(children.begin(), children.end(), [](const ChildProcess* child) {
        return child != nullptr && child->Running();
    });
}

// Asks the processes to end, and kills those that do not within some seconds.
void Stop(const Children& children) {
    SignalAll(children, SIGTERM);
    const Timer impatience = Timer::Once(kStopMs, [&] { SignalAll(children, SIGKILL); });
    while (AnyRuns(children)) {
        g_main_context_iteration(nullptr, TRUE);
    }
}

void WriteLine(FILE* file, const std::string& line) {
    if (file != nullptr) {
        std::fprintf(file, "%s\n", line.c_str());
        std::fflush(file);
    }
}

}  // namespace

ScenarioRun::ScenarioRun(Options options, TvSim::Scenario scenario, Workspace& workspace)
    : m_options(std::move(options)),
      m_scenario(std::move(scenario)),
      m_workspace(workspace),
      m_verdict(m_scenario),
      m_loop(g_main_loop_new(nullptr, FALSE)),
      m_serviceLog(std::fopen((workspace.Path() + "/service.log").c_str(), "we")),
      m_simulatorLog(std::fopen((workspace.Path() + "/simulator.log").c_str(), "we")) {}

std::string ScenarioRun::Run() {
    AdoptOrphans();
    const auto interrupt = [this] { Finish(false, "interrupted"); };
    const Source signals[] = {Source::OnSignal(SIGINT, interrupt),
                              Source::OnSignal(SIGTERM, interrupt),
                              Source::OnSignal(SIGHUP, interrupt)};
    m_deadline =
        Timer::Once(kStartMs, [this] { Finish(false, "the service was not ready within 20 s"); });
    StartBus();
    if (!m_finished) {
        g_main_loop_run(m_loop.get());
    }
    StopAll();
    KillChildren();
    return m_result;
}

std::unique_ptr<ChildProcess> ScenarioRun::Start(const std::string& program,
                                                 std::vector<std::string> arguments,
                                                 ChildProcess::Handlers handlers) {
    arguments.insert(arguments.begin(), program);
    if (!handlers.onError) {
        // What a process said last explains its end best.
        const auto lastWords = std::make_shared<std::string>();
        handlers.onError = [lastWords](const std::string& line) { *lastWords = ": " + line; };
        handlers.onEnd = [lastWords, onEnd = handlers.onEnd](const std::string& how) {
            onEnd(how.empty() ? how : how + *lastWords);
        };
    }
    ChildProcess::Command command{
        std::move(arguments),
        {{"DBUS_SYSTEM_BUS_ADDRESS", m_workspace.BusAddress()}, {"TV_ROOT", m_workspace.Root()}}};
    if (m_options.colour) {
        command.environment.emplace_back("TV_LOG_COLOUR", "always");
    }
    std::string error;
    auto child = ChildProcess::Start(command, std::move(handlers), error);
    if (child == nullptr) {
        Finish(false, program + " cannot be started: " + error);
    }
    return child;
}

void ScenarioRun::StartBus() {
    ChildProcess::Handlers handlers;
    handlers.onOutput = [this](const std::string& /*address*/) { StartSimulator(); };
    handlers.onEnd = [this](const std::string& how) { Finish(false, "the bus ended, " + how); };
    m_bus = Start("dbus-daemon",
                  {"--config-file=" + m_workspace.BusConfiguration(), "--nofork", "--nopidfile",
                   "--print-address=1"},
                  std::move(handlers));
}

void ScenarioRun::StartSimulator() {
    ChildProcess::Handlers handlers;
    handlers.onOutput = [this](const std::string& line) { OnSimulatorLine(line); };
    handlers.onEnd = [this](const std::string& how) {
        Finish(false, (m_bus->Running() ? "the simulator ended, "
                                        : "the bus ended and with it "
                                          "the simulator, ") +
                          how);
    };
    m_simulator = Start(m_options.binDir + "/tv-sim", {"--scenario", m_options.scenarioFile},
                        std::move(handlers));
}

void ScenarioRun::QueueSettings() {
    const TvSim::TvPlan& tv = m_scenario.tv;
    m_queue = {{"feature", "set", kProductLine, tv.zemi ? "true" : "false"},
               {"power", "set", "wakeup-reason", std::to_string(tv.wakeupReason)},
               {"power", "set", "ambient-mode", std::to_string(tv.ambientMode)},
               {"power", "set", "ambient-type", std::to_string(tv.ambientType)}};
    for (const auto& [feature, value] : tv.features) {
        m_queue.push_back({"feature", "set", feature, value});
    }
    for (const auto& [key, value] : tv.keys) {
        m_queue.push_back({"conf", "set", key, value});
    }
    using Registered = TvSim::PhonePlan::Registered;
    for (const TvSim::PhonePlan& phone : m_scenario.phones) {
        if (phone.registered == Registered::kOn) {
            m_queue.push_back({"phone", "add", phone.address});
        } else if (phone.registered == Registered::kOff) {
            m_queue.push_back({"phone", "add", phone.address, "--off"});
        }
    }
}

void ScenarioRun::QueueWakeUp() {
    for (const auto& [phone, on] : m_scenario.wake.updates) {
        m_queue.push_back({"phone", on ? "on" : "off", m_scenario.FindPhone(phone)->address});
    }
    m_queue.push_back({"wake"});
}

void ScenarioRun::RunQueued(std::function<void()> next) {
    if (m_queue.empty()) {
        next();
        return;
    }
    const std::vector<std::string> arguments = m_queue.front();
    m_queue.pop_front();
    ChildProcess::Handlers handlers;
    handlers.onEnd = [this, arguments, next = std::move(next)](const std::string& how) {
        if (how.empty()) {
            RunQueued(next);
            return;
        }
        std::string command = "tvctl";
        for (const std::string& argument : arguments) {
            command += " " + argument;
        }
        Finish(false, "'" + command + "' failed, " + how);
    };
    m_tvctl = Start(m_options.binDir + "/tvctl", arguments, std::move(handlers));
}

void ScenarioRun::StartService() {
    GErrorPtr error;
    m_connection.reset(g_dbus_connection_new_for_address_sync(
        m_workspace.BusAddress().c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, Out(error)));
    if (m_connection == nullptr) {
        Finish(false, std::string("the bus cannot be reached: ") + error->message);
        return;
    }
    m_nameWatch =
        BusWatch::OnName(m_connection.get(), kServiceName, OnServiceNameAppeared, nullptr, this);
    ChildProcess::Handlers handlers;
    handlers.onError = [this](const std::string& line) { OnServiceLine(line); };
    handlers.onEnd = [this](const std::string& how) {
        Finish(false, "the service ended, " + (how.empty() ? "status 0" : how));
    };
    m_service = Start(m_options.binDir + "/bt-autoconnect", {}, std::move(handlers));
}

void ScenarioRun::OnServiceNameAppeared(GDBusConnection* /*connection*/, const char* /*name*/,
                                        const char* /*owner*/, gpointer userData) noexcept {
    auto* self = static_cast<ScenarioRun*>(userData);
    self->m_nameOwned = true;
    self->OnReadyPart();
}

void ScenarioRun::OnReadyPart() {
    const TvSim::AdapterPlan& adapter = m_scenario.adapter;
    const bool isReadySoon = adapter.present && adapter.powered && adapter.appearsAfterMs == 0;
    if (m_nameOwned && m_objectsRead && (m_adapterReady || !isReadySoon) && m_wokenAtUs == 0) {
        WakeUp();
    }
}

void ScenarioRun::WakeUp() {
    m_wokenAtUs = g_get_monotonic_time();
    QueueWakeUp();
    RunQueued([] {});
    m_deadline = Timer::Once(m_scenario.expect.withinMs, [this] {
        const std::string problem = m_verdict.ProblemAtEnd();
        Finish(problem.empty(),
               problem + " within " + Seconds(gint64{1000} * m_scenario.expect.withinMs));
    });
}

void ScenarioRun::OnServiceLine(const std::string& line) {
    if (!m_options.quiet) {
        WriteLine(stderr, line);
    }
    const std::string plain = WithoutColours(line);
    WriteLine(m_serviceLog.get(), plain);
    m_verdict.OnLogLine(plain);
    Judge();
}

void ScenarioRun::OnSimulatorLine(const std::string& line) {
    WriteLine(m_simulatorLog.get(), line);
    if (line.find(" bus: name org.bluez acquired") != std::string::npos) {
        QueueSettings();
        RunQueued([this] { StartService(); });
    } else if (m_service != nullptr && line.find(" bus: objects read by ") != std::string::npos) {
        m_objectsRead = true;
        OnReadyPart();
    } else if (line.find(" adapter: powered on") != std::string::npos) {
        m_adapterReady = true;
        OnReadyPart();
    }
    m_verdict.OnSimulatorLine(line);
    Judge();
}

void ScenarioRun::Judge() {
    if (m_wokenAtUs == 0) {
        return;
    }
    if (m_verdict.Spoilt()) {
        Finish(false, m_verdict.ProblemAtEnd());
    } else if (m_verdict.Reached() && !m_settling) {
        m_settling = true;
        m_settle = Timer::Once(m_scenario.expect.settleMs,
                               [this] { Finish(m_verdict.Reached(), m_verdict.ProblemAtEnd()); });
    }
}

void ScenarioRun::Finish(bool succeeded, const std::string& what) {
    if (m_finished) {
        return;
    }
    m_finished = true;
    m_succeeded = succeeded;
    m_result = succeeded ? "OK " + m_scenario.name + ": " + m_verdict.Outcome() + " (" +
                               Seconds(g_get_monotonic_time() - m_wokenAtUs) + ")"
                         : "FAILED " + m_scenario.name + ": " + what;
    g_main_loop_quit(m_loop.get());
}

void ScenarioRun::StopAll() {
    m_deadline.Cancel();
    m_settle.Cancel();
    // The bus outlives those who take their leave of it.
    Stop({m_tvctl.get(), m_service.get(), m_simulator.get()});
    Stop({m_bus.get()});
}

}  // namespace ScenarioRunner
