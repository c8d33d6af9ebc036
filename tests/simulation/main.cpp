// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "autoconnect/src/AutoConnectApp.h"
#include "platform/bluetooth.h"
#include "platform/linux/base/PlatformLog.h"
#include "tests/simulation/Simulation.h"

// The service in a world that is a story or a scenario: see docs/contributing.md.

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

// The launcher of applications has a thread of its own.
const std::thread::id kMainThread = std::this_thread::get_id();
Simulation::Options theOptions;
Simulation* theSimulation = nullptr;
bt_audio_connection_state_changed_cb theListener = nullptr;

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

// What a run of its own prints, and how it ends.
std::string Run(const std::string& arguments, int* status = nullptr) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    FILE* run = popen((self + arguments).c_str(), "r");
    std::string output;
    std::array<char, 1024> buffer;
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), run) != nullptr) {
        output += buffer.data();
    }
    const int end = pclose(run);
    if (status != nullptr) {
        *status = end;
    }
    return output;
}

bool Fails(const std::string& replay, const std::string& fault) {
    return Run(replay).find(fault) != std::string::npos;
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

// What one does with a story that fails: it is made as short as it can be.
void TellStory(const std::string& fault) {
    const std::vector<Step>& story = theSimulation->TheStory();
    const std::set<int> steps = CutDown(story.size(), fault);
    const std::string replay = Replay(steps);
    std::printf("%s:\n",
                Fails(replay, fault) ? "it is enough that" : "only after the stories before");
    for (const int step : steps) {
        const Step& each = story[static_cast<std::size_t>(step)];
        std::printf("%9.3f %s\n", each.atMs / 1e3, each.what.c_str());
    }
    std::printf("replay: simulate%s --log\n", replay.c_str());
}

void OnFault(const std::string& fault) {
    const bool isStory = !theOptions.scenario;
    const std::string where = isStory ? "seed " + std::to_string(theOptions.seed) + ", story " +
                                            std::to_string(theSimulation->Number())
                                      : "scenario " + theOptions.scenario->name;
    std::printf("%s, %d wake-ups, %.3f s into it: %s\n", where.c_str(), theSimulation->WakeUps(),
                theSimulation->Now(), fault.c_str());
    std::fflush(stdout);
    if (isStory && theOptions.story < 0) {
        TellStory(fault);
    }
    std::fflush(stdout);
    std::filesystem::remove_all(TheRoot().folder);
    std::_Exit(kFailed);
}

// What the libraries complain of, such as a timer that is removed twice.
void OnComplaint(const char* /*domain*/, GLogLevelFlags level, const char* message,
                 void* /*data*/) noexcept {
    if ((level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) != 0) {
        OnFault(message);
    }
}

void OnAudio(int result, bool connected, const char* address, void* data) {
    theSimulation->TheJudge().OnConnectionEvent(result, connected, address);
    theListener(result, connected, address, data);
}

// The only one, if there is one. Each one of several gets a process: the service keeps the position
// in its list as long as it runs.
bool ReadScenario(const std::vector<std::string>& files) {
    std::string error;
    if (files.size() == 1) {
        theOptions.scenario = TvSim::ReadScenario(files[0], error);
    }
    std::fprintf(stderr, "%s%s", error.c_str(), error.empty() ? "" : "\n");
    return error.empty();
}

int RunScenarios(const std::vector<std::string>& files) {
    int failed = 0;
    for (const std::string& file : files) {
        int status = 0;
        std::printf("%s", Run(" --scenario '" + file + "'", &status).c_str());
        failed += status == 0 ? 0 : 1;
    }
    std::printf("%zu scenarios, %d not as they should be\n", files.size(), failed);
    return failed == 0 ? 0 : kFailed;
}

bool ParseOptions(int argc, char** argv, std::vector<std::string>& files) {
    const char* seed = std::getenv("SIMULATION_SEED");
    theOptions.seed = seed == nullptr ? 1 : g_ascii_strtoll(seed, nullptr, 10);
    char* steps = nullptr;
    gint story = -1;
    gboolean log = FALSE;
    gboolean areScenarios = FALSE;
    const GOptionEntry entries[] = {
        {"seed", 's', 0, G_OPTION_ARG_INT64, &theOptions.seed,
         "What decides everything (default: $SIMULATION_SEED, or 1)", "S"},
        {"wake-ups", 'n', 0, G_OPTION_ARG_INT, &theOptions.wakeUps, "At least so many", "N"},
        {"story", 0, 0, G_OPTION_ARG_INT, &story, "Only this story of the seed", "K"},
        {"steps", 0, 0, G_OPTION_ARG_STRING, &steps, "Only these steps of it", "I,J..."},
        {"scenario", 'c', 0, G_OPTION_ARG_NONE, &areScenarios,
         "Play the scenarios in these files instead", nullptr},
        {"log", 'l', 0, G_OPTION_ARG_NONE, &log, "Print what happens", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const CPtr<GOptionContext, g_option_context_free> context(g_option_context_new("[FILE...]"));
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GErrorPtr error;
    if (g_option_context_parse(context.get(), &argc, &argv, Out(error)) == FALSE ||
        (areScenarios == FALSE) != (argc == 1)) {
        std::fprintf(
            stderr, "simulate: %s\n",
            error ? error->message : "--scenario needs files, and without it there are none");
        return false;
    }
    const GStringPtr owner(steps);
    const GStrvPtr numbers(g_strsplit(steps == nullptr ? "" : steps, ",", -1));
    for (char** number = numbers.get(); *number != nullptr; ++number) {
        theOptions.steps.insert(std::atoi(*number));
    }
    theOptions.story = story;
    theOptions.log = log != FALSE;
    files.assign(argv + 1, argv + argc);
    return ReadScenario(files);
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

int __real_bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* data);
int __wrap_bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* data) {
    const int result = theSimulation->TheWorld().TakeSpoiltScan()
                           ? static_cast<int>(BT_ERROR_OPERATION_FAILED)
                           : __real_bt_adapter_le_start_scan(callback, data);
    theSimulation->TheJudge().attempt.OnScanAsked(result);
    return result;
}

int __real_bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                                    void* data);
int __wrap_bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                                    void* data) {
    theListener = callback;
    return __real_bt_audio_set_connection_state_changed_cb(OnAudio, data);
}

