// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace TvSim {

// A property's value; copies share it, GVariants never change.
using Value = std::shared_ptr<GVariant>;
// The properties of one D-Bus interface by name.
using Properties = std::map<std::string, Value>;

// Takes over a floating or owned reference.
inline Value Own(GVariant* variant) {
    return {g_variant_take_ref(variant), g_variant_unref};
}
inline Value Bool(bool value) {
    return Own(g_variant_new_boolean(value ? TRUE : FALSE));
}
inline Value Text(const std::string& value) {
    return Own(g_variant_new_string(value.c_str()));
}
inline Value ObjectPath(const std::string& value) {
    return Own(g_variant_new_object_path(value.c_str()));
}
inline Value Byte(unsigned char value) {
    return Own(g_variant_new_byte(value));
}
inline Value Int16(int value) {
    return Own(g_variant_new_int16(static_cast<gint16>(value)));
}
inline Value Uint16(unsigned value) {
    return Own(g_variant_new_uint16(static_cast<guint16>(value)));
}
inline Value Uint32(guint32 value) {
    return Own(g_variant_new_uint32(value));
}
inline Value Texts(const std::vector<std::string>& values) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const std::string& value : values) {
        g_variant_builder_add(&builder, "s", value.c_str());
    }
    return Own(g_variant_builder_end(&builder));
}
inline GVariant* NewBytes(const std::vector<unsigned char>& bytes) {
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}
inline Value Bytes(const std::vector<unsigned char>& bytes) {
    return Own(NewBytes(bytes));
}

// The properties as an a{sv}, floating.
inline GVariant* NewDictionary(const Properties& properties) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : properties) {
        g_variant_builder_add(&builder, "{sv}", name.c_str(), value.get());
    }
    return g_variant_builder_end(&builder);
}

}  // namespace TvSim
