// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/CHandle.h"

namespace TvSim {

// A method call that came in and waits for its answer. One that is dropped unanswered stays so for
// ever, which is what a hanging daemon does.
class MethodCall {
public:
    MethodCall(GObjectPtr<GDBusConnection> connection, GObjectPtr<GDBusMessage> message);

    [[nodiscard]] std::string Sender() const;
    [[nodiscard]] std::string Path() const;
    [[nodiscard]] std::string Interface() const;  // empty when the caller named none
    [[nodiscard]] std::string Method() const;
    [[nodiscard]] std::string Signature() const;
    [[nodiscard]] GVariant* Arguments() const;  // a tuple, borrowed

    // Answers with the tuple `values`, nothing when null. At most one answer or failure goes out.
    void Answer(GVariant* values = nullptr);
    void Fail(const std::string& errorName, const std::string& message);
    // Fails with org.bluez.Error.`name`.
    void FailBluez(const std::string& name, const std::string& message);
    // Fails as a method that this object does not have.
    void FailUnknown(const char* errorName);

private:
    void Send(GObjectPtr<GDBusMessage> reply);

    GObjectPtr<GDBusConnection> m_connection;
    GObjectPtr<GDBusMessage> m_message;
    GVariantPtr m_arguments;
};

}  // namespace TvSim
