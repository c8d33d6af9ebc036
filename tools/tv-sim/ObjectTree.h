// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/CHandle.h"
#include "common/Source.h"
#include "tools/tv-sim/MethodCall.h"
#include "tools/tv-sim/Plans.h"

namespace TvSim {

// A property's value; copies share it, GVariants never change.
using Value = std::shared_ptr<GVariant>;
// The properties of one D-Bus interface by name.
using Properties = std::map<std::string, Value>;

// Takes over a floating or owned reference.
inline Value Own(GVariant* variant) {
    return {g_variant_take_ref(variant), g_variant_unref};
}
inline Value Bool(bool value) {
    return Own(g_variant_new_boolean(value ? TRUE : FALSE));
}
inline Value Text(const std::string& value) {
    return Own(g_variant_new_string(value.c_str()));
}
inline Value Path(const std::string& value) {
    return Own(g_variant_new_object_path(value.c_str()));
}
inline Value Texts(const std::vector<std::string>& values) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const std::string& value : values) {
        g_variant_builder_add(&builder, "s", value.c_str());
    }
    return Own(g_variant_builder_end(&builder));
}
inline GVariant* NewBytes(const std::vector<unsigned char>& bytes) {
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}

// The properties as an a{sv}, floating.
inline GVariant* NewDictionary(const Properties& properties) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : properties) {
        g_variant_builder_add(&builder, "{sv}", name.c_str(), value.get());
    }
    return g_variant_builder_end(&builder);
}

// Takes what happens in the simulated world, one short sentence each: `subject` is "bus",
// "adapter", "adapter second", "strangers" or "phone NAME". Called on the simulator's thread.
using EventSink = std::function<void(const std::string& subject, const std::string& what)>;

// The objects of the simulated daemon on a bus connection: the object manager on "/", properties,
// introspection and the dispatch of method calls to the code that simulates the object. It takes
// over every call to "/" and to what lies below /org/bluez on that connection and does not touch
// other paths. Calls are handled on the main loop of the process, in the order of their arrival;
// the errors are those that the real daemon's D-Bus library gives.
class ObjectTree {
public:
    using CallHandler = std::function<void(MethodCall call)>;
    // Whether it answered the call; else the property takes the value.
    using SetHandler =
        std::function<bool(const std::string& property, GVariant* value, MethodCall& call)>;
    struct Interface {
        std::string name;  // one that FindInterfaceInfo knows
        Properties properties;
        CallHandler onCall = {};  // a call of a declared method with matching arguments
        SetHandler onSet = {};    // a new value for a writable property, of its declared type
    };
    using Interfaces = std::map<std::string, Interface>;  // by name

    ObjectTree(GDBusConnection* connection, CallFaults faults, EventSink say);
    ~ObjectTree();
    ObjectTree(const ObjectTree&) = delete;
    ObjectTree& operator=(const ObjectTree&) = delete;

    // What is done with the calls that come from now on.
    [[nodiscard]] CallFaults& Faults() { return m_faults; }
    // Numbers media transports; none comes twice.
    [[nodiscard]] int NextTransport() { return m_nextTransport++; }
    // Forgets every object without a word; from now on it takes calls, says nothing and signals
    // nothing.
    void Crash();

    // Adds the interface to the object, which is made when it is not there, and announces it.
    void Add(const std::string& path, Interface interface);
    // Removes the object and all below it, the deepest first; nothing when it is not there.
    void Remove(const std::string& path);

    // Changes properties in one signal; `invalidated` ones are removed. Nothing happens when the
    // interface is not there.
    void Change(const std::string& path, const std::string& interface, const Properties& changed,
                const std::vector<std::string>& invalidated = {});
    // Borrowed; null when there is no such property now.
    [[nodiscard]] GVariant* Get(const std::string& path, const std::string& interface,
                                const std::string& property) const;

private:
    struct Delivery;

    static GDBusMessage* OnMessage(GDBusConnection* connection, GDBusMessage* message,
                                   gboolean incoming, gpointer userData) noexcept;
    template <typename Action>
    void Later(int ms, Action action);
    // Does to the call what the faults say, else handles it.
    void Dispatch(MethodCall call);
    void Handle(MethodCall call);
    void GetManagedObjects(MethodCall call);
    void AccessProperties(MethodCall call, const Interfaces& interfaces);
    void SetProperty(MethodCall call, const Interface& interface);
    void Introspect(MethodCall call, const Interfaces& interfaces);
    // Fails only on a closed connection, where nobody listens any more.
    void Emit(const std::string& path, const char* interface, const char* signal,
              GVariant* arguments);

    GObjectPtr<GDBusConnection> m_connection;
    EventSink m_say;
    std::map<std::string, Interfaces> m_objects;  // by path
    CallFaults m_faults;
    int m_nextTransport = 0;
    bool m_hasCrashed = false;
    std::list<Timer> m_later;
    // This, for calls that are on their way to the main loop; null in them when this has gone.
    std::shared_ptr<ObjectTree*> m_self;
    guint m_filterId;
};

}  // namespace TvSim
