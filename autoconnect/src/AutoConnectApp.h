// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <string>

#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"
#include "autoconnect/src/AutoConnectDbg.h"

// The service's shell: the one instance owns the engine, the bus name and the main loop, and turns
// the signals on its D-Bus interface into work of the engine.
//
// Commands are signals on the interface "com.velmora.tv.bt.autoconnect" of the object
// "/com/velmora/tv/bt/autoconnect" on the system bus, from any sender that the bus policy allows:
//
//     PrePareAndDoAutoConnect (any arguments)  the TV woke: open the wake-up window and, with
//                                              Bluetooth on, start an attempt
//     AutoConMobileUpdate (s)                  a phone changed its setting; the JSON text is
//                                              MobileList::UpdateList's
//
// Any other name stops the service, "UpdateList" of the introspection data included. Main thread
// only.
class AutoConnectApp {
public:
    static AutoConnectApp& GetInstance();
    AutoConnectApp(const AutoConnectApp&) = delete;
    AutoConnectApp& operator=(const AutoConnectApp&) = delete;

    // Runs the service; returns when a command stopped it.
    void StartMainLoop();
    // Makes StartMainLoop return; does nothing before the loop exists.
    void CloseMainLoop();

    // Asks for the bus name. The service runs on without it: an introspection text that does not
    // parse is logged as an error; a name that is not obtained shows only in OnNameLost's trace.
    void InitDbus();
    // Gives up the bus name, then the object. Does nothing for what InitDbus did not get.
    void DeInitDbus();

    // Does what the command `name` asks for; `parameters` are the message's and stay the caller's.
    void HandleDbusMessage(const std::string& name, GVariant* parameters);

private:
    AutoConnectApp();
    ~AutoConnectApp();

    void OnPrePareAndDoAutoConnect(GVariant* parameters);
    void OnAutoConMobileUpdate(GVariant* parameters);
    // Whether the TV woke for a reason that allows an automatic connection.
    [[nodiscard]] bool CheckZemiAutoConnectCondition() const;
    // The same, on a TV that connects phones by itself; a refusal is logged for `place`.
    [[nodiscard]] bool IsConnectionAllowed(const LogPlace& place) const;
    void PrepareZemiAutoConnection();
    void DoZemiAutoConnection();

    // Callbacks of the bus and of the platform; `user_data` is the instance.
    static void OnBusAcquired(GDBusConnection* connection, const gchar* name,
                              gpointer user_data) noexcept;
    static void OnNameAcquired(GDBusConnection* connection, const gchar* name,
                               gpointer user_data) noexcept;
    static void OnNameLost(GDBusConnection* connection, const gchar* name,
                           gpointer user_data) noexcept;
    static void OnSiganl(GDBusConnection* connection, const gchar* sender, const gchar* object_path,
                         const gchar* interface_name, const gchar* signal_name,
                         GVariant* parameters, gpointer user_data) noexcept;
    static void OnMethodCall(GDBusConnection* connection, const gchar* sender,
                             const gchar* object_path, const gchar* interface_name,
                             const gchar* method_name, GVariant* parameters,
                             GDBusMethodInvocation* invocation, gpointer user_data) noexcept;
    static void OnAudioConnectionState(int result, bool connected, const char* remote_address,
                                       void* user_data) noexcept;

    static constexpr guint kNoId = 0xFFFFFFFF;

    GMainLoop* m_MainLoop = nullptr;  // lives as long as the process
    GDBusInterfaceVTable m_InterfaceVTable = {};
    GDBusNodeInfo* m_IntrospectionData = nullptr;  // owned from InitDbus to DeInitDbus
    guint m_OwnerId = kNoId;
    guint m_RegistrationId = kNoId;
    GDBusConnection* m_Connection = nullptr;  // not owned
    CBtAutoConnect m_BtAutoConnect;
};
