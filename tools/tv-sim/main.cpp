// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <csignal>
#include <cstdio>
#include <string>

#include "common/Source.h"
#include "tools/tv-sim/Scenario.h"
#include "tools/tv-sim/Simulator.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct Options {
    std::string address;  // empty: the system bus
    std::string scenario;
    std::string check;
};

// Takes the text over; empty for NULL.
std::string Take(char* text) {
    const GStringPtr owner(text);
    return text == nullptr ? "" : text;
}

// Exits for --help; empty after an error, which it has printed.
std::optional<Options> ParseOptions(int argc, char** argv) {
    char* raw[3] = {nullptr, nullptr, nullptr};
    const GOptionEntry entries[] = {
        {"address", 'a', 0, G_OPTION_ARG_STRING, &raw[0], "The bus (default: the system bus)",
         "ADDRESS"},
        {"scenario", 's', 0, G_OPTION_ARG_FILENAME, &raw[1], "The world to simulate", "FILE"},
        {"check", 'c', 0, G_OPTION_ARG_FILENAME, &raw[2], "Only say whether FILE is fine", "FILE"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const CPtr<GOptionContext, g_option_context_free> context(g_option_context_new(nullptr));
    g_option_context_set_summary(context.get(),
                                 "Owns org.bluez on a bus, and simulates phones there.");
    g_option_context_set_description(context.get(), TvSim::kScenarioHelp);
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GErrorPtr error;
    const bool parsed =
        g_option_context_parse(context.get(), &argc, &argv, Out(error)) != FALSE && argc == 1;
    Options options{Take(raw[0]), Take(raw[1]), Take(raw[2])};
    if (!parsed) {
        std::fprintf(stderr, "tv-sim: %s\n",
                     error != nullptr ? error->message : "unexpected argument");
        return std::nullopt;
    }
    return options;
}

// Runs until a signal asks it to end (true) or the name is refused or lost (false).
bool Run(TvSim::Scenario scenario, GDBusConnection* connection) {
    const gint64 startUs = g_get_monotonic_time();
    bool isEnded = false;
    bool nameLost = false;
    const auto end = [&isEnded] { isEnded = true; };
    const Source terminate = Source::OnSignal(SIGTERM, end);
    const Source interrupt = Source::OnSignal(SIGINT, end);
    const TvSim::Simulator simulator(
        std::move(scenario), connection,
        [startUs](const std::string& subject, const std::string& what) {
            const auto us = static_cast<double>(g_get_monotonic_time() - startUs);
            std::printf("%.3f %s: %s\n", us / 1e6, subject.c_str(), what.c_str());
            std::fflush(stdout);
        },
        [&nameLost] { nameLost = true; });
    while (!isEnded && !nameLost) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return !nameLost;
}

}  // namespace

int main(int argc, char** argv) {
    const std::optional<Options> options = ParseOptions(argc, argv);
    if (!options) {
        return kUsage;
    }
    const std::string& file = options->check.empty() ? options->scenario : options->check;
    TvSim::Scenario scenario;
    if (!file.empty()) {
        std::string problem;
        std::optional<TvSim::Scenario> read = TvSim::ReadScenario(file, problem);
        if (!read) {
            std::fprintf(stderr, "tv-sim: %s\n", problem.c_str());
            return kUsage;
        }
        scenario = std::move(*read);
    }
    if (!options->check.empty()) {
        std::printf("%s: fine, %zu phones and %s strangers\n", file.c_str(), scenario.phones.size(),
                    std::to_string(scenario.strangers.count).c_str());
        return 0;
    }
    if (!options->address.empty()) {
        g_setenv("DBUS_SYSTEM_BUS_ADDRESS", options->address.c_str(), TRUE);
    }
    GErrorPtr error;
    const GObjectPtr<GDBusConnection> connection(
        g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    if (connection == nullptr) {
        std::fprintf(stderr, "tv-sim: no bus: %s\n", error->message);
        return kFailed;
    }
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    const bool ended = Run(std::move(scenario), connection.get());
    // The farewell must be on the bus before the process is gone.
    g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr);
    return ended ? 0 : kFailed;
}
