// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "platform/config_store.h"
#include "tests/fake_platform/FakeState.h"

struct _keynode_t {};

namespace Fake {

namespace {

constexpr int kFailed = -1;

struct Watch {
    std::string key;
    vconf_callback_fn callback;
    void* data;
};

std::vector<Watch>& Watches() {
    static std::vector<Watch>& watches = *new std::vector<Watch>;
    return watches;
}

bool IsKey(const char* key) {
    return key != nullptr &&
           (std::strncmp(key, "db/", 3) == 0 || std::strncmp(key, "memory/", 7) == 0);
}

bool SameWatch(const Watch& a, const Watch& b) {
    return a.key == b.key && a.callback == b.callback && a.data == b.data;
}

// Calls those of `watches`, who watched the key when it was written, that still do.
void Notify(const std::string& key, const std::vector<Watch>& watches) {
    for (const Watch& watch : watches) {
        const bool still = std::any_of(Watches().begin(), Watches().end(),
                                       [&](const Watch& w) { return SameWatch(w, watch); });
        if (watch.key == key && still) {
            keynode_t node{};
            watch.callback(&node, watch.data);
        }
    }
}

// The key's value; NULL when it was never written.
const Value* Find(const char* key) {
    const auto found = IsKey(key) ? TheWorld().keys.find(key) : TheWorld().keys.end();
    return found == TheWorld().keys.end() ? nullptr : &found->second;
}

int Write(const char* key, const Value& value) {
    FAKE_REFUSE_IF(!IsKey(key), kFailed);
    WriteKey(key, value);
    return 0;
}

// The value is there, and the callback called, with the next RunPending.
int WriteLater(const char* key, const Value& value, vconf_set_async_cb callback, void* data) {
    FAKE_REFUSE_IF(!IsKey(key), kFailed);
    Post([name = std::string(key), value, callback, data] {
        WriteKey(name, value);
        if (callback != nullptr) {
            callback(0, data);
        }
    });
    return 0;
}

}  // namespace

void ResetConfig() {
    Watches().clear();
}

void ConfigLeftovers(std::vector<std::string>* found) {
    for (const Watch& watch : Watches()) {
        found->push_back("watch on " + watch.key);
    }
}

void WriteKey(const std::string& key, const std::optional<Value>& value) {
    if (value) {
        TheWorld().keys[key] = *value;
    } else {
        TheWorld().keys.erase(key);
    }
    Post([key, watches = Watches()] { Notify(key, watches); });
}

std::string TextKey(const std::string& key) {
    const auto found = TheWorld().keys.find(key);
    const bool text =
        found != TheWorld().keys.end() && std::holds_alternative<std::string>(found->second);
    return text ? std::get<std::string>(found->second) : "(none)";
}

}  // namespace Fake

using Fake::Value;

extern "C" {

char* vconf_get_str(const char* key) {
    Fake::Enter(Fake::Kind::kQuery, Fake::Thread::kMain, __func__, Fake::Joined(key));
    const Value* value = Fake::Find(key);
    const auto* text = value == nullptr ? nullptr : std::get_if<std::string>(value);
    return text == nullptr ? nullptr : strdup(text->c_str());
}

int vconf_get_bool(const char* key, int* value) {
    FAKE_QUERY(key);
    const Value* stored = Fake::Find(key);
    FAKE_REFUSE_IF(stored == nullptr || !std::holds_alternative<bool>(*stored), Fake::kFailed);
    *value = static_cast<int>(std::get<bool>(*stored));
    return 0;
}

int vconf_get_int(const char* key, int* value) {
    FAKE_QUERY(key);
    const Value* stored = Fake::Find(key);
    FAKE_REFUSE_IF(stored == nullptr || !std::holds_alternative<int>(*stored), Fake::kFailed);
    *value = std::get<int>(*stored);
    return 0;
}

int vconf_set_str(const char* key, const char* value) {
    FAKE_COMMAND(key, value);
    FAKE_REFUSE_IF(value == nullptr, Fake::kFailed);
    return Fake::Write(key, std::string(value));
}

int vconf_set_bool(const char* key, int value) {
    FAKE_COMMAND(key, value);
    return Fake::Write(key, value != 0);
}

int vconf_set_int(const char* key, int value) {
    FAKE_COMMAND(key, value);
    return Fake::Write(key, value);
}

int vconf_set_str_async(const char* key, const char* value, vconf_set_async_cb callback,
                        void* user_data) {
    FAKE_COMMAND(key, value);
    return Fake::WriteLater(key, std::string(value), callback, user_data);
}

int vconf_set_bool_async(const char* key, int value, vconf_set_async_cb callback, void* user_data) {
    FAKE_COMMAND(key, value);
    return Fake::WriteLater(key, value != 0, callback, user_data);
}

int vconf_set_int_async(const char* key, int value, vconf_set_async_cb callback, void* user_data) {
    FAKE_COMMAND(key, value);
    return Fake::WriteLater(key, value, callback, user_data);
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
    FAKE_QUERY(key);
    FAKE_REFUSE_IF(!Fake::IsKey(key), Fake::kFailed);
    Fake::Watches().push_back({key, callback, user_data});
    return 0;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    FAKE_QUERY(key);
    const std::size_t before = Fake::Watches().size();
    auto& watches = Fake::Watches();
    watches.erase(std::remove_if(watches.begin(), watches.end(),
                                 [&](const Fake::Watch& watch) {
                                     return watch.key == key && watch.callback == callback;
                                 }),
                  watches.end());
    return watches.size() < before ? 0 : Fake::kFailed;
}

}  // extern "C"
