// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/CHandle.h"
#include "tools/tv-sim/Event.h"
#include "tools/tv-sim/MethodCall.h"
#include "tools/tv-sim/Value.h"

namespace TvSim {

// The objects of the simulated daemon on a bus connection: the object manager on "/", properties,
// introspection and the dispatch of method calls to whoever simulates the object. It takes over
// every call to "/" and to what lies below /org/bluez on that connection and leaves other paths
// alone. Calls are handled on the thread's default main context of the constructor, in the order
// of their arrival; the errors are those that the real daemon's D-Bus library gives.
class ObjectTree {
public:
    using CallHandler = std::function<void(MethodCall call)>;
    using SetHandler =
        std::function<void(const std::string& property, GVariant* value, MethodCall call)>;
    struct Interface {
        std::string name;  // one that FindInterfaceInfo knows
        Properties properties;
        CallHandler onCall;  // a call of a declared method with matching arguments
        SetHandler onSet;    // a new value for a writable property, of its declared type
    };

    ObjectTree(GDBusConnection* connection, EventSink say);
    ~ObjectTree();
    ObjectTree(const ObjectTree&) = delete;
    ObjectTree& operator=(const ObjectTree&) = delete;

    // Adds the interface to the object, which is made when it is not there, and announces it.
    void Add(const std::string& path, Interface interface);
    // Removes the object and all below it, the deepest first; nothing when it is not there.
    void Remove(const std::string& path);
    [[nodiscard]] bool Has(const std::string& path) const;

    // Changes properties in one signal; `invalidated` ones are removed. Nothing happens when the
    // interface is not there.
    void Change(const std::string& path, const std::string& interface, const Properties& changed,
                const std::vector<std::string>& invalidated = {});
    // Borrowed; null when there is no such property now.
    [[nodiscard]] GVariant* Get(const std::string& path, const std::string& interface,
                                const std::string& property) const;

    // Calls of these methods, of any interface, are taken and never answered.
    void SetSilentMethods(const std::vector<std::string>& methods);
    // The next call of each method is refused with its error.
    void RefuseOnce(const std::vector<std::pair<std::string, std::string>>& errors);

private:
    using Interfaces = std::map<std::string, Interface>;
    struct Inbox;
    struct Delivery;

    static GDBusMessage* OnMessage(GDBusConnection* connection, GDBusMessage* message,
                                   gboolean incoming, gpointer userData) noexcept;
    static gboolean OnDelivery(gpointer userData) noexcept;

    void Dispatch(MethodCall call);
    void DispatchStandard(MethodCall call, const Interfaces& interfaces);
    void GetProperty(MethodCall call, const Interfaces& interfaces);
    void GetAllProperties(MethodCall call, const Interfaces& interfaces);
    void SetProperty(MethodCall call, const Interfaces& interfaces);
    void GetManagedObjects(MethodCall call);
    void Introspect(MethodCall call, const Interfaces& interfaces);
    [[nodiscard]] bool HasBelow(const std::string& path) const;
    void EmitOnManager(const char* signal, GVariant* arguments);

    GObjectPtr<GDBusConnection> m_connection;
    EventSink m_say;
    std::map<std::string, Interfaces> m_objects;  // by path
    std::set<std::string> m_silentMethods;
    std::map<std::string, std::string> m_refusals;  // error by method
    std::shared_ptr<Inbox> m_inbox;
    guint m_filterId;
};

}  // namespace TvSim
