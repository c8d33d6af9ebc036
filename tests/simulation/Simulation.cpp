// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/Simulation.h"

#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/system_log.h"
#include "tests/memory_bus/VirtualTime.h"

namespace {

// From the last step of a story until everything in it is over.
constexpr int kOutcomeMs = 40000;
// Until the longest pause after a failure is over.
constexpr int kRecoverMs = 130000;
constexpr int kMusicMs = 30000;
constexpr int kNeverMs = 3600000;
// From bluetoothd's start until the first wake-up of a scenario.
constexpr int kReadyMs = 200;
// What the first stories allocate may stay, and a little more.
constexpr int kWarmUp = 300;
constexpr std::size_t kMayGrow = 512 * 1024;

}  // namespace

Simulation::Simulation(Options options, std::function<void(const std::string&)> onFault)
    : m_options(std::move(options)),
      m_onFault(std::move(onFault)),
      m_judge(SIMULATION_MANUAL, m_onFault),
      m_world(m_bus, m_judge,
              m_options.log ? [this](const std::string& what) { Print(what); }
                            : std::function<void(const std::string&)>()) {
    m_bus.onSyncCall = [this](const std::string& method) {
        m_onFault("the main loop waits for the answer of " + method);
    };
    VirtualTime::Begin([this] { Later(0, &Simulation::OnRest); });
    if (!m_options.scenario) {
        m_world.Heal();
    }
    Later(1000, &Simulation::PlayNext);
}

