// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/MethodCall.h"

namespace TvSim {
namespace {

std::string TextOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

}  // namespace

MethodCall::MethodCall(GObjectPtr<GDBusConnection> connection, GObjectPtr<GDBusMessage> message)
    : m_connection(std::move(connection)), m_message(std::move(message)) {
    GVariant* body = g_dbus_message_get_body(m_message.get());
    m_arguments.reset(body != nullptr ? g_variant_ref(body)
                                      : g_variant_ref_sink(g_variant_new_tuple(nullptr, 0)));
}

std::string MethodCall::Sender() const {
    return TextOrEmpty(g_dbus_message_get_sender(m_message.get()));
}

std::string MethodCall::Path() const {
    return TextOrEmpty(g_dbus_message_get_path(m_message.get()));
}

std::string MethodCall::Interface() const {
    return TextOrEmpty(g_dbus_message_get_interface(m_message.get()));
}

std::string MethodCall::Method() const {
    return TextOrEmpty(g_dbus_message_get_member(m_message.get()));
}

std::string MethodCall::Signature() const {
    return TextOrEmpty(g_dbus_message_get_signature(m_message.get()));
}

GVariant* MethodCall::Arguments() const {
    return m_arguments.get();
}

void MethodCall::Answer(GVariant* values) {
    GVariantPtr body(values == nullptr ? nullptr : g_variant_ref_sink(values));
    GObjectPtr<GDBusMessage> reply(g_dbus_message_new_method_reply(m_message.get()));
    if (body != nullptr) {
        g_dbus_message_set_body(reply.get(), body.get());
    }
    Send(std::move(reply));
}

void MethodCall::Fail(const std::string& errorName, const std::string& message) {
    Send(GObjectPtr<GDBusMessage>(g_dbus_message_new_method_error_literal(
        m_message.get(), errorName.c_str(), message.c_str())));
}

void MethodCall::FailBluez(const std::string& name, const std::string& message) {
    Fail("org.bluez.Error." + name, message);
}

void MethodCall::FailUnknown(const char* errorName) {
    Fail(errorName, "Method \"" + Method() + "\" with signature \"" + Signature() +
                        "\" on interface \"" + Interface() + "\" doesn't exist\n");
}

void MethodCall::Send(GObjectPtr<GDBusMessage> reply) {
    const bool wanted =
        (g_dbus_message_get_flags(m_message.get()) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) == 0;
    if (wanted) {
        // Fails only on a closed connection, where nobody waits any more.
        g_dbus_connection_send_message(m_connection.get(), reply.get(),
                                       G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    }
}

}  // namespace TvSim
