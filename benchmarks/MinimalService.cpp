// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gio/gio.h>

#include <cstdio>

// What a service costs that owns a name on the system bus and does nothing else. It says
// the same line as the real one when it has its name.

namespace {

void OnNameAcquired(GDBusConnection* /*connection*/, const char* name, gpointer /*data*/) noexcept {
    std::fprintf(stderr, "Name acquired %s\n", name);
}

}  // namespace

int main() {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_bus_own_name(G_BUS_TYPE_SYSTEM, "com.velmora.tv.bt.autoconnect", G_BUS_NAME_OWNER_FLAGS_NONE,
                   nullptr, OnNameAcquired, nullptr, nullptr, nullptr);
    g_main_loop_run(loop);
}
