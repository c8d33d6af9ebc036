// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/VconfUtil.h"

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"

namespace Util {

const std::array<std::string, VCONF_KEY_COUNT> VconfUtil::keys = {
#define VCONF_KEY(id, key) key,
#include "utility/VconfKeyTable.h"
#undef VCONF_KEY
};

namespace {

// The texts differ, and others search for them as they are.
constexpr const char* kGetFailure = "fail to get vconfkey";
constexpr const char* kSetFailure = "fail to vconfkey";
constexpr const char* kSetBoolFailure = "fail to set vconfkey";

// The store refuses the empty name, so a wrong id fails there and is logged like any failure.
const char* KeyOf(int id) {
    return id >= 0 && id < VCONF_KEY_COUNT ? VconfUtil::keys[static_cast<std::size_t>(id)].c_str()
                                           : "";
}

// What an access of the key `id` came to, under the name of the operation that made it.
void LogFailure(const LogPlace& place, const char* failure, int id) {
    BTLOG_FOR(place, DLOG_ERROR, "%s %s[%d]", failure, KeyOf(id), id);
}

void LogValue(const LogPlace& place, int id, const char* value) {
    BTLOG_FOR(place, DLOG_DEBUG, "key : %s, value : %s", KeyOf(id), value);
}

void LogValue(const LogPlace& place, int id, int value) {
    BTLOG_FOR(place, DLOG_DEBUG, "key : %s, value : %d", KeyOf(id), value);
}

// Has the platform's `set` store `value`; an asynchronous one has more arguments.
template <typename Set, typename Value, typename... More>
void Store(const LogPlace& place, const char* failure, int id, Value value, Set set, More... more) {
    if (set(KeyOf(id), value, more...) == 0) {
        LogValue(place, id, value);
    } else {
        LogFailure(place, failure, id);
    }
}

}  // namespace

void VconfUtil::GetVconf(int id, std::string& value) {
    const MallocPtr<char> stored(vconf_get_str(KeyOf(id)));
    if (!stored) {
        LogFailure(BTLOG_HERE, kGetFailure, id);
        return;
    }
    value = stored.get();
    LogValue(BTLOG_HERE, id, value.c_str());
}

void VconfUtil::GetVconf(int id, bool& value) {
    int stored = 0;
    if (vconf_get_bool(KeyOf(id), &stored) != 0) {
        LogFailure(BTLOG_HERE, kGetFailure, id);
        return;
    }
    value = stored != 0;
    LogValue(BTLOG_HERE, id, static_cast<int>(value));
}

void VconfUtil::GetVconf(int id, int& value) {
    if (vconf_get_int(KeyOf(id), &value) != 0) {
        LogFailure(BTLOG_HERE, kGetFailure, id);
        return;
    }
    LogValue(BTLOG_HERE, id, value);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
void VconfUtil::SetVconf(int id, std::string value) {
    Store(BTLOG_HERE, kSetFailure, id, value.c_str(), vconf_set_str);
}

void VconfUtil::SetVconf(int id, bool value) {
    Store(BTLOG_HERE, kSetBoolFailure, id, static_cast<int>(value), vconf_set_bool);
}

void VconfUtil::SetVconf(int id, int value) {
    Store(BTLOG_HERE, kSetFailure, id, value, vconf_set_int);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
void VconfUtil::SetVconfAsync(int id, std::string value) {
    BTLOG_ERROR("set %s to %s async", KeyOf(id), value.c_str());
    Store(BTLOG_HERE, kSetFailure, id, value.c_str(), vconf_set_str_async, nullptr, nullptr);
}

void VconfUtil::SetVconfAsync(int id, bool value) {
    BTLOG_ERROR("set %s to %d async", KeyOf(id), value);
    Store(BTLOG_HERE, kSetBoolFailure, id, static_cast<int>(value), vconf_set_bool_async, nullptr,
          nullptr);
}

void VconfUtil::SetVconfAsync(int id, int value) {
    BTLOG_ERROR("set %s to %d async", KeyOf(id), value);
    Store(BTLOG_HERE, kSetFailure, id, value, vconf_set_int_async, nullptr, nullptr);
}

int VconfUtil::AddVconfChangedCb(int id, vconf_callback_fn callback, void* user_data) {
    BTLOG_DEBUG("Add vconf key callback %s[%d]", KeyOf(id), id);
    return vconf_notify_key_changed(KeyOf(id), callback, user_data);
}

int VconfUtil::RemoveVconfChangedCb(int id, vconf_callback_fn callback) {
    BTLOG_DEBUG("Remove vconf key callback %s[%d]", KeyOf(id), id);
    return vconf_ignore_key_changed(KeyOf(id), callback);
}

}  // namespace Util
