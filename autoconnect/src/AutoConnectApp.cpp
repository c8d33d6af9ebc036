// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/AutoConnectApp.h"

#include <functional>
#include <map>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "autoconnect/src/AudioConnectionListener.h"
#include "autoconnect/src/DbusInterface.h"
#include "common/CHandle.h"
#include "utility/BluetoothUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/TvStatusUtil.h"
#include "utility/VconfUtil.h"

// Destroyed when the process exits, before the tables and the launcher thread of the utility layer,
// which were made earlier.
AutoConnectApp& AutoConnectApp::GetInstance() {
    static AutoConnectApp instance;
    return instance;
}

AutoConnectApp::AutoConnectApp() {
    BTLOG_TRACE();
}

AutoConnectApp::~AutoConnectApp() {
    BTLOG_TRACE_AT(30);
}

// Asking for the bus name before there is a loop is safe: the loop dispatches the answers, so no
// callback runs before it does.
void AutoConnectApp::StartMainLoop() {
    BTLOG_TRACE();
    // For as long as the loop runs: after a failed connection the next phone is tried.
    const AudioConnectionListener listener(OnAudioConnectionState, this);
    InitDbus();
    m_MainLoop = g_main_loop_new(nullptr, FALSE);
    g_main_loop_run(m_MainLoop);
}

// The loop first runs the callbacks that are ready now, so one more command may still arrive.
void AutoConnectApp::CloseMainLoop() {
    BTLOG_TRACE();
    try {
        if (m_MainLoop != nullptr) {
            g_main_loop_quit(m_MainLoop);
        }
    } catch (const std::exception& e) {
        BTLOG_ERROR("%s", e.what());
    }
}

// After a failure the service runs on without a name, until somebody reads the log and stops it.
void AutoConnectApp::InitDbus() {
    BTLOG_TRACE_AT(59);
    m_InterfaceVTable.method_call = OnMethodCall;
    GErrorPtr error;
    m_IntrospectionData = g_dbus_node_info_new_for_xml(kIntrospectionXml, Out(error));
    if (error) {
        BTLOG_ERROR("[DBusServer] g_dbus_node_info_new_for_xml return error.");
        return;
    }
    m_OwnerId = g_bus_own_name(G_BUS_TYPE_SYSTEM, kServiceName, G_BUS_NAME_OWNER_FLAGS_NONE,
                               OnBusAcquired, OnNameAcquired, OnNameLost, this, nullptr);
}

void AutoConnectApp::OnBusAcquired(GDBusConnection* connection, const gchar* /*name*/,
                                   gpointer user_data) noexcept {
    BTLOG_TRACE();
    auto* pThis = static_cast<AutoConnectApp*>(user_data);
    pThis->m_Connection = connection;
    GDBusInterfaceInfo* interface = pThis->m_IntrospectionData->interfaces[0];
    BTLOG_INFO("pThis->m_IntrospectionData:%p", static_cast<void*>(pThis->m_IntrospectionData));
    // The document names no path, and not every printf takes a NULL for a text.
    const gchar* path = pThis->m_IntrospectionData->path;
    BTLOG_INFO("pThis->m_IntrospectionData->path:%s", path == nullptr ? "(null)" : path);
    BTLOG_INFO("pThis->m_IntrospectionData->interfaces[0]:%s", interface->name);
    // Without a method table: commands are signals, and a call gets its answer from the bus layer.
    GErrorPtr error;
    pThis->m_RegistrationId = g_dbus_connection_register_object(
        connection, kObjectPath, interface, nullptr, pThis, nullptr, Out(error));
    if (error) {
        BTLOG_ERROR("error : %s", error->message);
    }
    g_dbus_connection_signal_subscribe(connection, nullptr, kInterfaceName, nullptr, kObjectPath,
                                       nullptr, G_DBUS_SIGNAL_FLAGS_NONE, OnSiganl, pThis, nullptr);
}

void AutoConnectApp::OnNameAcquired(GDBusConnection* /*connection*/, const gchar* name,
                                    gpointer /*user_data*/) noexcept {
    BTLOG_TRACE();
    BTLOG_INFO("Name acquired %s", name);
}

void AutoConnectApp::OnNameLost(GDBusConnection* /*connection*/, const gchar* /*name*/,
                                gpointer /*user_data*/) noexcept {
    BTLOG_TRACE();
}

void AutoConnectApp::OnSiganl(GDBusConnection* /*connection*/, const gchar* /*sender*/,
                              const gchar* /*object_path*/, const gchar* /*interface_name*/,
                              const gchar* signal_name, GVariant* parameters,
                              gpointer user_data) noexcept {
    try {
        BTLOG_INFO("%s recieved", signal_name);
        static_cast<AutoConnectApp*>(user_data)->HandleDbusMessage(signal_name, parameters);
    } catch (const std::exception& e) {
        BTLOG_ERROR("Exception : %s", e.what());
    }
}

