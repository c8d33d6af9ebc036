// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/Source.h"
#include "platform/bluetooth.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/simulation/Judge.h"
#include "tests/simulation/Story.h"
#include "tests/simulation/World.h"
#include "tools/scenario-runner/Course.h"

// Plays stories one after the other, with rest between them, or one scenario.
class Simulation {
public:
    struct Options {
        gint64 seed = 1;
        int wakeUps = 1000;
        int story = -1;       // only this one
        std::set<int> steps;  // only these of it; empty: all
        bool log = false;
        std::optional<TvSim::Scenario> scenario;  // instead of stories
    };

    // `onFault` hears of a rule that is broken.
    Simulation(Options options, std::function<void(const std::string&)> onFault);
    // The service's objects are gone by now.
    ~Simulation();
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    // The service says that, in a log line of that priority and tag.
    void OnLog(int priority, const char* tag, const char* format,
               const std::function<std::string()>& text);
    // Seconds since the story or scenario began.
    [[nodiscard]] double Now() const;
    Judge& TheJudge() { return m_judge; }
    World& TheWorld() { return m_world; }
    [[nodiscard]] const std::vector<Step>& TheStory() const { return m_story; }
    [[nodiscard]] int WakeUps() const { return m_wakeUps; }
    // Stories that are over.
    [[nodiscard]] int Played() const { return m_played; }
    // The last line of the scenario, and whether it ended as it should.
    [[nodiscard]] const std::string& Result() const { return m_result; }
    [[nodiscard]] bool Succeeded() const { return m_succeeded; }
    // Of the story that is played.
    [[nodiscard]] int Number() const { return m_options.story >= 0 ? m_options.story : m_played; }

private:
    void Print(const std::string& line) const;
    void Later(int ms, void (Simulation::*what)());
    void PlayNext();
    void PlayStory();
    void Recover();
    void WakeAtLast();
    void OnOutcome();
    void PlayScenario();
    void Act(const TvSim::TvEvent& event);
    void OnCourseOver(bool succeeded, const std::string& result);
    void EndScenario();
    void AwaitRest();
    void OnRest();
    void CheckGrowth();

    const Options m_options;
    std::function<void(const std::string&)> m_onFault;
    MemoryBus m_bus;
    Judge m_judge;
    World m_world;
    std::vector<Step> m_story;
    std::vector<Timer> m_timers;
    std::unique_ptr<ScenarioRunner::Course> m_course;
    Timer m_next;
    gint64 m_startMs = 0;
    int m_played = 0;
    bool m_succeeded = false;
    std::string m_result;
    int m_wakeUps = 0;
    bool m_isResting = false;
    bool m_isOver = false;  // the service has ended
    std::size_t m_subscriptions = 0;
    std::size_t m_bytes = 0;
};
