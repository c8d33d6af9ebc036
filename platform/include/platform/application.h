/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_APPLICATION_H
#define PLATFORM_APPLICATION_H

#include <stdbool.h>

/*
 * The platform's application control (launch requests) and application manager (questions about
 * applications). Functions return APP_CONTROL_ERROR_NONE (0) on success and a negative value on
 * failure, a NULL argument included. An application id is a reverse-domain name such as
 * "com.velmora.tv.bmp". Functions may be called on any thread unless they say otherwise; a handle
 * belongs to one thread at a time.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* ---- launch requests ---- */

typedef enum {
    APP_CONTROL_ERROR_NONE = 0,
    APP_CONTROL_ERROR_INVALID_PARAMETER = -22,
    APP_CONTROL_ERROR_OUT_OF_MEMORY = -12,
    APP_CONTROL_ERROR_KEY_NOT_FOUND = -126,
    APP_CONTROL_ERROR_APP_NOT_FOUND = -2,
    APP_CONTROL_ERROR_LAUNCH_FAILED = -5,
    APP_CONTROL_ERROR_TIMED_OUT = -110
} app_control_error_e;

/* The operation "launch it, or tell it when it runs". */
#define APP_CONTROL_OPERATION_DEFAULT "default"

typedef struct app_control_s* app_control_h;

/* An empty request in *handle, owned by the caller, to be released with app_control_destroy. */
int app_control_create(app_control_h* handle);
int app_control_destroy(app_control_h handle);

/* The texts are copied. */
int app_control_set_operation(app_control_h handle, const char* operation);
int app_control_set_app_id(app_control_h handle, const char* app_id);
/* Adds an extra after those already there; a key that is there gets the new value in its place.
 * Both are UTF-8. INVALID_PARAMETER when one is not, which the platform logs: the request then
 * stays as it was, and may be sent without that extra. */
int app_control_add_extra_data(app_control_h handle, const char* key, const char* value);

/* Copies that the caller releases with free; *app_id and *value are NULL after a failure. */
int app_control_get_app_id(app_control_h handle, char** app_id);
int app_control_get_extra_data(app_control_h handle, const char* key, char** value);

/* Calls `callback` for each extra in order, with its key, until it returns false. */
typedef bool (*app_control_extra_data_cb)(app_control_h handle, const char* key, void* user_data);
int app_control_foreach_extra_data(app_control_h handle, app_control_extra_data_cb callback,
                                   void* user_data);

/* An application's own answer to a request; this package asks for none and passes NULL. */
typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply,
                                     app_control_error_e result, void* user_data);
/* Outcome of an asynchronous request, on the main loop; `request` is a copy valid during the call.
 */
typedef void (*app_control_result_cb)(app_control_h request, app_control_error_e result,
                                      void* user_data);

/* Launches the application, starting it when it does not run. On the main loop's thread it never
 * waits: 0 means that the request is on its way, and a failure that comes back later is logged by
 * the platform. On another thread it returns the application's own outcome, within 10 s. */
int app_control_send_launch_request(app_control_h handle, app_control_reply_cb reply_callback,
                                    void* user_data);
/* Main loop's thread only. Returns at once; `result_callback` is called exactly once on the main
 * loop, later, when this function returned 0, and not at all otherwise. */
int app_control_send_launch_request_async(app_control_h handle,
                                          app_control_result_cb result_callback,
                                          app_control_reply_cb reply_callback, void* user_data);

/* ---- application manager ---- */

typedef enum {
    APP_STATE_UNDEFINED = 0,
    APP_STATE_FOREGROUND = 1,
    APP_STATE_BACKGROUND = 2
} app_state_e;

/* These ask the platform and wait for its answer, at most some 2 s. */
int app_manager_is_running(const char* app_id, bool* running);

typedef struct app_context_s* app_context_h;
/* The context of a running application, owned by the caller; fails when it does not run. */
int app_manager_get_app_context(const char* app_id, app_context_h* context);
int app_context_get_app_state(app_context_h context, app_state_e* state);
/* A copy that the caller releases with free. */
int app_context_get_app_id(app_context_h context, char** app_id);
int app_context_destroy(app_context_h context);

/* Calls `callback` for each running application that can be seen on the screen, until it returns
 * false; the context is the platform's and valid during the call. */
typedef bool (*app_manager_app_context_cb)(app_context_h context, void* user_data);
int app_manager_foreach_visible_app_context(app_manager_app_context_cb callback, void* user_data);

typedef struct app_info_s* app_info_h;
/* What is known of an installed application, owned by the caller; fails when it is not installed.
 */
int app_manager_get_app_info(const char* app_id, app_info_h* info);
/* Calls `callback` for each metadata item, in the order of the application's description, until it
 * returns false; the texts are valid during the call. */
typedef bool (*app_info_metadata_cb)(const char* key, const char* value, void* user_data);
int app_info_foreach_metadata(app_info_h info, app_info_metadata_cb callback, void* user_data);
int app_info_destroy(app_info_h info);

#ifdef __cplusplus
}
#endif

#endif