Simulation::~Simulation() {
    // The object by which others see whether the main loop runs stays as long as the process.
    if (m_bus.PendingCalls() != 0 || m_bus.Objects() > 1 || m_bus.HasOwner(kServiceName)) {
        m_onFault("the service left something on the bus");
    }
    // Nor does it listen to its keys any more.
    m_isOver = true;
    m_world.tv.SpoilPhones(true, "over");
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

double Simulation::Now() const {
    return static_cast<double>(VirtualTime::NowMs() - m_startMs) / 1e3;
}

void Simulation::Print(const std::string& line) const {
    if (m_options.log) {
        std::printf("%9.3f %s\n", Now(), line.c_str());
    }
}

void Simulation::OnLog(int priority, const char* tag, const char* format,
                       const std::function<std::string()>& text) {
    if (m_isOver && std::strcmp(tag, "BT_AUTO_CONNECT") == 0) {
        m_onFault("the service goes on after its end");
    }
    m_judge.OnLog(priority, format, text);
    if (m_course || (m_options.log && g_strstr_len(format, -1, "%p") == nullptr)) {
        const std::string line =
            std::string(1, "??DIWE"[priority <= DLOG_ERROR ? priority - 1 : 0]) + " " + tag + ": " +
            text();
        Print(line);
        if (m_course) {
            m_course->OnLogLine(" " + line);
        }
    }
}

void Simulation::Later(int ms, void (Simulation::*what)()) {
    m_next = Timer::Once(ms, [this, what] { (this->*what)(); });
}

void Simulation::PlayNext() {
    const bool isOver =
        m_options.scenario || m_options.story >= 0 ? m_played != 0 : m_wakeUps >= m_options.wakeUps;
    m_startMs = VirtualTime::NowMs();
    if (isOver) {
        m_world.Command("Enough", nullptr);
    } else if (m_options.scenario) {
        PlayScenario();
    } else {
        PlayStory();
    }
}

void Simulation::PlayStory() {
    m_story = MakeStory(static_cast<std::uint64_t>(m_options.seed), Number());
    m_timers.clear();
    int endMs = 0;
    for (std::size_t i = 0; i < m_story.size(); ++i) {
        if (m_options.steps.empty() || m_options.steps.count(static_cast<int>(i)) != 0) {
            endMs = m_story[i].atMs;
            m_timers.push_back(Timer::Once(endMs, [this, &step = m_story[i]] {
                Print("* " + step.what);
                step.run(m_world);
                m_wakeUps += step.isWakeUp ? 1 : 0;
            }));
        }
    }
    Later(endMs + kOutcomeMs, &Simulation::Recover);
}

void Simulation::Recover() {
    Print("* all is well again");
    m_world.Heal();
    Later(kRecoverMs, &Simulation::WakeAtLast);
}

void Simulation::WakeAtLast() {
    Print("* the TV wakes");
    m_world.Wake();
    ++m_wakeUps;
    Later(kMusicMs, &Simulation::OnOutcome);
}

void Simulation::OnOutcome() {
    if (!m_world.HasMusic() || !m_judge.attempt.HasFound()) {
        m_onFault(m_world.HasMusic() ? "the phone was not recognised" : "no music");
    }
    Print("* the phones leave");
    m_world.Heal();
    Later(kRecoverMs, &Simulation::AwaitRest);
}

void Simulation::PlayScenario() {
    m_course = std::make_unique<ScenarioRunner::Course>(
        *m_options.scenario, [this](const TvSim::TvEvent& event) { Act(event); },
        [this](bool succeeded, const std::string& result) { OnCourseOver(succeeded, result); });
    m_world.onEvent = [this](const std::string& subject, const std::string& what) {
        m_course->OnSimulatorLine(" " + subject + ": " + what);
    };
    if (!m_world.Load(*m_options.scenario)) {
        m_course->Fail("a value in [tv] keys is not of its key's type");
        return;
    }
    m_timers.clear();
    m_timers.push_back(Timer::Once(kReadyMs, [this] { m_course->Begin(); }));
}

void Simulation::Act(const TvSim::TvEvent& event) {
    using Kind = TvSim::TvEvent::Kind;
    Print("* event " + event.key + " " + event.text);
    if (event.kind == Kind::kWake) {
        m_world.Wake();
        ++m_wakeUps;
    } else if (event.kind == Kind::kUpdate) {
        m_world.Update(event.text);
    } else if (event.kind == Kind::kUnset) {
        m_world.tv.UnsetKey(event.key);
    } else if (event.kind == Kind::kSet) {
        if (!m_world.tv.TypeKey(event.key, event.text)) {
            m_course->Fail("'" + event.text + "' is not of the type of " + event.key);
        }
    } else if (m_world.tv.KeyText(event.key) != event.text) {
        m_course->Fail(event.key + " holds '" + m_world.tv.KeyText(event.key) + "', expected: '" +
                       event.text + "'");
    }
}

void Simulation::OnCourseOver(bool succeeded, const std::string& result) {
    m_result = result;
    m_succeeded = succeeded;
    m_timers.clear();
    Later(0, &Simulation::EndScenario);
}

void Simulation::EndScenario() {
    m_world.onEvent = nullptr;
    m_course.reset();
    m_world.StopBluez();
    Later(kRecoverMs, &Simulation::AwaitRest);
}

void Simulation::AwaitRest() {
    m_isResting = true;
    m_next = Timer::Once(kNeverMs, [this] { m_onFault("a timer runs for ever"); });
}

void Simulation::OnRest() {
    if (!std::exchange(m_isResting, false)) {
        m_onFault("nothing happens any more");
    }
    m_judge.CheckRest();
    if (m_bus.PendingCalls() != 0) {
        m_onFault("a call is pending at rest");
    }
    CheckGrowth();
    ++m_played;
    PlayNext();
}

// Of what may grow: what the service listens to, and its memory.
void Simulation::CheckGrowth() {
    const std::size_t bytes = mallinfo2().uordblks;
    if (m_played == 0) {
        m_subscriptions = m_bus.Subscriptions();
    } else if (m_bus.Subscriptions() != m_subscriptions) {
        m_onFault("a subscription is left at rest");
    }
    if (m_played == kWarmUp) {
        m_bytes = bytes;
    } else if (m_played > kWarmUp && bytes > m_bytes + kMayGrow) {
        m_onFault("memory grows");
    }
}
