// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string>

#include "platform/config_store.h"

namespace Util {

// The id of each configuration key; 0 to 143, stable. Those that this program uses have a name.
enum VconfKeyId : int {
#define VCONF_KEY(id, key) VCONF_KEY_##id,
#include "utility/VconfKeyTable.h"
#undef VCONF_KEY
    VCONF_KEY_COUNT,
    VCONF_KEY_DB_NIRVO_ALLOWEDSSDEVICELIST = VCONF_KEY_1,
    VCONF_KEY_DB_NIRVO_SOUNDSHAREDEVICE_DEV_ONE_ADDR = VCONF_KEY_5,
    VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED1 = VCONF_KEY_6,
    VCONF_KEY_DB_NIRVO_MUSICTV_PAIRED3 = VCONF_KEY_12,
    VCONF_KEY_DB_NIRVO_AUTO_CONNECT_MOBILE_LIST = VCONF_KEY_13,
    VCONF_KEY_DB_LOW_POWER_SUPPORT_BT_DISABLE = VCONF_KEY_26,
    VCONF_KEY_DB_ORG_ORLIX_BLEAPP_ADDED_MOBILE_KEYLIST = VCONF_KEY_30,
    VCONF_KEY_MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL = VCONF_KEY_48,
    VCONF_KEY_MEMORY_WIFI_FREQUENCY = VCONF_KEY_92,
    VCONF_KEY_DB_NIRVO_AMBIENT_MODE_FULL_POWER_OFF_EVENT = VCONF_KEY_113,
    VCONF_KEY_DB_NIRVO_VELMORA_AUDIO_COMPATIBILITY = VCONF_KEY_130,
    VCONF_KEY_DB_NIRVO_LAST_AUDIO_AUTO_CONNECTION = VCONF_KEY_139,
    VCONF_KEY_MEMORY_ACM_NETWORKSPEAKER_STATUS = VCONF_KEY_142,
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
    // Without this a string literal would be taken as a bool.
    static void SetVconf(int id, const char* value) { SetVconf(id, std::string(value)); }
    static void SetVconf(int id, bool value);
    static void SetVconf(int id, int value);

    // As SetVconf, without waiting for the value to be stored.
    static void SetVconfAsync(int id, std::string value);
    static void SetVconfAsync(int id, const char* value) { SetVconfAsync(id, std::string(value)); }
    static void SetVconfAsync(int id, bool value);
    static void SetVconfAsync(int id, int value);

    // The first has `callback` called on the main loop when the key changes; the second ends that,
    // and `user_data` must stay valid until then. The platform's result: 0 on success.
    static int AddVconfChangedCb(int id, vconf_callback_fn callback, void* user_data);
    static int RemoveVconfChangedCb(int id, vconf_callback_fn callback);
};

}  // namespace Util
