// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/ObjectTree.h"

#include "tools/tv-sim/Address.h"
#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

constexpr char kUnknownMethod[] = "org.freedesktop.DBus.Error.UnknownMethod";
constexpr char kUnknownObject[] = "org.freedesktop.DBus.Error.UnknownObject";
constexpr char kInvalidArgs[] = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr char kReadOnly[] = "org.freedesktop.DBus.Error.PropertyReadOnly";

// How the paths of all objects below this one begin.
std::string Prefix(const std::string& path) {
    return path == "/" ? path : path + "/";
}

// Whether the interface declares the method with arguments of the call's types.
bool Declares(const std::string& interface, const MethodCall& call) {
    GDBusInterfaceInfo* info = FindInterfaceInfo(interface);
    GDBusMethodInfo* method =
        info == nullptr ? nullptr
                        : g_dbus_interface_info_lookup_method(info, call.Method().c_str());
    if (method == nullptr) {
        return false;
    }
    std::string signature;
    for (GDBusArgInfo** arg = method->in_args; arg != nullptr && *arg != nullptr; ++arg) {
        signature += (*arg)->signature;
    }
    return signature == call.Signature();
}

// Interfaces with their properties as an a{sa{sv}}. Every object of the daemon has the two standard
// interfaces; they are named when the object appears, with its first own interface.
GVariant* NewInterfaceDictionary(const ObjectTree::Interfaces& interfaces, bool wholeObject) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sa{sv}}"));
    if (wholeObject) {
        g_variant_builder_add(&builder, "{s@a{sv}}", kIntrospectableInterface, NewDictionary({}));
    }
    for (const auto& [name, interface] : interfaces) {
        g_variant_builder_add(&builder, "{s@a{sv}}", name.c_str(),
                              NewDictionary(interface.properties));
    }
    if (wholeObject) {
        g_variant_builder_add(&builder, "{s@a{sv}}", kPropertiesInterface, NewDictionary({}));
    }
    return g_variant_builder_end(&builder);
}

struct GStringFree {
    void operator()(GString* text) const noexcept { g_string_free(text, TRUE); }
};

}  // namespace

struct ObjectTree::Delivery {
    std::shared_ptr<ObjectTree*> tree;
    MethodCall call;
};

ObjectTree::ObjectTree(GDBusConnection* connection, CallFaults faults, EventSink say)
    : m_connection(static_cast<GDBusConnection*>(g_object_ref(connection))),
      m_say(std::move(say)),
      m_faults(std::move(faults)),
      m_self(std::make_shared<ObjectTree*>(this)),
      m_filterId(g_dbus_connection_add_filter(
          connection, OnMessage, new std::shared_ptr<ObjectTree*>(m_self),
          [](gpointer data) noexcept {
              delete static_cast<std::shared_ptr<ObjectTree*>*>(data);
          })) {}

ObjectTree::~ObjectTree() {
    *m_self = nullptr;
    g_dbus_connection_remove_filter(m_connection.get(), m_filterId);
}

// On the connection's worker thread.
GDBusMessage* ObjectTree::OnMessage(GDBusConnection* connection, GDBusMessage* message,
                                    gboolean incoming, gpointer userData) noexcept {
    if (incoming == FALSE ||
        g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
        return message;
    }
    const std::string path = g_dbus_message_get_path(message);
    const bool ours =
        path == "/" || path == "/org" || path == "/org/bluez" || StartsWith(path, "/org/bluez/");
    if (!ours ||
        g_strcmp0(g_dbus_message_get_interface(message), "org.freedesktop.DBus.Peer") == 0) {
        return message;
    }
    // Only the main loop looks at the tree, which may be gone by then.
    auto delivery = std::make_unique<Delivery>(Delivery{
        *static_cast<std::shared_ptr<ObjectTree*>*>(userData), MethodCall(connection, message)});
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) noexcept -> gboolean {
            auto& [tree, call] = *static_cast<Delivery*>(data);
            if (*tree == nullptr) {
                call.FailUnknown(kUnknownObject);
            } else {
                (*tree)->Dispatch(std::move(call));
            }
            return G_SOURCE_REMOVE;
        },
        delivery.release(), [](gpointer data) noexcept { delete static_cast<Delivery*>(data); });
    return nullptr;
}

void ObjectTree::Crash() {
    m_hasCrashed = true;
    m_objects.clear();
    m_later.clear();
}

void ObjectTree::Add(const std::string& path, Interface interface) {
    Interfaces& interfaces = m_objects[path];
    const bool newObject = interfaces.empty();
    interfaces[interface.name] = interface;
    Emit("/", kObjectManagerInterface, "InterfacesAdded",
         g_variant_new("(o@a{sa{sv}})", path.c_str(),
                       NewInterfaceDictionary({{interface.name, interface}}, newObject)));
}

