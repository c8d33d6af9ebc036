// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <cstring>
#include <string>

// Reading the properties of bluetoothd's objects.

namespace Bluez {

// Runs `apply(name, value)` for each entry of an a{sv}.
template <typename Apply>
void ForEachProperty(GVariant* values, Apply apply) {
    GVariantIter iter;
    g_variant_iter_init(&iter, values);
    const char* name = nullptr;
    GVariant* value = nullptr;
    while (g_variant_iter_loop(&iter, "{&sv}", &name, &value)) {
        apply(name, value);
    }
}

inline bool Is(const char* name, const char* wanted) {
    return std::strcmp(name, wanted) == 0;
}

// These do not change the target when the value has another type than the interface says.
inline void Read(GVariant* value, std::string& target) {
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) ||
        g_variant_is_of_type(value, G_VARIANT_TYPE_OBJECT_PATH)) {
        target = g_variant_get_string(value, nullptr);
    }
}

inline void Read(GVariant* value, guint32& target) {
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32)) {
        target = g_variant_get_uint32(value);
    }
}

// Whether a list of service UUIDs names the service.
inline bool Names(GVariant* uuids, const char* service) {
    if (!g_variant_is_of_type(uuids, G_VARIANT_TYPE_STRING_ARRAY)) {
        return false;
    }
    GVariantIter iter;
    g_variant_iter_init(&iter, uuids);
    const char* uuid = nullptr;
    while (g_variant_iter_next(&iter, "&s", &uuid)) {
        if (g_ascii_strcasecmp(uuid, service) == 0) {
            return true;
        }
    }
    return false;
}

template <typename Bool>
inline void Read(GVariant* value, Bool& target) {
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN)) {
        target = g_variant_get_boolean(value) != FALSE;
    }
}

}  // namespace Bluez