void AutoConnectApp::OnMethodCall(GDBusConnection* /*connection*/, const gchar* /*sender*/,
                                  const gchar* /*object_path*/, const gchar* /*interface_name*/,
                                  const gchar* method_name, GVariant* parameters,
                                  GDBusMethodInvocation* /*invocation*/,
                                  gpointer user_data) noexcept {
    BTLOG_TRACE();
    BTLOG_INFO("methodName : %s", method_name);
    static_cast<AutoConnectApp*>(user_data)->HandleDbusMessage(method_name, parameters);
}

void AutoConnectApp::DeInitDbus() {
    BTLOG_TRACE();
    // InitDbus failed, or a second unknown command arrived before the loop ended.
    if (m_IntrospectionData == nullptr) {
        return;
    }
    // Giving up the name may release the last reference to the connection.
    const GObjectPtr<GDBusConnection> connection(
        m_Connection == nullptr ? nullptr : G_DBUS_CONNECTION(g_object_ref(m_Connection)));
    g_bus_unown_name(m_OwnerId);
    g_dbus_node_info_unref(m_IntrospectionData);
    m_IntrospectionData = nullptr;
    // The bus may never have been reached, and then no object was registered either.
    if (connection && m_RegistrationId != kNoId) {
        g_dbus_connection_unregister_object(connection.get(), m_RegistrationId);
    }
}

void AutoConnectApp::HandleDbusMessage(const std::string& name, GVariant* parameters) {
    const std::map<std::string, std::function<void(GVariant*)>> commands = {
        {kPrepareCommand, [this](GVariant* p) { OnPrePareAndDoAutoConnect(p); }},
        {kMobileUpdateCommand, [this](GVariant* p) { OnAutoConMobileUpdate(p); }},
    };
    const auto command = commands.find(name);
    if (command == commands.end()) {
        DeInitDbus();
        CloseMainLoop();
        return;
    }
    command->second(parameters);
}

void AutoConnectApp::OnPrePareAndDoAutoConnect(GVariant* /*parameters*/) {
    BTLOG_INFO("+");
    PrepareZemiAutoConnection();
    if (Util::BluetoothUtil::GetAdapterState() == BT_ADAPTER_ENABLED) {
        DoZemiAutoConnection();
    }
}

void AutoConnectApp::OnAutoConMobileUpdate(GVariant* parameters) {
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(s)"))) {
        BTLOG_ERROR("AutoConMobileUpdate takes (s), not %s", g_variant_get_type_string(parameters));
        return;
    }
    GStringPtr text;
    g_variant_get(parameters, "(s)", static_cast<char**>(Out(text)));
    BTLOG_INFO("+");
    if (Util::SystemConfigUtil::IsZemiTV()) {
        m_BtAutoConnect.UpdateMobileList(text.get());
    }
}

bool AutoConnectApp::CheckZemiAutoConnectCondition() const {
    int blocked = 0;
    Util::VconfUtil::GetVconf(Util::VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL, blocked);
    const int reason = Util::TvStatusUtil::GetDeviceWakeUpReason();
    if (!Conditions::IsWakeUpReasonAccepted(reason) || Conditions::IsBlocked(blocked)) {
        BTLOG_WARN("Not support power reason");
        return false;
    }
    return true;
}

bool AutoConnectApp::IsConnectionAllowed(const LogPlace& place) const {
    if (!Util::SystemConfigUtil::IsZemiTV()) {
        BTLOG_FOR(place, DLOG_INFO, "Not the zemi tv");
        return false;
    }
    if (!CheckZemiAutoConnectCondition()) {
        BTLOG_FOR(place, DLOG_INFO, "This is not zemi auto connect condition");
        return false;
    }
    return true;
}

void AutoConnectApp::PrepareZemiAutoConnection() {
    if (!IsConnectionAllowed(BTLOG_HERE)) {
        return;
    }
    BTLOG_INFO("SetWakupTime for btautoconnect");
    m_BtAutoConnect.SetWakeUpTime(true);
}

void AutoConnectApp::DoZemiAutoConnection() {
    if (IsConnectionAllowed(BTLOG_HERE) && m_BtAutoConnect.IsWakeUpTime()) {
        BTLOG_INFO("Start ZEMI bluetooth auto connection");
        m_BtAutoConnect.StartAutoConnect();
    }
}

void AutoConnectApp::OnAudioConnectionState(int result, bool connected, const char* remote_address,
                                            void* user_data) noexcept {
    static_cast<AutoConnectApp*>(user_data)->m_BtAutoConnect.OnAudioSinkConnectionState(
        result, connected, remote_address);
}