void ObjectTree::Remove(const std::string& path) {
    std::vector<std::string> paths;
    for (auto it = m_objects.lower_bound(path);
         it != m_objects.end() && (it->first == path || StartsWith(it->first, Prefix(path)));
         ++it) {
        paths.push_back(it->first);
    }
    for (auto it = paths.rbegin(); it != paths.rend(); ++it) {
        std::vector<std::string> names = {kPropertiesInterface, kIntrospectableInterface};
        for (const auto& [name, interface] : m_objects[*it]) {
            names.push_back(name);
        }
        m_objects.erase(*it);
        Emit("/", kObjectManagerInterface, "InterfacesRemoved",
             g_variant_new("(o@as)", it->c_str(), Texts(names).get()));
    }
}

void ObjectTree::Change(const std::string& path, const std::string& interface,
                        const Properties& changed, const std::vector<std::string>& invalidated) {
    const auto object = m_objects.find(path);
    if (object == m_objects.end() || object->second.count(interface) == 0) {
        return;
    }
    Properties& properties = object->second[interface].properties;
    for (const auto& [name, value] : changed) {
        properties[name] = value;
    }
    for (const std::string& name : invalidated) {
        properties.erase(name);
    }
    Emit(path, kPropertiesInterface, "PropertiesChanged",
         g_variant_new("(s@a{sv}@as)", interface.c_str(), NewDictionary(changed),
                       Texts(invalidated).get()));
}

GVariant* ObjectTree::Get(const std::string& path, const std::string& interface,
                          const std::string& property) const {
    const auto object = m_objects.find(path);
    if (object == m_objects.end()) {
        return nullptr;
    }
    const auto found = object->second.find(interface);
    if (found == object->second.end() || found->second.properties.count(property) == 0) {
        return nullptr;
    }
    return found->second.properties.at(property).get();
}

template <typename Action>
void ObjectTree::Later(int ms, Action action) {
    const auto timer = m_later.emplace(m_later.end());
    *timer = Timer::Once(ms, [this, timer, action = std::move(action)]() mutable {
        const Timer running = std::move(*timer);  // the action may clear the list
        m_later.erase(timer);
        action();
    });
}

