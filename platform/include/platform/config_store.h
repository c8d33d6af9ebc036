/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_CONFIG_STORE_H
#define PLATFORM_CONFIG_STORE_H

/*
 * The platform's key-value configuration store, shared by all processes of the TV. Keys that begin
 * with "db/" persist: a write that was acknowledged survives a power cut. Keys that begin with
 * "memory/" are gone at the next boot. Any other key name fails. A value has one of three types,
 * string, bool or int; a write replaces value and type.
 *
 * Every function returns 0 on success and a negative value on failure unless it says otherwise.
 * Main loop's thread only.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* A changed key, as a change callback gets it; opaque, valid during the callback. */
typedef struct _keynode_t keynode_t;

/* Called on the main loop after the key was written, by any process, this one included. Writes in
 * quick succession may arrive as one call. `user_data` is what the registration gave. */
typedef void (*vconf_callback_fn)(keynode_t* node, void* user_data);

/* Completion of an asynchronous write, on the main loop; `result` is 0 or negative. */
typedef void (*vconf_set_async_cb)(int result, void* user_data);

/* The text of a string key, to be released by the caller with free. NULL when the key was never
 * written or has another type. */
char* vconf_get_str(const char* key);

/* The value of a bool or int key. On failure (never written, another type) *value is untouched.
 * A bool comes back as the int that was written as one: any non-zero value means true. */
int vconf_get_bool(const char* key, int* value);
int vconf_get_int(const char* key, int* value);

/* Writes a value; it is stored when the call returns. */
int vconf_set_str(const char* key, const char* value);
int vconf_set_bool(const char* key, int value);
int vconf_set_int(const char* key, int value);

/* As above, but may return before the value is stored. `callback` may be NULL; otherwise it is
 * called once on the main loop, never before this function returns, and not at all when this
 * function failed. */
int vconf_set_str_async(const char* key, const char* value, vconf_set_async_cb callback,
                        void* user_data);
int vconf_set_bool_async(const char* key, int value, vconf_set_async_cb callback, void* user_data);
int vconf_set_int_async(const char* key, int value, vconf_set_async_cb callback, void* user_data);

/* Watches a key, which need not exist, from now on: writes made before are not told. The same
 * callback may watch a key several times with different user data; `user_data` must stay valid
 * until the registration is removed. */
int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data);

/* Removes every registration of `callback` on `key`; none is called afterwards, not even for a
 * write made before. Fails when there is none. */
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback);

#ifdef __cplusplus
}
#endif

#endif
