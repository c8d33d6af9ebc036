// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "common/CHandle.h"
#include "tools/scenario-runner/ScenarioRun.h"
#include "tools/tv-sim/Scenario.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

// Exits for --help; empty after an error, which it has printed.
std::optional<ScenarioRunner::Options> ParseOptions(int argc, char** argv) {
    gboolean keep = FALSE;
    gboolean quiet = FALSE;
    gboolean log = FALSE;
    char* raw[2] = {nullptr, nullptr};
    const GOptionEntry entries[] = {
        {"bin-dir", 'b', 0, G_OPTION_ARG_FILENAME, &raw[0],
         "Where the programs are (default: in this one's folder)", "DIR"},
        {"keep", 'k', 0, G_OPTION_ARG_NONE, &keep, "Keep the run's directory, with its logs",
         nullptr},
        {"log", 'v', 0, G_OPTION_ARG_NONE, &log, "Also print the service's log, to standard error",
         nullptr},
        {"quiet", 'q', 0, G_OPTION_ARG_NONE, &quiet, "Print only the last line", nullptr},
        {"colour", 'c', 0, G_OPTION_ARG_STRING, &raw[1], "Colours in the log (default: auto)",
         "auto|always|never"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const CPtr<GOptionContext, g_option_context_free> context(
        g_option_context_new("SCENARIO_FILE"));
    g_option_context_set_summary(context.get(),
                                 "Runs the service against simulated phones on a "
                                 "bus of its own and prints the result.\n"
                                 "Status 0: what the scenario expects; 1: "
                                 "something else; 2: wrong use or scenario.");
    g_option_context_set_description(context.get(), TvSim::kScenarioHelp);
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GErrorPtr error;
    const bool parsed = g_option_context_parse(context.get(), &argc, &argv, Out(error)) != FALSE;
    const GStringPtr binDir(raw[0]);
    const GStringPtr colourText(raw[1]);
    const std::string colour = colourText == nullptr ? "auto" : colourText.get();
    const char* problem = !parsed     ? error->message
                          : argc != 2 ? "exactly one scenario is needed"
                          : colour != "auto" && colour != "always" && colour != "never"
                              ? "--colour is auto, always or never"
                              : nullptr;
    if (problem != nullptr) {
        std::fprintf(stderr, "scenario-runner: %s\n", problem);
        return std::nullopt;
    }
    std::error_code unreadable;
    const auto ownFile = std::filesystem::read_symlink("/proc/self/exe", unreadable);
    return ScenarioRunner::Options{
        binDir == nullptr ? ownFile.parent_path() : std::filesystem::absolute(binDir.get()),
        argv[1],
        keep != FALSE,
        quiet != FALSE,
        log != FALSE,
        colour == "always" || (colour == "auto" && isatty(STDERR_FILENO) != 0)};
}

int RunScenario(const ScenarioRunner::Options& options, const TvSim::Scenario& scenario) {
    std::string error;
    auto workspace = ScenarioRunner::Workspace::Make(options.binDir + "/media-player", error);
    if (!workspace) {
        std::fprintf(stderr, "scenario-runner: %s\n", error.c_str());
        return kFailed;
    }
    if (options.keep) {
        workspace->Keep();
        std::fprintf(stderr, "scenario-runner: the run is kept in %s\n", workspace->Path().c_str());
    }
    std::string result;
    const bool succeeded = ScenarioRunner::Run(options, scenario, *workspace, result);
    std::printf("%s\n", result.c_str());
    return succeeded ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    const std::optional<ScenarioRunner::Options> options = ParseOptions(argc, argv);
    if (!options) {
        return kUsage;
    }
    std::string error;
    const std::optional<TvSim::Scenario> scenario =
        TvSim::ReadScenario(options->scenarioFile, error);
    if (!scenario) {
        std::fprintf(stderr, "scenario-runner: %s\n", error.c_str());
        return kUsage;
    }
    return RunScenario(*options, *scenario);
}
