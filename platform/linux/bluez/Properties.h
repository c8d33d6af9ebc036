// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstring>

#include "common/CHandle.h"

// Reading the properties of bluetoothd's objects, an a{sv}.

namespace Bluez {

inline bool Is(const char* name, const char* wanted) {
    return std::strcmp(name, wanted) == 0;
}

// These do not change the target when there is no such property, or it has another type than the
// interface says.

// A string or an object path.
template <typename Text>
void ReadText(GVariant* properties, const char* name, Text& target) {
    const char* text = nullptr;
    if (g_variant_lookup(properties, name, "&s", &text) != FALSE ||
        g_variant_lookup(properties, name, "&o", &text) != FALSE) {
        target = text;
    }
}

template <typename Bool>
void ReadBool(GVariant* properties, const char* name, Bool& target) {
    gboolean flag = FALSE;
    if (g_variant_lookup(properties, name, "b", &flag) != FALSE) {
        target = flag != FALSE;
    }
}

// The list of service UUIDs; null when there is none.
inline GVariantPtr ReadUuids(GVariant* properties) {
    return GVariantPtr(g_variant_lookup_value(properties, "UUIDs", G_VARIANT_TYPE_STRING_ARRAY));
}

// Whether such a list names the service.
inline bool Names(const GVariantPtr& uuids, const char* service) {
    GVariantIter iter;
    g_variant_iter_init(&iter, uuids.get());
    const char* uuid = nullptr;
    while (g_variant_iter_next(&iter, "&s", &uuid) != FALSE) {
        if (g_ascii_strcasecmp(uuid, service) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace Bluez
