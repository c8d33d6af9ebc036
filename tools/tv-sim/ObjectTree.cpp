// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/ObjectTree.h"

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

constexpr char kUnknownMethod[] = "org.freedesktop.DBus.Error.UnknownMethod";
constexpr char kUnknownObject[] = "org.freedesktop.DBus.Error.UnknownObject";
constexpr char kInvalidArgs[] = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr char kReadOnly[] = "org.freedesktop.DBus.Error.PropertyReadOnly";

std::string Prefix(const std::string& path) {
    return path == "/" ? path : path + "/";
}

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
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
GVariant* NewInterfaceDictionary(const std::vector<const ObjectTree::Interface*>& interfaces,
                                 bool wholeObject) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sa{sv}}"));
    if (wholeObject) {
        g_variant_builder_add(&builder, "{s@a{sv}}", kIntrospectableInterface, NewDictionary({}));
    }
    for (const ObjectTree::Interface* interface : interfaces) {
        g_variant_builder_add(&builder, "{s@a{sv}}", interface->name.c_str(),
                              NewDictionary(interface->properties));
    }
    if (wholeObject) {
        g_variant_builder_add(&builder, "{s@a{sv}}", kPropertiesInterface, NewDictionary({}));
    }
    return g_variant_builder_end(&builder);
}

struct GStringFree {
    void operator()(GString* text) const noexcept { g_string_free(text, TRUE); }
};

std::string ArgumentText(const MethodCall& call, gsize index) {
    GVariantPtr text(g_variant_get_child_value(call.Arguments(), index));
    return g_variant_get_string(text.get(), nullptr);
}

}  // namespace

// What the bus connection's worker thread needs; `tree` belongs to the simulator's thread, which
// clears it, for the worker may still be inside the filter when the tree is gone.
struct ObjectTree::Inbox {
    explicit Inbox(ObjectTree* owner)
        : tree(owner), context(g_main_context_ref_thread_default(), g_main_context_unref) {}

    ObjectTree* tree;  // not owned
    std::unique_ptr<GMainContext, decltype(&g_main_context_unref)> context;
};

struct ObjectTree::Delivery {
    std::shared_ptr<Inbox> inbox;
    GObjectPtr<GDBusConnection> connection;
    GObjectPtr<GDBusMessage> message;
};

ObjectTree::ObjectTree(GDBusConnection* connection, EventSink say)
    : m_connection(static_cast<GDBusConnection*>(g_object_ref(connection))),
      m_say(std::move(say)),
      m_inbox(std::make_shared<Inbox>(this)),
      m_filterId(g_dbus_connection_add_filter(
          connection, OnMessage, new std::shared_ptr<Inbox>(m_inbox),
          [](gpointer data) noexcept { delete static_cast<std::shared_ptr<Inbox>*>(data); })) {}

ObjectTree::~ObjectTree() {
    m_inbox->tree = nullptr;
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
    auto inbox = *static_cast<std::shared_ptr<Inbox>*>(userData);
    GMainContext* context = inbox->context.get();
    auto delivery = std::make_unique<Delivery>();
    delivery->inbox = std::move(inbox);
    delivery->connection.reset(static_cast<GDBusConnection*>(g_object_ref(connection)));
    delivery->message.reset(message);
    CPtr<GSource, g_source_unref> source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(source.get(), OnDelivery, delivery.release(),
                          [](gpointer data) noexcept { delete static_cast<Delivery*>(data); });
    g_source_attach(source.get(), context);
    return nullptr;
}

gboolean ObjectTree::OnDelivery(gpointer userData) noexcept {
    auto* delivery = static_cast<Delivery*>(userData);
    MethodCall call(std::move(delivery->connection), std::move(delivery->message));
    if (delivery->inbox->tree == nullptr) {
        call.FailUnknown(kUnknownObject);
    } else {
        delivery->inbox->tree->Dispatch(std::move(call));
    }
    return G_SOURCE_REMOVE;
}

