// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "common/CHandle.h"
#include "platform/database.h"
#include "tests/fake_platform/FakeState.h"

struct _keynode_t {};

namespace Fake {

namespace {

bool IsKey(const std::string& key) {
    return key.compare(0, 3, "db/") == 0 || key.compare(0, 7, "memory/") == 0;
}

int Write(const char* key, const Value& value) {
    FAKE_REFUSE_IF(!IsKey(key), -1);
    WriteKey(key, value);
    return 0;
}

// The value is there, and the callback called, with the next RunPending.
int WriteLater(const char* key, const Value& value, vconf_set_async_cb callback, void* data) {
    FAKE_REFUSE_IF(!IsKey(key), -1);
    Post([name = std::string(key), value, callback, data] {
        WriteKey(name, value);
        if (callback != nullptr) {
            callback(0, data);
        }
    });
    return 0;
}

}  // namespace

void WriteKey(const std::string& key, const std::optional<Value>& value) {
    TheWorld().keys.erase(key);
    if (value) {
        TheWorld().keys[key] = *value;
    }
    for (const auto& watch : Main().watches) {
        if (watch->key == key) {
            // Unless it is ignored by then.
            Post([weak = std::weak_ptr(watch)] {
                keynode_t node{};
                if (const auto still = weak.lock()) {
                    still->callback(&node, still->data);
                }
            });
        }
    }
}

std::string TextKey(const std::string& key) {
    std::string text = "(none)";
    Read<std::string>(TheWorld().keys, key.c_str(), &text);
    return text;
}

}  // namespace Fake

using Fake::Main;
using Fake::TheWorld;

extern "C" {

char* vconf_get_str(const char* key) {
    Fake::Enter(Fake::Kind::kQuery, Fake::Thread::kMain, __func__, key);
    std::string text;
    return Fake::Read<std::string>(TheWorld().keys, key, &text) == 0 ? strdup(text.c_str())
                                                                     : nullptr;
}

int vconf_get_bool(const char* key, int* value) {
    FAKE_QUERY(key);
    return Fake::Read<Fake::Flag>(TheWorld().keys, key, value);
}

int vconf_get_int(const char* key, int* value) {
    FAKE_QUERY(key);
    return Fake::Read<int>(TheWorld().keys, key, value);
}

// The two setters of a type, whose values the store keeps as `stored`.
#define FAKE_SETTERS(type, Argument, stored)                                               \
    int vconf_set_##type(const char* key, Argument value) {                                \
        FAKE_COMMAND(key, value);                                                          \
        return Fake::Write(key, stored);                                                   \
    }                                                                                      \
    int vconf_set_##type##_async(const char* key, Argument value, vconf_set_async_cb done, \
                                 void* user_data) {                                        \
        FAKE_COMMAND(key, value);                                                          \
        return Fake::WriteLater(key, stored, done, user_data);                             \
    }
FAKE_SETTERS(str, const char*, std::string(value))
FAKE_SETTERS(bool, int, Fake::Flag{value})
FAKE_SETTERS(int, int, value)

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
    FAKE_QUERY(key);
    FAKE_REFUSE_IF(!Fake::IsKey(key), -1);
    Main().watches.push_back(std::make_shared<Fake::Watch>(Fake::Watch{key, callback, user_data}));
    return 0;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    FAKE_QUERY(key);
    const std::size_t before = Main().watches.size();
    Main().watches.remove_if(
        [&](const auto& watch) { return watch->key == key && watch->callback == callback; });
    return Main().watches.size() < before ? 0 : -1;
}

// The file is a real one: what is kept is the file's, and so are the faults. Folders are not made.
int db_util_open(const char* path, sqlite3** db, int option) {
    FAKE_QUERY_ANYWHERE(path, option);
    FAKE_REFUSE_IF(option != DB_UTIL_REGISTER_HOOK_METHOD, SQLITE_MISUSE);
    SqlitePtr connection;
    const int code = sqlite3_open(path, Out(connection));
    if (code == SQLITE_OK) {
        *db = connection.release();
    }
    return code;
}

}  // extern "C"
