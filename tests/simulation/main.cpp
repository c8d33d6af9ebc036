// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <malloc.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "autoconnect/src/AutoConnectApp.h"
#include "autoconnect/src/DbusInterface.h"
#include "platform/bluetooth.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/memory_bus/VirtualTime.h"
#include "tests/simulation/Judge.h"
#include "tests/simulation/Story.h"
#include "tests/simulation/World.h"

// The service in a world that is a story: see docs/contributing.md.

namespace {

constexpr int kUsage = 2;
// From the last step of a story until everything in it is over.
constexpr int kOutcomeMs = 40000;
// Until the longest pause after a failure is over.
constexpr int kRecoverMs = 130000;
constexpr int kMusicMs = 30000;
constexpr int kNeverMs = 3600000;

struct Options {
    gint64 seed = 1;
    int wakeUps = 1000;
    int story = -1;       // only this one
    std::set<int> steps;  // only these of it; empty: all
    bool log = false;
};
Options theOptions;

class Simulation;
Simulation* theSimulation = nullptr;

class Simulation {
public:
    Simulation()
        : m_judge(SIMULATION_MANUAL, [this](const std::string& fault) { OnFault(fault); }),
          m_world(m_bus, m_judge,
                  theOptions.log ? [this](const std::string& what) { Print(what); }
                                 : std::function<void(const std::string&)>()) {
        theSimulation = this;
        m_bus.onSyncCall = [this](const std::string& method) {
            OnFault("the main loop waits for the answer of " + method);
        };
        VirtualTime::Begin([this] { m_next = Timer::Once(0, [this] { OnRest(); }); });
        m_next = Timer::Once(1000, [this] { PlayNext(); });
    }

    // The service's objects are gone by now.
    ~Simulation() {
        // The object by which others see whether the main loop runs stays as long as the process.
        if (m_bus.PendingCalls() != 0 || m_bus.Objects() > 1 || m_bus.HasOwner(kServiceName)) {
            OnFault("the service left something on the bus");
        }
        theSimulation = nullptr;
    }
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    void Print(const std::string& line) const {
        if (theOptions.log) {
            std::printf("%9.3f %s\n", static_cast<double>(VirtualTime::NowMs() - m_startMs) / 1e3,
                        line.c_str());
        }
    }
    Judge& TheJudge() { return m_judge; }
    [[nodiscard]] int WakeUps() const { return m_wakeUps; }
    [[nodiscard]] int Stories() const { return m_played; }
    // Of the story that is played.
    [[nodiscard]] int Number() const { return theOptions.story >= 0 ? theOptions.story : m_played; }
    bt_audio_connection_state_changed_cb listener = nullptr;

private:
    void PlayNext() {
        if (m_wakeUps >= theOptions.wakeUps || (theOptions.story >= 0 && m_played != 0)) {
            m_world.Command("Enough", nullptr);
            return;
        }
        m_story = MakeStory(static_cast<std::uint64_t>(theOptions.seed), Number());
        m_startMs = VirtualTime::NowMs();
        m_timers.clear();
        int endMs = 0;
        for (std::size_t i = 0; i < m_story.size(); ++i) {
            if (theOptions.steps.empty() || theOptions.steps.count(static_cast<int>(i)) != 0) {
                endMs = m_story[i].atMs;
                m_timers.push_back(Timer::Once(endMs, [this, i] { Run(m_story[i]); }));
            }
        }
        m_next = Timer::Once(endMs + kOutcomeMs, [this] { Recover(); });
    }

    void Run(const Step& step) {
        Print("* " + step.what);
        step.run(m_world);
        m_wakeUps += step.isWakeUp ? 1 : 0;
    }

    void Recover() {
        Print("* all is well again");
        m_world.Heal();
        m_next = Timer::Once(kRecoverMs, [this] {
            Print("* the TV wakes");
            m_world.Wake();
            ++m_wakeUps;
            m_next = Timer::Once(kMusicMs, [this] { OnOutcome(); });
        });
    }