void ObjectTree::Add(const std::string& path, Interface interface) {
    Interfaces& interfaces = m_objects[path];
    const bool newObject = interfaces.empty();
    const std::string name = interface.name;
    Interface& added = interfaces.insert_or_assign(name, std::move(interface)).first->second;
    EmitOnManager("InterfacesAdded", g_variant_new("(o@a{sa{sv}})", path.c_str(),
                                                   NewInterfaceDictionary({&added}, newObject)));
}

void ObjectTree::Remove(const std::string& path) {
    std::vector<std::string> paths;
    for (auto it = m_objects.lower_bound(path);
         it != m_objects.end() && StartsWith(it->first, path); ++it) {
        if (it->first == path || StartsWith(it->first, Prefix(path))) {
            paths.push_back(it->first);
        }
    }
    for (auto it = paths.rbegin(); it != paths.rend(); ++it) {
        std::vector<std::string> names = {kPropertiesInterface, kIntrospectableInterface};
        for (const auto& [name, interface] : m_objects[*it]) {
            names.push_back(name);
        }
        m_objects.erase(*it);
        EmitOnManager("InterfacesRemoved",
                      g_variant_new("(o@as)", it->c_str(), Texts(names).get()));
    }
}

bool ObjectTree::Has(const std::string& path) const {
    return m_objects.count(path) != 0;
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
    g_dbus_connection_emit_signal(m_connection.get(), nullptr, path.c_str(), kPropertiesInterface,
                                  "PropertiesChanged",
                                  g_variant_new("(s@a{sv}@as)", interface.c_str(),
                                                NewDictionary(changed), Texts(invalidated).get()),
                                  nullptr);
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

void ObjectTree::SetSilentMethods(const std::vector<std::string>& methods) {
    m_silentMethods = {methods.begin(), methods.end()};
}

void ObjectTree::RefuseOnce(const std::vector<std::pair<std::string, std::string>>& errors) {
    m_refusals = {errors.begin(), errors.end()};
}

void ObjectTree::Dispatch(MethodCall call) {
    if (m_silentMethods.count(call.Method()) != 0) {
        m_say("bus", call.Method() + " of " + call.Sender() + " never answered");
        return;
    }
    if (const auto refusal = m_refusals.extract(call.Method())) {
        m_say("bus", call.Method() + " of " + call.Sender() + " refused");
        call.Fail(refusal.mapped(), "refused once");
        return;
    }
    static const Interfaces kNone;
    const auto object = m_objects.find(call.Path());
    const Interfaces& interfaces = object == m_objects.end() ? kNone : object->second;
    const std::string interface = call.Interface();
    if (object == m_objects.end() && call.Path() != "/" && !HasBelow(call.Path())) {
        call.FailUnknown(kUnknownObject);
    } else if (interface == kPropertiesInterface || interface == kIntrospectableInterface ||
               interface == kObjectManagerInterface) {
        DispatchStandard(std::move(call), interfaces);
    } else if (interfaces.count(interface) == 0 || !Declares(interface, call)) {
        call.FailUnknown(kUnknownMethod);
    } else if (const CallHandler onCall = interfaces.at(interface).onCall; onCall) {
        onCall(std::move(call));  // a copy: the handler may remove the object
    } else {
        call.FailBluez("NotSupported", "Operation is not supported");
    }
}

void ObjectTree::DispatchStandard(MethodCall call, const Interfaces& interfaces) {
    const std::string method = call.Method();
    const bool onManager = method == "GetManagedObjects";
    const bool onAny = method == "Introspect";
    const bool here = onAny || (onManager ? call.Path() == "/" : !interfaces.empty());
    if (!here || !Declares(call.Interface(), call)) {
        call.FailUnknown(kUnknownMethod);
    } else if (onAny) {
        Introspect(std::move(call), interfaces);
    } else if (onManager) {
        GetManagedObjects(std::move(call));
    } else if (interfaces.count(ArgumentText(call, 0)) == 0) {
        call.Fail(kInvalidArgs, "No such interface '" + ArgumentText(call, 0) + "'");
    } else if (method == "GetAll") {
        GetAllProperties(std::move(call), interfaces);
    } else if (method == "Get") {
        GetProperty(std::move(call), interfaces);
    } else {
        SetProperty(std::move(call), interfaces);
    }
}

void ObjectTree::GetProperty(MethodCall call, const Interfaces& interfaces) {
    const Properties& properties = interfaces.at(ArgumentText(call, 0)).properties;
    const auto found = properties.find(ArgumentText(call, 1));
    if (found == properties.end()) {
        call.Fail(kInvalidArgs, "No such property '" + ArgumentText(call, 1) + "'");
    } else {
        call.Answer(g_variant_new("(v)", found->second.get()));
    }
}

void ObjectTree::GetAllProperties(MethodCall call, const Interfaces& interfaces) {
    const Properties& properties = interfaces.at(ArgumentText(call, 0)).properties;
    call.Answer(g_variant_new("(@a{sv})", NewDictionary(properties)));
}

void ObjectTree::SetProperty(MethodCall call, const Interfaces& interfaces) {
    const Interface& interface = interfaces.at(ArgumentText(call, 0));
    const std::string name = ArgumentText(call, 1);
    GVariantPtr boxed(g_variant_get_child_value(call.Arguments(), 2));
    const GVariantPtr value(g_variant_get_variant(boxed.get()));
    const GDBusPropertyInfo* info =
        g_dbus_interface_info_lookup_property(FindInterfaceInfo(interface.name), name.c_str());
    if (info == nullptr) {
        call.Fail(kInvalidArgs, "No such property '" + name + "'");
    } else if ((info->flags & G_DBUS_PROPERTY_INFO_FLAGS_WRITABLE) == 0 || !interface.onSet) {
        call.Fail(kReadOnly, "Property '" + name + "' is not writable");
    } else if (g_strcmp0(g_variant_get_type_string(value.get()), info->signature) != 0) {
        call.FailBluez("InvalidArguments", "Invalid arguments in method call");
    } else {
        const SetHandler onSet = interface.onSet;
        onSet(name, value.get(), std::move(call));
    }
}

void ObjectTree::GetManagedObjects(MethodCall call) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{oa{sa{sv}}}"));
    for (const auto& [path, interfaces] : m_objects) {
        std::vector<const Interface*> list;
        for (const auto& [name, interface] : interfaces) {
            list.push_back(&interface);
        }
        g_variant_builder_add(&builder, "{o@a{sa{sv}}}", path.c_str(),
                              NewInterfaceDictionary(list, true));
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
    std::set<std::string> children;
    for (auto it = m_objects.lower_bound(prefix);
         it != m_objects.end() && StartsWith(it->first, prefix); ++it) {
        children.insert(
            it->first.substr(prefix.size(), it->first.find('/', prefix.size()) - prefix.size()));
    }
    for (const std::string& child : children) {
        g_string_append_printf(xml.get(), "  <node name=\"%s\"/>\n", child.c_str());
    }
    g_string_append(xml.get(), "</node>\n");
    call.Answer(g_variant_new("(s)", xml->str));
}

bool ObjectTree::HasBelow(const std::string& path) const {
    const auto next = m_objects.lower_bound(Prefix(path));
    return next != m_objects.end() && StartsWith(next->first, Prefix(path));
}

void ObjectTree::EmitOnManager(const char* signal, GVariant* arguments) {
    // Fails only on a closed connection, where nobody listens any more.
    g_dbus_connection_emit_signal(m_connection.get(), nullptr, "/", kObjectManagerInterface, signal,
                                  arguments, nullptr);
}

}  // namespace TvSim
