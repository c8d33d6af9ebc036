// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <optional>

#include "common/Address.h"
#include "tools/phone-beacon/Beacon.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

// Exits for --help; empty after an error, which it has printed.
std::optional<PhoneBeacon::Plan> ParseOptions(int argc, char** argv) {
    GStringPtr adapter;
    GStringPtr address;
    gboolean isPairable = FALSE;
    int restartMs = 0;
    char* rawAdapter = nullptr;
    char* rawAddress = nullptr;
    const GOptionEntry entries[] = {
        {"adapter", 'i', 0, G_OPTION_ARG_STRING, &rawAdapter,
         "Which adapter (default: the first one that is on)", "hciN"},
        {"address", 'a', 0, G_OPTION_ARG_STRING, &rawAddress,
         "Whom to name (default: the adapter itself)", "ADDRESS"},
        {"pairable", 'p', 0, G_OPTION_ARG_NONE, &isPairable,
         "Meanwhile others can find this computer and pair with it", nullptr},
        {"restart", 'r', 0, G_OPTION_ARG_INT, &restartMs,
         "Begin the advertisement anew every MS milliseconds", "MS"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const CPtr<GOptionContext, g_option_context_free> context(g_option_context_new(nullptr));
    g_option_context_set_summary(context.get(),
                                 "Advertises as a phone with the TV's application does, and says "
                                 "who connects, until it is stopped.");
    g_option_context_add_main_entries(context.get(), entries, nullptr);
    GErrorPtr error;
    const bool isParsed =
        g_option_context_parse(context.get(), &argc, &argv, Out(error)) != FALSE && argc == 1;
    adapter.reset(rawAdapter);
    address.reset(rawAddress);
    const char* problem = error ? error->message : "unexpected argument";
    if (isParsed && address && !IsAddress(address.get())) {
        problem = "--address needs an address such as A0:11:22:33:44:01";
    } else if (isParsed && restartMs < 0) {
        problem = "--restart needs a number of milliseconds";
    } else if (isParsed) {
        return PhoneBeacon::Plan{adapter ? adapter.get() : "", CanonicalAddress(address.get()),
                                 isPairable != FALSE, restartMs};
    }
    std::fprintf(stderr, "phone-beacon: %s\n", problem);
    return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
    const std::optional<PhoneBeacon::Plan> plan = ParseOptions(argc, argv);
    if (!plan) {
        return kUsage;
    }
    GErrorPtr error;
    const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    if (!bus) {
        std::fprintf(stderr, "phone-beacon: no system bus: %s\n", error->message);
        return kFailed;
    }
    const std::string failure = PhoneBeacon::Beacon(bus.get(), *plan).Run();
    if (!failure.empty()) {
        std::fprintf(stderr, "phone-beacon: %s\n", failure.c_str());
        return kFailed;
    }
    return 0;
}