void ObjectTree::Dispatch(MethodCall call) {
    if (m_hasCrashed) {
        return;
    }
    if (m_faults.silentMethods.count(call.Method()) != 0) {
        m_say("bus", call.Method() + " of " + call.Sender() + " never answered");
        return;
    }
    const auto late = m_faults.answersAfterMs.find(call.Method());
    if (late == m_faults.answersAfterMs.end()) {
        Handle(std::move(call));
        return;
    }
    const int ms = late->second;
    if (StartsWith(call.Interface(), "org.freedesktop.DBus.")) {
        Later(ms, [this, call = std::move(call)]() mutable { Handle(std::move(call)); });
        return;
    }
    const std::string what = "late answer to " + call.Method() + " of " + call.Sender();
    call.AnswerBy([self = m_self, ms, what](GObjectPtr<GDBusMessage> reply) {
        ObjectTree* tree = *self;
        if (tree == nullptr || tree->m_hasCrashed) {
            return;
        }
        tree->Later(ms, [tree, what, reply = std::move(reply)] {
            tree->m_say("bus", what);
            g_dbus_connection_send_message(tree->m_connection.get(), reply.get(),
                                           G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
        });
    });
    Handle(std::move(call));
}

void ObjectTree::Handle(MethodCall call) {
    if (const auto refusal = m_faults.refusedOnce.extract(call.Method())) {
        m_say("bus", call.Method() + " of " + call.Sender() + " refused");
        call.Fail(refusal.mapped(), "refused once");
        return;
    }
    static const Interfaces kNone;
    const std::string path = call.Path();
    const std::string interface = call.Interface();
    const auto object = m_objects.find(path);
    const Interfaces& interfaces = object == m_objects.end() ? kNone : object->second;
    const bool isThere = interface == kIntrospectableInterface ||
                         (interface == kObjectManagerInterface && path == "/") ||
                         (interface == kPropertiesInterface && !interfaces.empty()) ||
                         interfaces.count(interface) != 0;
    const auto below = m_objects.lower_bound(Prefix(path));
    if (object == m_objects.end() && path != "/" &&
        (below == m_objects.end() || !StartsWith(below->first, Prefix(path)))) {
        call.FailUnknown(kUnknownObject);
    } else if (!isThere || !Declares(interface, call)) {
        call.FailUnknown(kUnknownMethod);
    } else if (interface == kIntrospectableInterface) {
        Introspect(std::move(call), interfaces);
    } else if (interface == kObjectManagerInterface) {
        GetManagedObjects(std::move(call));
    } else if (interface == kPropertiesInterface) {
        AccessProperties(std::move(call), interfaces);
    } else if (const CallHandler onCall = interfaces.at(interface).onCall; onCall) {
        onCall(std::move(call));  // a copy: the handler may remove the object
    } else {
        call.FailBluez("NotSupported", "Operation is not supported");
    }
}

// Get, GetAll and Set of an object that has these interfaces.
void ObjectTree::AccessProperties(MethodCall call, const Interfaces& interfaces) {
    const std::string name = call.TextArgument(0);
    const auto found = interfaces.find(name);
    if (found == interfaces.end()) {
        call.Fail(kInvalidArgs, "No such interface '" + name + "'");
        return;
    }
    const Properties& properties = found->second.properties;
    if (call.Method() == "Set") {
        SetProperty(std::move(call), found->second);
    } else if (call.Method() == "GetAll") {
        call.Answer(g_variant_new("(@a{sv})", NewDictionary(properties)));
    } else if (const auto property = properties.find(call.TextArgument(1));
               property != properties.end()) {
        call.Answer(g_variant_new("(v)", property->second.get()));
    } else {
        call.Fail(kInvalidArgs, "No such property '" + call.TextArgument(1) + "'");
    }
}

void ObjectTree::SetProperty(MethodCall call, const Interface& interface) {
    const std::string name = call.TextArgument(1);
    const GVariantPtr value(g_variant_get_variant(call.Argument(2).get()));
    const GDBusPropertyInfo* info =
        g_dbus_interface_info_lookup_property(FindInterfaceInfo(interface.name), name.c_str());
    if (info == nullptr) {
        call.Fail(kInvalidArgs, "No such property '" + name + "'");
    } else if ((info->flags & G_DBUS_PROPERTY_INFO_FLAGS_WRITABLE) == 0) {
        call.Fail(kReadOnly, "Property '" + name + "' is not writable");
    } else if (g_strcmp0(g_variant_get_type_string(value.get()), info->signature) != 0) {
        call.FailBluez("InvalidArguments", "Invalid arguments in method call");
    } else if (const SetHandler onSet = interface.onSet;
               !onSet || !onSet(name, value.get(), call)) {
        // An alias that is empty becomes the name again, or the address of who has none.
        const bool isReset = name == "Alias" && *g_variant_get_string(value.get(), nullptr) == '\0';
        GVariant* ownName = Get(call.Path(), interface.name, "Name");
        GVariant* reset =
            ownName != nullptr ? ownName : Get(call.Path(), interface.name, "Address");
        Change(call.Path(), interface.name,
               {{name, Own(g_variant_ref(isReset ? reset : value.get()))}});
        call.Answer();
    }
}

void ObjectTree::GetManagedObjects(MethodCall call) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{oa{sa{sv}}}"));
    for (const auto& [path, interfaces] : m_objects) {
        g_variant_builder_add(&builder, "{o@a{sa{sv}}}", path.c_str(),
                              NewInterfaceDictionary(interfaces, true));
    }
    call.Answer(g_variant_new("(@a{oa{sa{sv}}})", g_variant_builder_end(&builder)));
    m_say("bus", "objects read by " + call.Sender());
}

void ObjectTree::Introspect(MethodCall call, const Interfaces& interfaces) {
    std::vector<std::string> names = {kIntrospectableInterface, call.Path() == "/"
                                                                    ? kObjectManagerInterface
                                                                    : kPropertiesInterface};
    for (const auto& [name, interface] : interfaces) {
        names.push_back(name);
    }
    std::unique_ptr<GString, GStringFree> xml(g_string_new("<node>\n"));
    for (const std::string& name : names) {
        g_dbus_interface_info_generate_xml(FindInterfaceInfo(name), 2, xml.get());
    }
    const std::string prefix = Prefix(call.Path());
    std::string last;
    for (auto it = m_objects.lower_bound(prefix);
         it != m_objects.end() && StartsWith(it->first, prefix); ++it) {
        const std::size_t size = it->first.find('/', prefix.size()) - prefix.size();
        const std::string child = it->first.substr(prefix.size(), size);
        if (child != last) {
            g_string_append_printf(xml.get(), "  <node name=\"%s\"/>\n", child.c_str());
        }
        last = child;
    }
    g_string_append(xml.get(), "</node>\n");
    call.Answer(g_variant_new("(s)", xml->str));
}

void ObjectTree::Emit(const std::string& path, const char* interface, const char* signal,
                      GVariant* arguments) {
    g_dbus_connection_emit_signal(m_connection.get(), nullptr, path.c_str(), interface, signal,
                                  arguments, nullptr);
}

}  // namespace TvSim
