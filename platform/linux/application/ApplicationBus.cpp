// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/application/ApplicationBus.h"

#include <unistd.h>

#include <algorithm>

#include "platform/linux/base/DbusError.h"
#include "platform/linux/base/PlatformLog.h"

namespace Platform {

namespace {

constexpr int kQueryTimeoutMs = 2000;

// Takes over a floating `arguments`.
GVariantPtr AskBus(const char* method, GVariant* arguments, const char* replyType) {
    const GVariantPtr held(arguments != nullptr ? g_variant_ref_sink(arguments) : nullptr);
    GErrorPtr error;
    const GObjectPtr<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    GVariantPtr reply;
    if (bus != nullptr) {
        reply.reset(g_dbus_connection_call_sync(
            bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            method, arguments, G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, kQueryTimeoutMs,
            nullptr, Out(error)));
    }
    if (reply == nullptr) {
        PLATFORM_DEBUG("%s failed: %s", method, DescribeError(*error).c_str());
    }
    return reply;
}

}  // namespace

bool IsApplicationId(const std::string& id) {
    return g_dbus_is_name(id.c_str()) && !g_dbus_is_unique_name(id.c_str());
}

std::string ObjectPathOf(const std::string& applicationId) {
    std::string path = "/" + applicationId;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

bool IsMainLoopThread() {
    return gettid() == getpid() || g_main_context_is_owner(nullptr);
}

std::optional<bool> IsRunning(const std::string& applicationId) {
    const GVariantPtr reply =
        AskBus("NameHasOwner", g_variant_new("(s)", applicationId.c_str()), "(b)");
    if (reply == nullptr) {
        return std::nullopt;
    }
    gboolean hasOwner = FALSE;
    g_variant_get(reply.get(), "(b)", &hasOwner);
    return hasOwner != FALSE;
}

std::optional<bool> IsInstalled(const std::string& applicationId) {
    const auto running = IsRunning(applicationId);
    if (running != false) {
        return running;
    }
    const GVariantPtr reply = AskBus("ListActivatableNames", nullptr, "(as)");
    if (reply == nullptr) {
        return std::nullopt;
    }
    CPtr<const char*, g_free> names;
    g_variant_get(reply.get(), "(^a&s)", static_cast<const char***>(Out(names)));
    return g_strv_contains(names.get(), applicationId.c_str()) != FALSE;
}

GVariant* LaunchArguments(const LaunchExtras& extras, const std::string& phone) {
    GVariantBuilder pairs;
    g_variant_builder_init(&pairs, G_VARIANT_TYPE("a(ss)"));
    for (const auto& [key, value] : extras) {
        g_variant_builder_add(&pairs, "(ss)", key.c_str(), value.c_str());
    }
    GVariantDict platformData;
    g_variant_dict_init(&platformData, nullptr);
    if (!phone.empty()) {
        g_variant_dict_insert(&platformData, kPhoneData, "s", phone.c_str());
    }
    return g_variant_new_parsed("(%s, [<%a(ss)>], %@a{sv})", kLaunchAction, &pairs,
                                g_variant_dict_end(&platformData));
}

}  // namespace Platform
