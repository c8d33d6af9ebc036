// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string>

#include "platform/config_store.h"

namespace Util {

// The id of each configuration key; 0 to 143, stable.
enum VconfKeyId : int {
#define VCONF_KEY(id, name, key) VCONF_KEY_##name = (id),
#include "utility/VconfKeyTable.h"
#undef VCONF_KEY
    VCONF_KEY_COUNT
};

// Reads, writes and watches the keys of the platform's configuration store by key id. Every access
// is logged with the key, so that a log shows which setting was touched. Nothing is cached. Main
// loop's thread only. An id outside 0 to 143 names no key: the access fails like that of a key
// that was never written.
class VconfUtil {
public:
    // The key of each id, filled before main.
    static const std::array<std::string, VCONF_KEY_COUNT> keys;

    // `value` keeps its content when the key was never written or has another type.
    static void GetVconf(int id, std::string& value);
    static void GetVconf(int id, bool& value);
    static void GetVconf(int id, int& value);

    static void SetVconf(int id, std::string value);
    // Without this a string literal would turn into a bool.
    static void SetVconf(int id, const char* value) { SetVconf(id, std::string(value)); }
    static void SetVconf(int id, bool value);
    static void SetVconf(int id, int value);

    // As SetVconf, without waiting for the value to be stored.
    static void SetVconfAsync(int id, std::string value);
    static void SetVconfAsync(int id, const char* value) { SetVconfAsync(id, std::string(value)); }
    static void SetVconfAsync(int id, bool value);
    static void SetVconfAsync(int id, int value);

    // Has `callback` called on the main loop when the key changes, and ends that. `user_data` must
    // stay valid until then. The platform's result: 0 on success.
    static int AddVconfChangedCb(int id, vconf_callback_fn callback, void* user_data);
    static int RemoveVconfChangedCb(int id, vconf_callback_fn callback);
};

}  // namespace Util
