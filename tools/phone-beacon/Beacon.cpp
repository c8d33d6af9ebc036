// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/phone-beacon/Beacon.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <tuple>

#include "common/AdvertisingData.h"
#include "common/Source.h"

namespace PhoneBeacon {
namespace {

constexpr const char* kDaemon = "org.bluez";
constexpr const char* kAdapterInterface = "org.bluez.Adapter1";
constexpr const char* kDeviceInterface = "org.bluez.Device1";
constexpr const char* kManagerInterface = "org.bluez.LEAdvertisingManager1";
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* kObject = "/phone_beacon/advertisement";
constexpr int kAnswerMs = 10000;

constexpr char kXml[] = R"(<node><interface name='org.bluez.LEAdvertisement1'>
  <method name='Release'/>
  <property name='Type' type='s' access='read'/>
  <property name='ManufacturerData' type='a{qv}' access='read'/>
</interface></node>)";

void Print(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

struct Answer {
    GVariantPtr value;
    GErrorPtr error;
    bool isThere = false;
};

void OnAnswer(GObject* bus, GAsyncResult* result, gpointer data) noexcept {
    auto* answer = static_cast<Answer*>(data);
    answer->value.reset(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, Out(answer->error)));
    answer->isThere = true;
}

}  // namespace

Beacon::~Beacon() {
    m_daemon = {};
    if (m_isRegistered) {
        Ask(m_path, kManagerInterface, "UnregisterAdvertisement", g_variant_new("(o)", kObject));
    }
    std::for_each(m_switchedOn.rbegin(), m_switchedOn.rend(),
                  [this](const char* property) { std::ignore = SetProperty(property, false); });
    if (m_object != 0) {
        g_dbus_connection_unregister_object(m_bus, m_object);
    }
}

std::string Beacon::Run() {
    const auto end = [this] { End(""); };
    const Source interrupt = Source::OnSignal(SIGINT, end);
    const Source terminate = Source::OnSignal(SIGTERM, end);
    m_devices = BusWatch::OnSignal(m_bus, kDaemon, kPropertiesInterface, "PropertiesChanged",
                                   OnChanged, this);
    if (!FindAdapter() || !Export() ||
        (m_plan.isPairable && !(SwitchOn("Pairable") && SwitchOn("Discoverable"))) || !Register()) {
        return m_problem;
    }
    m_daemon = BusWatch::OnName(m_bus, kDaemon, nullptr, OnDaemonGone, this);
    Print(m_plan.adapter + " advertises " + m_plan.address);
    Timer restart;
    if (m_plan.restartMs > 0) {
        restart = Timer::Every(m_plan.restartMs, [this] { Restart(); });
    }
    while (!m_isOver) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return m_endReason;
}

void Beacon::End(const std::string& reason) {
    m_endReason = reason;
    m_isOver = true;
}

GVariantPtr Beacon::Ask(const std::string& path, const char* interface, const char* method,
                        GVariant* arguments) {
    Answer answer;
    g_dbus_connection_call(m_bus, kDaemon, path.c_str(), interface, method, arguments, nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, kAnswerMs, nullptr, OnAnswer, &answer);
    while (!answer.isThere) {
        g_main_context_iteration(nullptr, TRUE);
    }
    if (answer.error) {
        g_dbus_error_strip_remote_error(answer.error.get());
        m_problem = std::string(method) + ": " + answer.error->message;
    }
    return std::move(answer.value);
}

bool Beacon::FindAdapter() {
    const GVariantPtr reply = Ask("/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a{oa{sa{sv}}})"))) {
        m_problem = "bluetoothd cannot be asked: " + m_problem;
        return false;
    }
    m_problem = m_plan.adapter.empty() ? "there is no adapter" : m_plan.adapter + " is not there";
    const GVariantPtr objects(g_variant_get_child_value(reply.get(), 0));
    for (gsize i = 0; i < g_variant_n_children(objects.get()) && m_path.empty(); ++i) {
        const GVariantPtr object(g_variant_get_child_value(objects.get(), i));
        const char* path = nullptr;
        GVariantPtr interfaces;
        g_variant_get(object.get(), "{&o@a{sa{sv}}}", &path,
                      static_cast<GVariant**>(Out(interfaces)));
        Consider(path, interfaces.get());
    }
    return !m_path.empty();
}

void Beacon::Consider(const std::string& path, GVariant* interfaces) {
    const std::string name = path.substr(path.rfind('/') + 1);
    const GVariantPtr adapter(
        g_variant_lookup_value(interfaces, kAdapterInterface, G_VARIANT_TYPE_VARDICT));
    if (!adapter || (!m_plan.adapter.empty() && name != m_plan.adapter)) {
        return;
    }
    gboolean isPowered = FALSE;
    g_variant_lookup(adapter.get(), "Powered", "b", &isPowered);
    if (isPowered == FALSE) {
        m_problem = name + " is off: bluetoothctl power on";
    } else if (!GVariantPtr(g_variant_lookup_value(interfaces, kManagerInterface, nullptr))) {
        m_problem = name + " cannot advertise over Bluetooth LE";
    } else {
        const char* address = "";
        g_variant_lookup(adapter.get(), "Address", "&s", &address);
        m_path = path;
        m_plan.adapter = name;
        m_plan.address = m_plan.address.empty() ? address : m_plan.address;
    }
}