    void OnOutcome() {
        if (!m_world.HasMusic() || !m_judge.HasFound()) {
            OnFault(m_world.HasMusic() ? "the phone was not recognised" : "no music");
        }
        Print("* the phones leave");
        m_world.Heal();
        m_next = Timer::Once(kRecoverMs, [this] {
            m_isResting = true;
            m_next = Timer::Once(kNeverMs, [this] { OnFault("a timer runs for ever"); });
        });
    }

    void OnRest() {
        if (!std::exchange(m_isResting, false)) {
            OnFault("nothing happens any more");
        }
        m_judge.CheckRest();
        if (m_bus.PendingCalls() != 0) {
            OnFault("a call is pending at rest");
        }
        CheckGrowth();
        ++m_played;
        PlayNext();
    }

    // Of what may grow: what the service listens to, and its memory.
    void CheckGrowth() {
        const std::size_t bytes = mallinfo2().uordblks;
        if (m_played == 0) {
            m_subscriptions = m_bus.Subscriptions();
        } else if (m_bus.Subscriptions() != m_subscriptions) {
            OnFault("a subscription is left at rest");
        }
        if (m_played == kWarmUp) {
            m_bytes = bytes;
        } else if (m_played > kWarmUp && bytes > m_bytes + kMayGrow) {
            OnFault("memory grows");
        }
    }

    void OnFault(const std::string& fault);

    static constexpr int kWarmUp = 300;
    static constexpr std::size_t kMayGrow = 512 * 1024;

    MemoryBus m_bus;
    Judge m_judge;
    World m_world;
    std::vector<Step> m_story;
    std::vector<Timer> m_timers;
    Timer m_next;
    gint64 m_startMs = 0;
    int m_played = 0;  // stories
    int m_wakeUps = 0;
    bool m_isResting = false;
    std::size_t m_subscriptions = 0;
    std::size_t m_bytes = 0;
};

// The folder of this process, which goes with it.
struct Root {
    Root() {
        std::string path =
            (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/simulate-XXXXXX");
        folder = mkdtemp(path.data()) == nullptr ? "" : path;
        setenv("TV_ROOT", folder.c_str(), 1);
    }
    ~Root() { std::filesystem::remove_all(folder); }
    std::string folder;
};
Root& TheRoot() {
    static Root root;
    return root;
}

// The same on every machine.
std::string WithoutRoot(std::string text) {
    const std::size_t at = text.find(TheRoot().folder);
    return at == std::string::npos ? text : text.erase(at, TheRoot().folder.size());
}

std::string Replay(const std::set<int>& steps) {
    std::string list;
    for (const int step : steps) {
        list += (list.empty() ? "" : ",") + std::to_string(step);
    }
    return " --seed " + std::to_string(theOptions.seed) + " --story " +
           std::to_string(theSimulation->Number()) + " --steps " + list;
}

// Whether a run of its own says that.
bool Fails(const std::string& arguments, const std::string& fault) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    const CPtr<FILE, pclose> run(popen((self + arguments).c_str(), "r"));
    std::string output;
    std::array<char, 1024> buffer;
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), run.get()) != nullptr) {
        output += buffer.data();
    }
    return output.find(fault) != std::string::npos;
}

// Leaves steps out as long as the story still fails.
std::set<int> CutDown(std::size_t count, const std::string& fault) {
    std::set<int> steps;
    for (std::size_t i = 0; i < count; ++i) {
        steps.insert(static_cast<int>(i));
    }
    for (bool isShorter = true; isShorter;) {
        isShorter = false;
        for (const int step : std::set<int>(steps)) {
            std::set<int> fewer = steps;
            fewer.erase(step);
            if (!fewer.empty() && Fails(Replay(fewer), fault)) {
                steps = fewer;
                isShorter = true;
            }
        }
    }
    return steps;
}

void Simulation::OnFault(const std::string& fault) {
    std::printf("seed %s, story %d, %d wake-ups, %.3f s into it: %s\n",
                std::to_string(theOptions.seed).c_str(), Number(), m_wakeUps,
                static_cast<double>(VirtualTime::NowMs() - m_startMs) / 1e3, fault.c_str());
    if (theOptions.story < 0) {
        const std::set<int> steps = CutDown(m_story.size(), fault);
        const std::string replay = Replay(steps);
        std::printf("%s:\n",
                    Fails(replay, fault) ? "it is enough that" : "only after the stories before");
        for (const int step : steps) {
            const Step& each = m_story[static_cast<std::size_t>(step)];
            std::printf("%9.3f %s\n", each.atMs / 1e3, each.what.c_str());
        }
        std::printf("replay: simulate%s --log\n", replay.c_str());
    }
    std::fflush(stdout);
    std::filesystem::remove_all(TheRoot().folder);
    std::_Exit(1);
}

