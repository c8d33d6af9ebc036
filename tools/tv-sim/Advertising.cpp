// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Advertising.h"

#include <memory>

#include "tools/tv-sim/BluezInterfaces.h"

namespace TvSim {
namespace {

constexpr char kAdvertisementInterface[] = "org.bluez.LEAdvertisement1";

// "65535:00FF...", for each company of an a{qv}.
std::string Describe(GVariant* manufacturerData) {
    std::string text;
    GVariantIter iter;
    g_variant_iter_init(&iter, manufacturerData);
    guint16 company = 0;
    GVariant* content = nullptr;
    while (g_variant_iter_loop(&iter, "{qv}", &company, &content)) {
        text += " " + std::to_string(company) + ":";
        for (gsize i = 0; i < g_variant_n_children(content); ++i) {
            const GVariantPtr byte(g_variant_get_child_value(content, i));
            char digits[3];
            g_snprintf(digits, sizeof(digits), "%02X", g_variant_get_byte(byte.get()));
            text += digits;
        }
    }
    return text;
}

}  // namespace

struct Advertising::Request {
    Advertising* self;
    Key key;
    MethodCall call;
};

void Advertising::OnCall(MethodCall call) {
    Key key(call.Sender(), call.TextArgument(0));
    if (call.Method() == "RegisterAdvertisement") {
        if (m_registered.count(key) != 0) {
            call.FailBluez("AlreadyExists", "Already Exists");
            return;
        }
        auto request = std::make_unique<Request>(Request{this, key, std::move(call)});
        g_dbus_connection_call(
            m_connection, key.first.c_str(), key.second.c_str(), kPropertiesInterface, "GetAll",
            g_variant_new("(s)", kAdvertisementInterface), G_VARIANT_TYPE("(a{sv})"),
            G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, m_requests.get(), OnProperties, request.release());
    } else if (m_registered.erase(key) != 0) {
        m_say("advertises no more");
        call.Answer();
    } else {
        call.FailBluez("DoesNotExist", "Does Not Exist");
    }
}

void Advertising::OnProperties(GObject* connection, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<Request> request(static_cast<Request*>(data));
    GErrorPtr error;
    const GVariantPtr reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, Out(error)));
    if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        return;
    }
    const GVariantPtr properties(reply ? g_variant_get_child_value(reply.get(), 0) : nullptr);
    const GVariantPtr content(reply ? g_variant_lookup_value(properties.get(), "ManufacturerData",
                                                             G_VARIANT_TYPE("a{qv}"))
                                    : nullptr);
    if (!content) {
        request->call.FailBluez("Failed", "Failed to parse advertisement.");
        return;
    }
    request->self->m_registered.insert(request->key);
    request->self->m_say("advertises" + Describe(content.get()));
    request->call.Answer();
}

}  // namespace TvSim