bool Beacon::SwitchOn(const char* property) {
    const GVariantPtr reply = Ask(m_path, kPropertiesInterface, "Get",
                                  g_variant_new("(ss)", kAdapterInterface, property));
    if (!reply) {
        return false;
    }
    const GVariantPtr isOn(g_variant_ref_sink(g_variant_new_parsed("(<true>,)")));
    if (g_variant_equal(reply.get(), isOn.get()) != FALSE) {
        return true;
    }
    m_switchedOn.push_back(property);
    return SetProperty(property, true);
}

bool Beacon::SetProperty(const char* property, bool value) {
    return Ask(m_path, kPropertiesInterface, "Set",
               g_variant_new("(ssv)", kAdapterInterface, property,
                             g_variant_new_boolean(static_cast<gboolean>(value)))) != nullptr;
}

bool Beacon::Export() {
    static const GDBusInterfaceVTable table = {OnCall, OnGet, nullptr, {}};
    const GDBusNodeInfoPtr info(g_dbus_node_info_new_for_xml(kXml, nullptr));
    m_object = g_dbus_connection_register_object(m_bus, kObject, info->interfaces[0], &table, this,
                                                 nullptr, nullptr);
    return m_object != 0;
}

bool Beacon::Register() {
    const bool isDone = Ask(m_path, kManagerInterface, "RegisterAdvertisement",
                            g_variant_new("(oa{sv})", kObject, nullptr)) != nullptr;
    m_isRegistered |= isDone;
    return isDone;
}

// Where bluetoothd is busy or the adapter is off for a moment, the next time helps.
void Beacon::Restart() {
    if (!std::exchange(m_isRestarting, true)) {
        Ask(m_path, kManagerInterface, "UnregisterAdvertisement", g_variant_new("(o)", kObject));
        static_cast<void>(Register());
        m_isRestarting = false;
    }
}

void Beacon::OnCall(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                    const char* /*interface*/, const char* /*method*/, GVariant* /*arguments*/,
                    GDBusMethodInvocation* invocation, gpointer self) noexcept {
    g_dbus_method_invocation_return_value(invocation, nullptr);
    auto* beacon = static_cast<Beacon*>(self);
    beacon->m_isRegistered = false;
    if (beacon->m_plan.restartMs == 0) {
        beacon->End("bluetoothd ended the advertisement");
    }
}

GVariant* Beacon::OnGet(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                        const char* /*interface*/, const char* property, GError** /*error*/,
                        gpointer self) noexcept {
    if (std::strcmp(property, "Type") == 0) {
        return g_variant_new_string("peripheral");
    }
    const std::vector<std::uint8_t> content =
        MakePhoneContent(static_cast<Beacon*>(self)->m_plan.address);
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE("a{qv}"));
    g_variant_builder_add(
        &entries, "{qv}", kNoCompany,
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, content.data(), content.size(), 1));
    return g_variant_builder_end(&entries);
}

void Beacon::OnChanged(GDBusConnection* /*bus*/, const char* /*sender*/, const char* path,
                       const char* /*interface*/, const char* /*signal*/, GVariant* parameters,
                       gpointer self) noexcept {
    const std::string prefix = static_cast<Beacon*>(self)->m_path + "/dev_";
    if (std::strncmp(path, prefix.c_str(), prefix.size()) != 0 ||
        !g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sa{sv}as)"))) {
        return;
    }
    const char* interface = nullptr;
    GVariantPtr values;
    gboolean isConnected = FALSE;
    g_variant_get(parameters, "(&s@a{sv}as)", &interface, static_cast<GVariant**>(Out(values)),
                  nullptr);
    if (std::strcmp(interface, kDeviceInterface) == 0 &&
        g_variant_lookup(values.get(), "Connected", "b", &isConnected) != FALSE) {
        std::string address = path + prefix.size();
        std::replace(address.begin(), address.end(), '_', ':');
        Print(address + (isConnected == FALSE ? " left" : " connected"));
    }
}

void Beacon::OnDaemonGone(GDBusConnection* /*bus*/, const char* /*name*/, gpointer self) noexcept {
    auto* beacon = static_cast<Beacon*>(self);
    beacon->m_isRegistered = false;
    beacon->m_switchedOn.clear();
    beacon->End("bluetoothd left the bus");
}

}  // namespace PhoneBeacon
