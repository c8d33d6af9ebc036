// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/VconfUtil.h"

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"

namespace Util {

const std::array<std::string, VCONF_KEY_COUNT> VconfUtil::keys = {
#define VCONF_KEY(id, name, key) key,
#include "utility/VconfKeyTable.h"
#undef VCONF_KEY
};

namespace {

// The store refuses the empty name, so a wrong id fails there and is logged like any failure.
const char* KeyOf(int id) {
    return id >= 0 && id < VCONF_KEY_COUNT ? VconfUtil::keys[static_cast<std::size_t>(id)].c_str()
                                           : "";
}

}  // namespace

void VconfUtil::GetVconf(int id, std::string& value) {
    const char* key = KeyOf(id);
    const MallocPtr<char> stored(vconf_get_str(key));
    if (!stored) {
        BTLOG_ERROR("fail to get vconfkey %s[%d]", key, id);
        return;
    }
    value = stored.get();
    BTLOG_DEBUG("key : %s, value : %s", key, value.c_str());
}

void VconfUtil::GetVconf(int id, bool& value) {
    const char* key = KeyOf(id);
    int stored = 0;
    if (vconf_get_bool(key, &stored) != 0) {
        BTLOG_ERROR("fail to get vconfkey %s[%d]", key, id);
        return;
    }
    value = stored != 0;
    BTLOG_DEBUG("key : %s, value : %d", key, value);
}

void VconfUtil::GetVconf(int id, int& value) {
    const char* key = KeyOf(id);
    if (vconf_get_int(key, &value) != 0) {
        BTLOG_ERROR("fail to get vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %d", key, value);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
void VconfUtil::SetVconf(int id, std::string value) {
    const char* key = KeyOf(id);
    if (vconf_set_str(key, value.c_str()) != 0) {
        BTLOG_ERROR("fail to vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %s", key, value.c_str());
}

void VconfUtil::SetVconf(int id, bool value) {
    const char* key = KeyOf(id);
    if (vconf_set_bool(key, static_cast<int>(value)) != 0) {
        BTLOG_ERROR("fail to set vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %d", key, value);
}

void VconfUtil::SetVconf(int id, int value) {
    const char* key = KeyOf(id);
    if (vconf_set_int(key, value) != 0) {
        BTLOG_ERROR("fail to vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %d", key, value);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
void VconfUtil::SetVconfAsync(int id, std::string value) {
    const char* key = KeyOf(id);
    BTLOG_ERROR("set %s to %s async", key, value.c_str());
    if (vconf_set_str_async(key, value.c_str(), nullptr, nullptr) != 0) {
        BTLOG_ERROR("fail to vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %s", key, value.c_str());
}

void VconfUtil::SetVconfAsync(int id, bool value) {
    const char* key = KeyOf(id);
    BTLOG_ERROR("set %s to %d async", key, value);
    if (vconf_set_bool_async(key, static_cast<int>(value), nullptr, nullptr) != 0) {
        BTLOG_ERROR("fail to set vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %d", key, value);
}

void VconfUtil::SetVconfAsync(int id, int value) {
    const char* key = KeyOf(id);
    BTLOG_ERROR("set %s to %d async", key, value);
    if (vconf_set_int_async(key, value, nullptr, nullptr) != 0) {
        BTLOG_ERROR("fail to vconfkey %s[%d]", key, id);
        return;
    }
    BTLOG_DEBUG("key : %s, value : %d", key, value);
}

int VconfUtil::AddVconfChangedCb(int id, vconf_callback_fn callback, void* user_data) {
    const char* key = KeyOf(id);
    BTLOG_DEBUG("Add vconf key callback %s[%d]", key, id);
    return vconf_notify_key_changed(key, callback, user_data);
}

int VconfUtil::RemoveVconfChangedCb(int id, vconf_callback_fn callback) {
    const char* key = KeyOf(id);
    BTLOG_DEBUG("Remove vconf key callback %s[%d]", key, id);
    return vconf_ignore_key_changed(key, callback);
}

}  // namespace Util
