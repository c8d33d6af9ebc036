// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/BusWatch.h"
#include "common/CHandle.h"
#include "common/Source.h"
#include "tools/scenario-runner/ChildProcess.h"
#include "tools/scenario-runner/Verdict.h"
#include "tools/scenario-runner/Workspace.h"
#include "tools/tv-sim/Scenario.h"

namespace ScenarioRunner {

struct Options {
    std::string binDir;
    std::string scenarioFile;
    bool keep = false;
    bool quiet = false;   // only the last line
    bool colour = false;  // the service's log in colours
};

// One run of a scenario: a bus of its own, the simulator, the TV's settings, the service, the
// wake-up, and then waiting for the end that the scenario expects.
class ScenarioRun {
public:
    ScenarioRun(Options options, TvSim::Scenario scenario, Workspace& workspace);
    ScenarioRun(const ScenarioRun&) = delete;
    ScenarioRun& operator=(const ScenarioRun&) = delete;

    // Runs it and ends everything that it started. Returns the last line: "OK ..." or "FAILED ...".
    [[nodiscard]] std::string Run();
    [[nodiscard]] bool Succeeded() const { return m_succeeded; }

private:
    static void OnServiceNameAppeared(GDBusConnection* connection, const char* name,
                                      const char* owner, gpointer userData) noexcept;

    [[nodiscard]] std::unique_ptr<ChildProcess> Start(const std::string& program,
                                                      std::vector<std::string> arguments,
                                                      ChildProcess::Handlers handlers);
    void StartBus();
    void StartSimulator();
    void QueueSettings();
    void QueueWakeUp();
    // Runs tvctl with each of the queued argument lists, then `next`.
    void RunQueued(std::function<void()> next);
    void StartService();
    void OnReadyPart();
    void WakeUp();
    void OnServiceLine(const std::string& line);
    void OnSimulatorLine(const std::string& line);
    void Judge();
    // Ends the run; the first call decides.
    void Finish(bool succeeded, const std::string& what);
    void StopAll();

    Options m_options;
    TvSim::Scenario m_scenario;
    Workspace& m_workspace;
    Verdict m_verdict;
    GMainLoopPtr m_loop;
    CPtr<FILE, std::fclose> m_serviceLog;
    CPtr<FILE, std::fclose> m_simulatorLog;

    std::deque<std::vector<std::string>> m_queue;  // tvctl's arguments
    bool m_finished = false;
    bool m_succeeded = false;
    std::string m_result;
    bool m_nameOwned = false;
    bool m_objectsRead = false;
    bool m_adapterReady = false;
    bool m_settling = false;  // the expected end is there, and is watched for a moment
    gint64 m_wokenAtUs = 0;

    std::unique_ptr<ChildProcess> m_bus;
    std::unique_ptr<ChildProcess> m_simulator;
    std::unique_ptr<ChildProcess> m_tvctl;
    std::unique_ptr<ChildProcess> m_service;
    GObjectPtr<GDBusConnection> m_connection;
    BusWatch m_nameWatch;
    Timer m_deadline;
    Timer m_settle;
};

}  // namespace ScenarioRunner
