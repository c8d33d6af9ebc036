// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "common/CHandle.h"

namespace TvSim {

// A method call that came in and waits for its answer. One that is dropped unanswered stays so for
// ever, which is what a hanging daemon does.
class MethodCall {
public:
    // Takes the message over.
    MethodCall(GDBusConnection* connection, GDBusMessage* message)
        : m_connection(static_cast<GDBusConnection*>(g_object_ref(connection))),
          m_message(message) {
        GVariant* body = g_dbus_message_get_body(message);
        m_arguments.reset(g_variant_ref_sink(body != nullptr ? body : g_variant_new("()")));
    }

    [[nodiscard]] std::string Sender() const { return Field(g_dbus_message_get_sender); }
    [[nodiscard]] std::string Path() const { return Field(g_dbus_message_get_path); }
    // Empty when the caller named none.
    [[nodiscard]] std::string Interface() const { return Field(g_dbus_message_get_interface); }
    [[nodiscard]] std::string Method() const { return Field(g_dbus_message_get_member); }
    [[nodiscard]] std::string Signature() const { return Field(g_dbus_message_get_signature); }

    [[nodiscard]] GVariantPtr Argument(gsize index) const {
        return GVariantPtr(g_variant_get_child_value(m_arguments.get(), index));
    }
    // Of a text, an object path or a signature.
    [[nodiscard]] std::string TextArgument(gsize index) const {
        return g_variant_get_string(Argument(index).get(), nullptr);
    }

    // Sends the answer in this way instead of at once.
    void AnswerBy(std::function<void(GObjectPtr<GDBusMessage> reply)> send) {
        m_send = std::move(send);
    }
    // Answers with the tuple `values`, nothing when null. At most one answer or failure goes out.
    void Answer(GVariant* values = nullptr) {
        GDBusMessage* reply = g_dbus_message_new_method_reply(m_message.get());
        g_dbus_message_set_body(reply, values != nullptr ? values : g_variant_new("()"));
        Send(GObjectPtr<GDBusMessage>(reply));
    }
    void Fail(const std::string& errorName, const std::string& message) {
        Send(GObjectPtr<GDBusMessage>(g_dbus_message_new_method_error_literal(
            m_message.get(), errorName.c_str(), message.c_str())));
    }
    // Fails with org.bluez.Error.`name`.
    void FailBluez(const std::string& name, const std::string& message) {
        Fail("org.bluez.Error." + name, message);
    }
    // Fails as a method that this object does not have.
    void FailUnknown(const char* errorName) {
        Fail(errorName, "Method \"" + Method() + "\" with signature \"" + Signature() +
                            "\" on interface \"" + Interface() + "\" doesn't exist\n");
    }

private:
    // `get` may give NULL.
    [[nodiscard]] std::string Field(const char* (*get)(GDBusMessage*)) const {
        const char* text = get(m_message.get());
        return text == nullptr ? "" : text;
    }

    void Send(GObjectPtr<GDBusMessage> reply) {
        const GDBusMessageFlags flags = g_dbus_message_get_flags(m_message.get());
        if ((flags & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) != 0) {
            return;
        }
        if (m_send) {
            m_send(std::move(reply));
        } else {
            // Fails only on a closed connection, where nobody waits any more.
            g_dbus_connection_send_message(m_connection.get(), reply.get(),
                                           G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
        }
    }

    GObjectPtr<GDBusConnection> m_connection;
    GObjectPtr<GDBusMessage> m_message;
    GVariantPtr m_arguments;
    std::function<void(GObjectPtr<GDBusMessage>)> m_send;
};

}  // namespace TvSim
