// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/application/LaunchReceiver.h"

#include <cstring>
#include <optional>
#include <utility>

#include "platform/linux/base/PlatformLog.h"

namespace Platform {

namespace {

constexpr char kDescription[] =
    "<node>"
    "  <interface name='org.freedesktop.Application'>"
    "    <method name='Activate'>"
    "      <arg type='a{sv}' name='platform_data' direction='in'/>"
    "    </method>"
    "    <method name='Open'>"
    "      <arg type='as' name='uris' direction='in'/>"
    "      <arg type='a{sv}' name='platform_data' direction='in'/>"
    "    </method>"
    "    <method name='ActivateAction'>"
    "      <arg type='s' name='action_name' direction='in'/>"
    "      <arg type='av' name='parameter' direction='in'/>"
    "      <arg type='a{sv}' name='platform_data' direction='in'/>"
    "    </method>"
    "  </interface>"
    "</node>";

// Of the parameter of the action; nothing when it is not one a(ss).
std::optional<LaunchExtras> ReadExtras(GVariant* parameter) {
    if (g_variant_n_children(parameter) != 1) {
        return std::nullopt;
    }
    const GVariantPtr boxed(g_variant_get_child_value(parameter, 0));
    const GVariantPtr pairs(g_variant_get_variant(boxed.get()));
    if (!g_variant_is_of_type(pairs.get(), G_VARIANT_TYPE("a(ss)"))) {
        return std::nullopt;
    }
    LaunchExtras extras;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, pairs.get());
    const char* key = nullptr;
    const char* value = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&s)", &key, &value) != FALSE) {
        extras.emplace_back(key, value);
    }
    return extras;
}

// The launch that the arguments of ActivateAction ask for; when they ask for none, `fault` says
// why.
std::optional<Launch> ReadLaunch(GVariant* arguments, std::string& fault) {
    const char* action = nullptr;
    GVariantPtr parameter;
    GVariantPtr platformData;
    g_variant_get(arguments, "(&s@av@a{sv})", &action, static_cast<GVariant**>(Out(parameter)),
                  static_cast<GVariant**>(Out(platformData)));
    const GVariantPtr phone(g_variant_lookup_value(platformData.get(), kPhoneData, nullptr));
    auto extras = ReadExtras(parameter.get());
    if (std::strcmp(action, kLaunchAction) != 0) {
        fault = std::string("unknown action: ") + action;
    } else if (!extras) {
        fault = "the action's parameter is not one array of string pairs";
    } else if (phone && !g_variant_is_of_type(phone.get(), G_VARIANT_TYPE_STRING)) {
        fault = std::string(kPhoneData) + " is not a text";
    } else {
        return Launch{std::move(*extras),
                      phone ? g_variant_get_string(phone.get(), nullptr) : std::string()};
    }
    return std::nullopt;
}

}  // namespace

LaunchReceiver::LaunchReceiver(std::string applicationId, LaunchHandler onLaunch,
                               NameLostHandler onNameLost)
    : m_applicationId(std::move(applicationId)),
      m_onLaunch(std::move(onLaunch)),
      m_onNameLost(std::move(onNameLost)),
      m_description(g_dbus_node_info_new_for_xml(kDescription, nullptr)) {
    m_nameOwner = g_bus_own_name(G_BUS_TYPE_SYSTEM, m_applicationId.c_str(),
                                 G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, OnBusAcquired, nullptr,
                                 OnNameLost, this, nullptr);
}

LaunchReceiver::~LaunchReceiver() {
    if (m_nameOwner != 0) {
        g_bus_unown_name(m_nameOwner);
    }
    if (m_registration != 0) {
        g_dbus_connection_unregister_object(m_bus.get(), m_registration);
    }
}

// What the bus delivered before its answer to the release waits in the loop by then.
void LaunchReceiver::GiveUpName() {
    if (m_nameOwner == 0) {
        return;
    }
    g_bus_unown_name(std::exchange(m_nameOwner, 0));
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    if (m_bus) {
        g_dbus_connection_flush_sync(m_bus.get(), nullptr, nullptr);
    }
}

void LaunchReceiver::OnBusAcquired(GDBusConnection* bus, const char* /*name*/,
                                   gpointer userData) noexcept {
    static const GDBusInterfaceVTable kTable = {OnMethodCall, nullptr, nullptr, {}};
    auto* self = static_cast<LaunchReceiver*>(userData);
    self->m_bus.reset(G_DBUS_CONNECTION(g_object_ref(bus)));
    GErrorPtr error;
    self->m_registration = g_dbus_connection_register_object(
        bus, ObjectPathOf(self->m_applicationId).c_str(), self->m_description->interfaces[0],
        &kTable, self, nullptr, Out(error));
    if (self->m_registration == 0) {
        PLATFORM_ERROR("%s cannot be launched: %s", self->m_applicationId.c_str(), error->message);
    }
}

void LaunchReceiver::OnNameLost(GDBusConnection* bus, const char* name,
                                gpointer userData) noexcept {
    auto* self = static_cast<LaunchReceiver*>(userData);
    PLATFORM_ERROR("%s cannot be launched: %s", name,
                   bus == nullptr ? "the system bus cannot be reached"
                                  : "another process has its name, or the bus refuses it");
    if (self->m_onNameLost) {
        self->m_onNameLost();
    }
}

void LaunchReceiver::OnMethodCall(GDBusConnection* /*bus*/, const char* /*sender*/,
                                  const char* /*path*/, const char* /*interface*/,
                                  const char* method, GVariant* parameters,
                                  GDBusMethodInvocation* invocation, gpointer userData) noexcept {
    auto* self = static_cast<LaunchReceiver*>(userData);
    std::string fault = "nothing can be opened";
    std::optional<Launch> launch;
    if (std::strcmp(method, "ActivateAction") == 0) {
        launch = ReadLaunch(parameters, fault);
    } else if (std::strcmp(method, "Activate") == 0) {
        launch.emplace();
    }
    if (!launch) {
        self->Refuse(invocation, fault);
        return;
    }
    self->m_onLaunch(*launch);
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void LaunchReceiver::Refuse(GDBusMethodInvocation* invocation, const std::string& reason) {
    PLATFORM_WARN("launch of %s by %s refused: %s", m_applicationId.c_str(),
                  g_dbus_method_invocation_get_sender(invocation), reason.c_str());
    g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR,
                                                  G_DBUS_ERROR_INVALID_ARGS, reason.c_str());
}

}  // namespace Platform
