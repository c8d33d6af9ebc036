// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/ScenarioRun.h"

#include <sys/prctl.h>

#include <csignal>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "autoconnect/src/DbusInterface.h"
#include "common/PrintableText.h"
#include "common/Source.h"
#include "tools/scenario-runner/ChildProcess.h"
#include "tools/scenario-runner/Course.h"

namespace ScenarioRunner {
namespace {

constexpr char kProductLine[] = "com.velmora/featureconf/display_rotator_supported";
// Nothing before the wake-up takes longer on any machine that still works.
constexpr int kStartMs = 20000;
constexpr int kStopMs = 3000;

// Asks the process to end, and kills it when it does not within some seconds.
void Stop(ChildProcess* child) {
    if (child == nullptr) {
        return;
    }
    child->Signal(SIGTERM);
    const Timer impatience = Timer::Once(kStopMs, [child] { child->Signal(SIGKILL); });
    while (child->Running()) {
        g_main_context_iteration(nullptr, TRUE);
    }
}

// One run: its processes, and what came of them so far.
class ScenarioRun {
public:
    ScenarioRun(const Options& options, const TvSim::Scenario& scenario, const Workspace& workspace)
        : m_options(options),
          m_scenario(scenario),
          m_workspace(workspace),
          m_course(
              scenario, [this](const TvSim::TvEvent& event) { Act(event); },
              [this](bool succeeded, const std::string& result) {
                  m_succeeded = succeeded;
                  m_result = result;
              }),
          m_serviceLog(workspace.Path() + "/service.log"),
          m_simulatorLog(workspace.Path() + "/simulator.log") {}

    // From the start of the bus to the end of the scenario.
    void Play() {
        const auto interrupt = [this] { m_course.Fail("interrupted"); };
        Tell(m_scenario.name + ": " + m_scenario.description + "\n\nWhat the phones do:");
        const Source signals[] = {Source::OnSignal(SIGINT, interrupt),
                                  Source::OnSignal(SIGTERM, interrupt),
                                  Source::OnSignal(SIGHUP, interrupt)};
        m_deadline = Timer::Once(
            kStartMs, [this] { m_course.Fail("the service was not ready within 20 s"); });
        if (StartBus() && StartSimulator() && SetUpTv() && StartService()) {
            m_deadline.Cancel();
            m_hasBegun = true;
            m_course.Begin();
            Await(false);
        }
        m_deadline.Cancel();
        // The bus ends last, so that the others can still say goodbye on it.
        for (const auto* child : {&m_service, &m_simulator, &m_bus}) {
            Stop(child->get());
        }
        ShowTimeline();
    }

    [[nodiscard]] bool Succeeded() const { return m_succeeded; }
    // The last line: "OK ..." or "FAILED ...". Empty until it is finished.
    [[nodiscard]] const std::string& Result() const { return m_result; }

private:
    using Arguments = std::vector<std::string>;

    std::unique_ptr<ChildProcess> Start(const std::string& program, Arguments arguments,
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
        ChildProcess::Command command{std::move(arguments),
                                      {{"DBUS_SYSTEM_BUS_ADDRESS", m_workspace.BusAddress()},
                                       {"TV_ROOT", m_workspace.Root()}}};
        if (m_options.colour) {
            command.environment.emplace_back("TV_LOG_COLOUR", "always");
        }
        std::string error;
        auto child = ChildProcess::Start(command, std::move(handlers), error);
        if (child == nullptr) {
            m_course.Fail(program + " cannot be started: " + error);
        }
        return child;
    }

    void Tell(const std::string& text) const {
        if (!m_options.quiet) {
            std::cout << text << std::endl;
        }
    }

    // Nothing when the service logged no wake-up.
    void ShowTimeline() {
        if (m_options.quiet) {
            return;
        }
        bool hasEnded = false;
        Tell("\nWhat the service did:");
        const auto trace =
            Start(m_options.binDir + "/tvctl", {"trace", m_workspace.Path() + "/service.log"},
                  {[this](const std::string& line) { Tell("  " + line); }, nullptr,
                   [&hasEnded](const std::string& /*how*/) { hasEnded = true; }});
        while (trace && !hasEnded) {
            g_main_context_iteration(nullptr, TRUE);
        }
        Tell("");
    }

    // Lets things happen until the condition holds (true) or the run is finished.
    bool Await(const bool& condition) const {
        while (!condition && m_result.empty()) {
            g_main_context_iteration(nullptr, TRUE);
        }
        return m_result.empty();
    }

    bool StartBus() {
        m_bus = Start("dbus-daemon",
                      {"--config-file=" + m_workspace.BusConfiguration(), "--nofork", "--nopidfile",
                       "--print-address=1"},
                      {[this](const std::string& /*address*/) { m_busUp = true; }, nullptr,
                       [this](const std::string& how) { m_course.Fail("the bus ended, " + how); }});
        return Await(m_busUp);
    }

    bool StartSimulator() {
        m_simulator = Start(m_options.binDir + "/tv-sim", {"--scenario", m_options.scenarioFile},
                            {[this](const std::string& line) { OnSimulatorLine(line); }, nullptr,
                             [this](const std::string& how) {
                                 const char* bus =
                                     m_bus->Running() ? "" : "the bus ended and with it ";
                                 m_course.Fail(bus + ("the simulator ended, " + how));
                             }});
        return Await(m_simulatorUp);
    }

