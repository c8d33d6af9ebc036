// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "common/CHandle.h"
#include "tools/scenario-runner/ScenarioRun.h"
#include "tools/tv-sim/ScenarioFile.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

std::string OwnDirectory() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

bool ParseColour(const std::string& text, bool& colour) {
    colour = text == "always" || (text == "auto" && isatty(STDERR_FILENO) != 0);
    return text == "always" || text == "auto" || text == "never";
}

// Exits for --help; empty after an error, which it has printed.
std::optional<ScenarioRunner::Options> ParseOptions(int argc, char** argv) {
    gboolean keep = FALSE;
    gboolean quiet = FALSE;
    char* raw[2] = {nullptr, nullptr};
    const GOptionEntry entries[] = {
        {"bin-dir", 'b', 0, G_OPTION_ARG_FILENAME, &raw[0],
         "Where the programs are (default: beside this one)", "DIR"},
        {"keep", 'k', 0, G_OPTION_ARG_NONE, &keep, "Keep the run's directory, with its logs",
         nullptr},
        {"quiet", 'q', 0, G_OPTION_ARG_NONE, &quiet, "Print the last line alone", nullptr},
        {"colour", 'c', 0, G_OPTION_ARG_STRING, &raw[1], "Colours in the log (default: auto)",
         "auto|always|never"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const CPtr<GOptionContext, g_option_context_free> context(
        g_option_context_new("SCENARIO_FILE"));
    g_option_context_set_summary(
        context.get(),
        "Runs the service against simulated phones on a bus of its own and says what came of it.\n"
        "Status 0: what the scenario expects; 1: something else; 2: wrong use or scenario.");
    g_option_context_set_description(context.get(), TvSim::kScenarioHelp);
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GErrorPtr error;
    const bool parsed = g_option_context_parse(context.get(), &argc, &argv, Out(error)) != FALSE;
    const GStringPtr binDir(raw[0]);
    const GStringPtr colour(raw[1]);
    ScenarioRunner::Options options;
    if (!parsed || argc != 2) {
        std::fprintf(stderr, "scenario-runner: %s\n",
                     error != nullptr ? error->message : "exactly one scenario is needed");
        return std::nullopt;
    }
    if (!ParseColour(colour == nullptr ? "auto" : colour.get(), options.colour)) {
        std::fprintf(stderr, "scenario-runner: --colour is auto, always or never\n");
        return std::nullopt;
    }
    options.binDir = std::filesystem::absolute(binDir == nullptr ? OwnDirectory() : binDir.get());
    options.scenarioFile = argv[1];
    options.keep = keep != FALSE;
    options.quiet = quiet != FALSE;
    return options;
}

int RunScenario(const ScenarioRunner::Options& options, TvSim::Scenario scenario) {
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
    ScenarioRunner::ScenarioRun run(options, std::move(scenario), *workspace);
    const std::string result = run.Run();
    std::printf("%s\n", result.c_str());
    return run.Succeeded() ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    const std::optional<ScenarioRunner::Options> options = ParseOptions(argc, argv);
    if (!options) {
        return kUsage;
    }
    std::string error;
    std::optional<TvSim::Scenario> scenario = TvSim::ReadScenario(options->scenarioFile, error);
    if (!scenario) {
        std::fprintf(stderr, "scenario-runner: %s\n", error.c_str());
        return kUsage;
    }
    return RunScenario(*options, std::move(*scenario));
}