int __wrap___dlog_print(log_id_t /*buffer*/, int priority, const char* tag, const char* format,
                        ...) {
    if (theSimulation == nullptr || std::this_thread::get_id() != kMainThread) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    theSimulation->OnLog(priority, tag, format, [&] {
        char buffer[4096];
        va_list copy;
        va_copy(copy, arguments);
        vsnprintf(buffer, sizeof buffer, format, copy);
        va_end(copy);
        // The platform's own lines are printed without their place.
        const char* const end =
            format[0] == PLATFORM_PLACE_ASIDE[0] ? std::strstr(buffer, " > ") : nullptr;
        return WithoutRoot(end == nullptr ? buffer : end + std::strlen(" > "));
    });
    va_end(arguments);
    return 0;
}

}  // extern "C"

int main(int argc, char** argv) {
    std::vector<std::string> files;
    if (!ParseOptions(argc, argv, files)) {
        return kUsage;
    }
    if (files.size() > 1) {
        return RunScenarios(files);
    }
    TheRoot();
    g_log_set_default_handler(OnComplaint, nullptr);
    static const std::unique_ptr<Simulation, void (*)(Simulation*)> simulation(
        theSimulation = new Simulation(theOptions, OnFault), [](Simulation* ended) {
            delete ended;
            theSimulation = nullptr;
        });
    AutoConnectApp::GetInstance().StartMainLoop();
    if (theOptions.scenario) {
        std::printf("%s\n", simulation->Result().c_str());
        return simulation->Succeeded() ? 0 : kFailed;
    }
    std::printf("seed %s: %d wake-ups in %d stories, all as it should be\n",
                std::to_string(theOptions.seed).c_str(), simulation->WakeUps(),
                simulation->Played());
    return 0;
}
