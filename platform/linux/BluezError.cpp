// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/BluezError.h"

#include <cstring>

#include "common/CHandle.h"

namespace Bluez {

namespace {

constexpr const char* kInProgress = "org.bluez.Error.InProgress";

struct Meaning {
    const char* name;     // D-Bus error name
    const char* message;  // text that refines it, NULL for any
    bt_error_e code;
};

// Names: bluez src/error.c. Messages: bluez doc/errors.txt, since 5.62; before that the text of the
// system's errno stood there, so nothing but a refinement may depend on one. First match wins.
constexpr Meaning kMeanings[] = {
    {"org.bluez.Error.Failed", "br-connection-page-timeout", BT_ERROR_TIMED_OUT},
    {"org.bluez.Error.Failed", "br-connection-timeout", BT_ERROR_TIMED_OUT},
    {"org.bluez.Error.Failed", "br-connection-key-missing", BT_ERROR_AUTH_FAILED},
    {"org.bluez.Error.Failed", "br-connection-refused", BT_ERROR_AUTH_REJECTED},
    {"org.bluez.Error.Failed", "br-connection-canceled", BT_ERROR_CANCELLED},
    {"org.bluez.Error.Failed", "br-connection-profile-unavailable", BT_ERROR_SERVICE_SEARCH_FAILED},
    {"org.bluez.Error.Failed", nullptr, BT_ERROR_OPERATION_FAILED},
    {kInProgress, nullptr, BT_ERROR_RESOURCE_BUSY},
    {"org.bluez.Error.NotReady", nullptr, BT_ERROR_NOT_ENABLED},
    {"org.bluez.Error.NotAvailable", nullptr, BT_ERROR_SERVICE_SEARCH_FAILED},
    {"org.bluez.Error.BREDR.ProfileUnavailable", nullptr, BT_ERROR_SERVICE_SEARCH_FAILED},
    {"org.bluez.Error.InvalidArguments", nullptr, BT_ERROR_INVALID_PARAMETER},
    {"org.bluez.Error.DoesNotExist", nullptr, BT_ERROR_REMOTE_DEVICE_NOT_FOUND},
    {"org.bluez.Error.NotConnected", nullptr, BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED},
    {"org.bluez.Error.AlreadyConnected", nullptr, BT_ERROR_ALREADY_DONE},
    {"org.bluez.Error.NotAuthorized", nullptr, BT_ERROR_AUTH_REJECTED},
    {"org.bluez.Error.NotPermitted", nullptr, BT_ERROR_AUTH_REJECTED},
    {"org.bluez.Error.AuthenticationRejected", nullptr, BT_ERROR_AUTH_REJECTED},
    {"org.bluez.Error.AuthenticationCanceled", nullptr, BT_ERROR_AUTH_FAILED},
    {"org.bluez.Error.AuthenticationFailed", nullptr, BT_ERROR_AUTH_FAILED},
    {"org.bluez.Error.AuthenticationTimeout", nullptr, BT_ERROR_AUTH_FAILED},
    {"org.freedesktop.DBus.Error.UnknownObject", nullptr, BT_ERROR_REMOTE_DEVICE_NOT_FOUND},
    {"org.freedesktop.DBus.Error.ServiceUnknown", nullptr, BT_ERROR_NOT_ENABLED},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", nullptr, BT_ERROR_NOT_ENABLED},
};

GStringPtr RemoteName(const GError& error) {
    return GStringPtr(g_dbus_error_get_remote_error(&error));
}

}  // namespace

bt_error_e ErrorCode(const GError& error) {
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) {
        return BT_ERROR_TIMED_OUT;
    }
    const GStringPtr name = RemoteName(error);
    if (!name) {
        return BT_ERROR_OPERATION_FAILED;
    }
    for (const Meaning& meaning : kMeanings) {
        if (std::strcmp(meaning.name, name.get()) == 0 &&
            (meaning.message == nullptr ||
             std::strstr(error.message, meaning.message) != nullptr)) {
            return meaning.code;
        }
    }
    return BT_ERROR_OPERATION_FAILED;
}

bool IsInProgress(const GError& error) {
    const GStringPtr name = RemoteName(error);
    return name && std::strcmp(name.get(), kInProgress) == 0;
}

}  // namespace Bluez
