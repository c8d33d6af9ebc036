// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/config_store.h"

#include <glib.h>

#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "platform/linux/config/ConfigStore.h"
#include "platform/linux/config/ConfigWatcher.h"

namespace {

using Platform::ConfigLookup;
using Platform::ConfigStatus;
using Platform::ConfigStore;
using Platform::ConfigType;
using Platform::ConfigValue;
using Platform::ConfigWatcher;

constexpr int kFailed = -1;

// One watcher for each file, for the life of the process: the service's objects give their
// registrations up while static objects are torn down.
ConfigWatcher* WatcherOf(const char* key) {
    static auto& watchers = *new std::map<Platform::ConfigFile*, std::unique_ptr<ConfigWatcher>>();
    Platform::ConfigFile* file = ConfigStore::Instance().FileOf(key);
    if (file == nullptr) {
        return nullptr;
    }
    std::unique_ptr<ConfigWatcher>& watcher = watchers[file];
    if (watcher == nullptr) {
        watcher = std::make_unique<ConfigWatcher>(*file);
    }
    return watcher.get();
}

// Nothing when the key has no value of the type, or it cannot be read.
std::optional<ConfigValue> Read(const char* key, ConfigType type) {
    if (key == nullptr) {
        return std::nullopt;
    }
    ConfigLookup lookup = ConfigStore::Instance().Lookup(key);
    ConfigWatcher* watcher = WatcherOf(key);
    if (watcher != nullptr && ConfigWatcher::IsMissed(lookup.status)) {
        watcher->MissedRead();
    }
    return lookup.Holds(type) ? std::optional(std::move(lookup.value)) : std::nullopt;
}

int GetNumber(const char* key, ConfigType type, int* value) {
    const auto stored = value == nullptr ? std::nullopt : Read(key, type);
    if (!stored) {
        return kFailed;
    }
    *value = stored->number;
    return 0;
}

int SetValue(const char* key, const ConfigValue& value) {
    if (key == nullptr) {
        return kFailed;
    }
    return ConfigStore::Instance().Store(key, value) == ConfigStatus::kOk ? 0 : kFailed;
}

struct Completion {
    vconf_set_async_cb callback;
    void* userData;
};

gboolean OnCompleted(gpointer userData) noexcept {
    const std::unique_ptr<Completion> completion(static_cast<Completion*>(userData));
    completion->callback(0, completion->userData);
    return G_SOURCE_REMOVE;
}

// The value is stored before the call returns, which the interface allows; only the answer waits
// for the main loop.
int SetValueAsync(const char* key, const ConfigValue& value, vconf_set_async_cb callback,
                  void* userData) {
    const int result = SetValue(key, value);
    if (result == 0 && callback != nullptr) {
        g_idle_add_full(G_PRIORITY_DEFAULT, OnCompleted, new Completion{callback, userData},
                        nullptr);
    }
    return result;
}

}  // namespace

char* vconf_get_str(const char* key) {
    const auto stored = Read(key, ConfigType::kString);
    return stored ? strdup(stored->text.c_str()) : nullptr;
}

int vconf_get_bool(const char* key, int* value) {
    return GetNumber(key, ConfigType::kBool, value);
}

int vconf_get_int(const char* key, int* value) {
    return GetNumber(key, ConfigType::kInt, value);
}

int vconf_set_str(const char* key, const char* value) {
    return value != nullptr ? SetValue(key, {ConfigType::kString, value, 0}) : kFailed;
}

int vconf_set_bool(const char* key, int value) {
    return SetValue(key, {ConfigType::kBool, {}, value});
}

int vconf_set_int(const char* key, int value) {
    return SetValue(key, {ConfigType::kInt, {}, value});
}

int vconf_set_str_async(const char* key, const char* value, vconf_set_async_cb callback,
                        void* user_data) {
    if (value == nullptr) {
        return kFailed;
    }
    return SetValueAsync(key, {ConfigType::kString, value, 0}, callback, user_data);
}

int vconf_set_bool_async(const char* key, int value, vconf_set_async_cb callback, void* user_data) {
    return SetValueAsync(key, {ConfigType::kBool, {}, value}, callback, user_data);
}

int vconf_set_int_async(const char* key, int value, vconf_set_async_cb callback, void* user_data) {
    return SetValueAsync(key, {ConfigType::kInt, {}, value}, callback, user_data);
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
    ConfigWatcher* watcher = key != nullptr && callback != nullptr ? WatcherOf(key) : nullptr;
    return watcher != nullptr && watcher->Add(key, callback, user_data) ? 0 : kFailed;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    ConfigWatcher* watcher = key != nullptr && callback != nullptr ? WatcherOf(key) : nullptr;
    return watcher != nullptr && watcher->Remove(key, callback) ? 0 : kFailed;
}
