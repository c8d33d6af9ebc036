// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>
#include <sqlite3.h>

#include <cstdlib>
#include <memory>
#include <utility>

// Owners for handles of C libraries. Each alias frees its handle with the function that the library
// gives for it, so a handle is released exactly once on every path. Only handles that the caller
// must free ("transfer full") are wrapped; a borrowed one stays a raw pointer, and a floating
// GVariant goes straight into the call that sinks it.

template <auto Free>
struct CFree {
    template <typename T>
    void operator()(T* handle) const noexcept {
        Free(handle);
    }
};

template <typename T, auto Free>
using CPtr = std::unique_ptr<T, CFree<Free>>;

template <typename T>
using GObjectPtr = CPtr<T, g_object_unref>;
using GErrorPtr = CPtr<GError, g_error_free>;
using GVariantPtr = CPtr<GVariant, g_variant_unref>;
using GStringPtr = CPtr<char, g_free>;
using GStrvPtr = CPtr<char*, g_strfreev>;
using GKeyFilePtr = CPtr<GKeyFile, g_key_file_unref>;
using GMainLoopPtr = CPtr<GMainLoop, g_main_loop_unref>;
using GDBusNodeInfoPtr = CPtr<GDBusNodeInfo, g_dbus_node_info_unref>;
using SqlitePtr = CPtr<sqlite3, sqlite3_close_v2>;
using StatementPtr = CPtr<sqlite3_stmt, sqlite3_finalize>;
// What sqlite3_mprintf makes; empty when there was no memory for it.
using SqliteTextPtr = CPtr<char, sqlite3_free>;
// Memory that a platform function hands over to be released with the C library's free.
template <typename T>
using MallocPtr = CPtr<T, std::free>;

// Out-parameter for an owner: `f(Out(owner))` releases what the owner held and stores what `f`
// wrote. In the same full expression the owner must not be read or be given to another Out.
template <typename Owner>
class OutHandle {
public:
    explicit OutHandle(Owner& owner) : m_owner(owner) {}
    OutHandle(const OutHandle&) = delete;
    OutHandle& operator=(const OutHandle&) = delete;
    ~OutHandle() { m_owner.reset(m_raw); }
    // NOLINTNEXTLINE(google-explicit-constructor): stands in for the T** argument itself
    operator typename Owner::pointer *() { return &m_raw; }

private:
    Owner& m_owner;
    typename Owner::pointer m_raw = nullptr;
};

template <typename Owner>
OutHandle<Owner> Out(Owner& owner) {
    return OutHandle<Owner>(owner);
}