void OnAudio(int result, bool connected, const char* address, void* data) {
    theSimulation->TheJudge().OnConnectionEvent(result, connected, address);
    theSimulation->listener(result, connected, address, data);
}

bool ParseOptions(int argc, char** argv) {
    const char* seed = std::getenv("SIMULATION_SEED");
    theOptions.seed = seed == nullptr ? 1 : g_ascii_strtoll(seed, nullptr, 10);
    char* steps = nullptr;
    gint story = -1;
    gboolean log = FALSE;
    const GOptionEntry entries[] = {
        {"seed", 's', 0, G_OPTION_ARG_INT64, &theOptions.seed,
         "What decides everything (default: $SIMULATION_SEED, or 1)", "S"},
        {"wake-ups", 'n', 0, G_OPTION_ARG_INT, &theOptions.wakeUps, "At least so many", "N"},
        {"story", 0, 0, G_OPTION_ARG_INT, &story, "Only this story of the seed", "K"},
        {"steps", 0, 0, G_OPTION_ARG_STRING, &steps, "Only these steps of it", "I,J..."},
        {"log", 'l', 0, G_OPTION_ARG_NONE, &log, "Print what happens", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const CPtr<GOptionContext, g_option_context_free> context(g_option_context_new(nullptr));
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GErrorPtr error;
    if (g_option_context_parse(context.get(), &argc, &argv, Out(error)) == FALSE || argc != 1) {
        std::fprintf(stderr, "simulate: %s\n", error ? error->message : "unexpected argument");
        return false;
    }
    const GStringPtr owner(steps);
    const GStrvPtr numbers(g_strsplit(steps == nullptr ? "" : steps, ",", -1));
    for (char** number = numbers.get(); *number != nullptr; ++number) {
        theOptions.steps.insert(std::atoi(*number));
    }
    theOptions.story = story;
    theOptions.log = log != FALSE;
    return true;
}

}  // namespace

// In place of the platform's functions of those names, which they call.
extern "C" {

int __real_bt_audio_connect(const char* address, bt_audio_profile_type_e type);
int __wrap_bt_audio_connect(const char* address, bt_audio_profile_type_e type) {
    theSimulation->TheJudge().OnConnectAsked(address);
    const int result = __real_bt_audio_connect(address, type);
    if (result != BT_ERROR_NONE) {
        theSimulation->TheJudge().OnConnectRefused(address, result);
    }
    return result;
}

int __real_bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                                    void* data);
int __wrap_bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                                    void* data) {
    theSimulation->listener = callback;
    return __real_bt_audio_set_connection_state_changed_cb(OnAudio, data);
}

int __wrap___dlog_print(log_id_t /*buffer*/, int priority, const char* tag, const char* format,
                        ...) {
    if (theSimulation == nullptr) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const auto text = [&] {
        char buffer[4096];
        va_list copy;
        va_copy(copy, arguments);
        vsnprintf(buffer, sizeof buffer, format, copy);
        va_end(copy);
        return WithoutRoot(buffer);
    };
    theSimulation->TheJudge().OnLog(priority, format, text);
    if (theOptions.log && g_strstr_len(format, -1, "%p") == nullptr) {
        theSimulation->Print(std::string(1, "??DIWE"[priority <= DLOG_ERROR ? priority - 1 : 0]) +
                             " " + tag + " " + text());
    }
    va_end(arguments);
    return 0;
}

}  // extern "C"

int main(int argc, char** argv) {
    if (!ParseOptions(argc, argv)) {
        return kUsage;
    }
    TheRoot();
    static Simulation simulation;
    AutoConnectApp::GetInstance().StartMainLoop();
    std::printf("seed %s: %d wake-ups in %d stories, all as it should be\n",
                std::to_string(theOptions.seed).c_str(), simulation.WakeUps(),
                simulation.Stories());
    return 0;
}
