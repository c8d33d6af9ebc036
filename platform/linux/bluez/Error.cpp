// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Error.h"

#include <cstring>

#include "common/CHandle.h"
#include "platform/linux/base/DbusError.h"

namespace Bluez {

namespace {

struct Meaning {
    const char* name;     // D-Bus error name
    const char* message;  // text that refines it, NULL for any
    bt_error_e code;
    const char* reason;  // of a connection that failed, for a person; NULL: the name says it all
};

// Names: bluez src/error.c. Messages: bluez doc/errors.txt, since 5.62; before that the text of the
// system's errno stood there, so nothing but a refinement may depend on one. First match wins.
// "unknown" is what 5.66 was seen to answer when the phone had removed its half of the bond, and
// when it offered no A2DP source; it is "busy" under this name when it connects the phone by
// itself.
constexpr const char* kNoSink = "no A2DP sink is registered on this box, or the phone has no music";
constexpr Meaning kMeanings[] = {
    {"org.bluez.Error.Failed", "br-connection-page-timeout", BT_ERROR_TIMED_OUT,
     "the phone does not answer, it is off or out of reach"},
    {"org.bluez.Error.Failed", "br-connection-timeout", BT_ERROR_TIMED_OUT,
     "the phone stopped answering"},
    {"org.bluez.Error.Failed", "br-connection-key-missing", BT_ERROR_AUTH_FAILED,
     "the phone has forgotten this box, pair them again"},
    {"org.bluez.Error.Failed", "br-connection-refused", BT_ERROR_AUTH_REJECTED,
     "the phone refuses"},
    {"org.bluez.Error.Failed", "br-connection-canceled", BT_ERROR_CANCELLED,
     "somebody cancelled it"},
    {"org.bluez.Error.Failed", "br-connection-profile-unavailable", BT_ERROR_SERVICE_SEARCH_FAILED,
     kNoSink},
    {"org.bluez.Error.Failed", "br-connection-unknown", BT_ERROR_OPERATION_FAILED,
     "the phone ended it; it may have forgotten this box, or offer no music"},
    {"org.bluez.Error.Failed", "br-connection-busy", BT_ERROR_RESOURCE_BUSY, nullptr},
    {"org.bluez.Error.Failed", nullptr, BT_ERROR_OPERATION_FAILED, nullptr},
    {"org.bluez.Error.InProgress", nullptr, BT_ERROR_RESOURCE_BUSY, nullptr},
    {"org.bluez.Error.NotReady", nullptr, BT_ERROR_NOT_ENABLED, "the adapter is off"},
    {"org.bluez.Error.NotAvailable", nullptr, BT_ERROR_SERVICE_SEARCH_FAILED, kNoSink},
    {"org.bluez.Error.BREDR.ProfileUnavailable", nullptr, BT_ERROR_SERVICE_SEARCH_FAILED, kNoSink},
    {"org.bluez.Error.InvalidArguments", nullptr, BT_ERROR_INVALID_PARAMETER, nullptr},
    {"org.bluez.Error.DoesNotExist", nullptr, BT_ERROR_REMOTE_DEVICE_NOT_FOUND, nullptr},
    {"org.bluez.Error.NotConnected", nullptr, BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED, nullptr},
    {"org.bluez.Error.AlreadyConnected", nullptr, BT_ERROR_ALREADY_DONE, nullptr},
    {"org.bluez.Error.NotAuthorized", nullptr, BT_ERROR_AUTH_REJECTED, nullptr},
    {"org.bluez.Error.NotPermitted", nullptr, BT_ERROR_AUTH_REJECTED, nullptr},
    {"org.bluez.Error.AuthenticationRejected", nullptr, BT_ERROR_AUTH_REJECTED, nullptr},
    {"org.bluez.Error.AuthenticationCanceled", nullptr, BT_ERROR_AUTH_FAILED, nullptr},
    {"org.bluez.Error.AuthenticationFailed", nullptr, BT_ERROR_AUTH_FAILED, nullptr},
    {"org.bluez.Error.AuthenticationTimeout", nullptr, BT_ERROR_AUTH_FAILED, nullptr},
    {"org.freedesktop.DBus.Error.UnknownObject", nullptr, BT_ERROR_REMOTE_DEVICE_NOT_FOUND,
     "bluetoothd has removed it"},
    {"org.freedesktop.DBus.Error.ServiceUnknown", nullptr, BT_ERROR_NOT_ENABLED,
     "bluetoothd does not run"},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", nullptr, BT_ERROR_NOT_ENABLED,
     "bluetoothd does not run"},
    {"org.freedesktop.DBus.Error.NoReply", nullptr, BT_ERROR_OPERATION_FAILED,
     "bluetoothd ended before it answered"},
};

GStringPtr RemoteName(const GError& error) {
    return GStringPtr(g_dbus_error_get_remote_error(&error));
}

// NULL when nothing is known of such an error.
const Meaning* FindMeaning(const GError& error) {
    const GStringPtr name = RemoteName(error);
    if (!name) {
        return nullptr;
    }
    for (const Meaning& meaning : kMeanings) {
        if (std::strcmp(meaning.name, name.get()) == 0 &&
            (meaning.message == nullptr ||
             std::strstr(error.message, meaning.message) != nullptr)) {
            return &meaning;
        }
    }
    return nullptr;
}

}  // namespace

bt_error_e ErrorCode(const GError& error) {
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) {
        return BT_ERROR_TIMED_OUT;
    }
    const Meaning* meaning = FindMeaning(error);
    return meaning == nullptr ? BT_ERROR_OPERATION_FAILED : meaning->code;
}

std::string WhyNotConnected(const GError& error) {
    const Meaning* meaning = FindMeaning(error);
    const std::string detail = Platform::DescribeError(error);
    return meaning == nullptr || meaning->reason == nullptr
               ? detail
               : std::string(meaning->reason) + " (" + detail + ")";
}

bool IsInProgress(const GError& error) {
    return ErrorCode(error) == BT_ERROR_RESOURCE_BUSY;
}

}  // namespace Bluez