    bool SetUpTv() {
        const TvSim::TvPlan& tv = m_scenario.tv;
        std::vector<Arguments> commands = {
            {"feature", "set", kProductLine, tv.zemi ? "true" : "false"},
            {"power", "set", "wakeup-reason", std::to_string(tv.wakeupReason)},
            {"power", "set", "ambient-mode", std::to_string(tv.ambientMode)},
            {"power", "set", "ambient-type", std::to_string(tv.ambientType)}};
        for (const auto& [feature, value] : tv.features) {
            commands.push_back({"feature", "set", feature, value});
        }
        for (const auto& [key, value] : tv.keys) {
            commands.push_back({"conf", "set", key, value});
        }
        for (const TvSim::PhonePlan& phone : m_scenario.phones) {
            if (phone.registered == "on") {
                commands.push_back({"phone", "add", phone.address});
            } else if (phone.registered == "off") {
                commands.push_back({"phone", "add", phone.address, "--off"});
            }
        }
        return Tvctl(commands);
    }

    bool StartService() {
        m_service =
            Start(m_options.binDir + "/bt-autoconnect", {},
                  {nullptr, [this](const std::string& line) { OnServiceLine(line); },
                   [this](const std::string& how) {
                       m_course.Fail("the service ended, " + (how.empty() ? "status 0" : how));
                   }});
        const TvSim::AdapterPlan& adapter = m_scenario.adapter;
        const bool isReadySoon = adapter.present && adapter.powered && adapter.appearsAfterMs == 0;
        return Await(m_nameOwned) && Await(m_objectsRead) &&
               (!isReadySoon || Await(m_adapterReady));
    }

    void Act(const TvSim::TvEvent& event) {
        using Kind = TvSim::TvEvent::Kind;
        if (event.kind == Kind::kWake) {
            Tvctl({{"wake"}});
        } else if (event.kind == Kind::kUpdate) {
            SendUpdate(event.text);
        } else if (event.kind == Kind::kSet) {
            Tvctl({{"conf", "set", event.key, event.text}});
        } else if (event.kind == Kind::kUnset) {
            Tvctl({{"conf", "unset", event.key}});
        } else {
            std::string value;
            if (Tvctl({{"conf", "get", event.key}}, &value) && value != event.text) {
                m_course.Fail(event.key + " holds '" + value + "', expected: '" + event.text + "'");
            }
        }
    }

    // As a phone's application on the TV does, with whatever text.
    void SendUpdate(const std::string& text) {
        GErrorPtr error;
        const GObjectPtr<GDBusConnection> bus(g_dbus_connection_new_for_address_sync(
            m_workspace.BusAddress().c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, Out(error)));
        if (bus == nullptr ||
            g_dbus_connection_emit_signal(bus.get(), nullptr, kObjectPath, kInterfaceName,
                                          kMobileUpdateCommand, g_variant_new("(s)", text.c_str()),
                                          Out(error)) == FALSE ||
            g_dbus_connection_flush_sync(bus.get(), nullptr, Out(error)) == FALSE) {
            m_course.Fail(std::string("the setting was not sent: ") + error->message);
        }
    }

    // Runs tvctl with each of the argument lists; false when the run is finished. `output` takes
    // its first line.
    bool Tvctl(const std::vector<Arguments>& commands, std::string* output = nullptr) {
        for (const Arguments& arguments : commands) {
            bool hasEnded = false;
            std::string how;
            const auto onEnd = [&](const std::string& end) {
                hasEnded = true;
                how = end;
            };
            const auto onOutput = [output](const std::string& line) {
                if (output != nullptr && output->empty()) {
                    *output = line;
                }
            };
            const auto tvctl =
                Start(m_options.binDir + "/tvctl", arguments, {onOutput, nullptr, onEnd});
            if (!Await(hasEnded)) {
                return false;
            }
            if (!how.empty()) {
                std::string command = "'tvctl";
                for (const std::string& argument : arguments) {
                    command.append(" ").append(argument);
                }
                m_course.Fail(command.append("' failed, ").append(how));
                return false;
            }
        }
        return true;
    }

    void OnServiceLine(const std::string& line) {
        if (m_options.log) {
            std::cerr << line << std::endl;
        }
        const std::string plain = WithoutColours(line);
        m_serviceLog << plain << std::endl;
        m_nameOwned |= Holds(plain, std::string("Name acquired ") + kServiceName);
        m_course.OnLogLine(plain);
    }

    void OnSimulatorLine(const std::string& line) {
        m_simulatorLog << line << std::endl;
        if (m_hasBegun && m_result.empty() && Holds(line, " phone ")) {
            Tell("  " + line);
        }
        m_simulatorUp |= Holds(line, " bus: name org.bluez acquired");
        m_objectsRead |= m_service != nullptr && Holds(line, " bus: objects read by ");
        m_adapterReady |= Holds(line, " adapter: powered on");
        m_course.OnSimulatorLine(line);
    }

    const Options& m_options;
    const TvSim::Scenario& m_scenario;
    const Workspace& m_workspace;
    Course m_course;
    std::ofstream m_serviceLog;
    std::ofstream m_simulatorLog;
    bool m_succeeded = false;
    std::string m_result;
    bool m_busUp = false;
    bool m_simulatorUp = false;
    bool m_nameOwned = false;
    bool m_objectsRead = false;
    bool m_adapterReady = false;
    bool m_hasBegun = false;  // the TV wakes
    std::unique_ptr<ChildProcess> m_bus;
    std::unique_ptr<ChildProcess> m_simulator;
    std::unique_ptr<ChildProcess> m_service;
    Timer m_deadline;
};

}  // namespace

bool Run(const Options& options, const TvSim::Scenario& scenario, const Workspace& workspace,
         std::string& result) {
    // Orphans among the descendants, such as what the bus started, become children of this process.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    ScenarioRun run(options, scenario, workspace);
    run.Play();
    KillChildren();
    result = run.Result();
    return run.Succeeded();
}

}  // namespace ScenarioRunner
