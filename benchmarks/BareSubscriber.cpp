// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gio/gio.h>

#include <initializer_list>

// The floor for an advertisement: a program that subscribes to the signals that the service needs,
// with the same bus library, unpacks each property and does nothing with it. It also answers the
// empty method call that everything else is compared with.

namespace {

constexpr char kName[] = "com.velmora.tv.bench.Bare";
constexpr char kXml[] =
    "<node><interface name='com.velmora.tv.bench.Bare'><method name='Nothing'/></interface></node>";

// What a program remembers of a device.
struct Heard {
    gint16 rssi = 0;
    const void* bytes = nullptr;
    gsize size = 0;
} heard;

void UnpackManufacturerData(GVariant* value) {
    GVariantIter iter;
    g_variant_iter_init(&iter, value);
    guint16 company = 0;
    GVariant* bytes = nullptr;
    while (g_variant_iter_loop(&iter, "{qv}", &company, &bytes)) {
        heard.bytes = g_variant_get_fixed_array(bytes, &heard.size, 1);
    }
}

void OnPropertiesChanged(GVariant* parameters) {
    const char* interface = nullptr;
    GVariantIter* properties = nullptr;
    const char* name = nullptr;
    GVariant* value = nullptr;
    g_variant_get(parameters, "(&sa{sv}as)", &interface, &properties, nullptr);
    while (g_variant_iter_loop(properties, "{&sv}", &name, &value)) {
        if (g_str_equal(name, "RSSI")) {
            heard.rssi = g_variant_get_int16(value);
        } else if (g_str_equal(name, "ManufacturerData")) {
            UnpackManufacturerData(value);
        }
    }
    g_variant_iter_free(properties);
}

void OnSignal(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
              const char* /*interface*/, const char* signal, GVariant* parameters,
              gpointer /*data*/) noexcept {
    if (g_str_equal(signal, "PropertiesChanged")) {
        OnPropertiesChanged(parameters);
    }
}

void OnCall(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
            const char* /*interface*/, const char* /*method*/, GVariant* /*parameters*/,
            GDBusMethodInvocation* invocation, gpointer /*data*/) noexcept {
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void OnBus(GDBusConnection* bus, const char* /*name*/, gpointer /*data*/) noexcept {
    static const GDBusInterfaceVTable table = {OnCall, nullptr, nullptr, {}};
    g_dbus_connection_register_object(bus, "/",
                                      g_dbus_node_info_new_for_xml(kXml, nullptr)->interfaces[0],
                                      &table, nullptr, nullptr, nullptr);
    g_dbus_connection_signal_subscribe(bus, "org.bluez", "org.freedesktop.DBus.Properties",
                                       "PropertiesChanged", nullptr, nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, OnSignal, nullptr, nullptr);
    for (const char* signal : {"InterfacesAdded", "InterfacesRemoved"}) {
        g_dbus_connection_signal_subscribe(bus, "org.bluez", "org.freedesktop.DBus.ObjectManager",
                                           signal, nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                           OnSignal, nullptr, nullptr);
    }
}

}  // namespace

int main() {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_bus_own_name(
        G_BUS_TYPE_SYSTEM, kName, G_BUS_NAME_OWNER_FLAGS_NONE, OnBus,
        [](GDBusConnection*, const char* name, gpointer) {
            g_printerr("Name acquired %s\n", name);
        },
        nullptr, nullptr, nullptr);
    g_main_loop_run(loop);
}
