/* SPDX-FileCopyrightText: 2026 The bt-autoconnect authors */
/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PLATFORM_BLUETOOTH_H
#define PLATFORM_BLUETOOTH_H

#include <stdbool.h>
#include <stdint.h>

/*
 * The platform's Bluetooth service as this package calls it. Main loop's thread only. No function
 * waits for another process: queries answer from what the platform already knows, operations
 * complete by a callback on the main loop, never before the function that started them returned.
 * An address is 17 characters, 'XX:XX:XX:XX:XX:XX', upper or lower case on input and upper case in
 * what the platform hands out.
 */

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    BT_ERROR_NONE = 0,
    BT_ERROR_CANCELLED = -125,
    BT_ERROR_INVALID_PARAMETER = -22,
    BT_ERROR_OUT_OF_MEMORY = -12,
    BT_ERROR_RESOURCE_BUSY = -16,
    BT_ERROR_TIMED_OUT = -1073741823,
    BT_ERROR_NOW_IN_PROGRESS = -115,
    BT_ERROR_NOT_SUPPORTED = -95, /* this platform has nothing of the kind */
    BT_ERROR_NOT_INITIALIZED = -29359871,
    BT_ERROR_NOT_ENABLED = -29359870,
    BT_ERROR_ALREADY_DONE = -29359869,
    BT_ERROR_OPERATION_FAILED = -29359868,
    BT_ERROR_NOT_IN_PROGRESS = -29359867,
    BT_ERROR_REMOTE_DEVICE_NOT_BONDED = -29359866,
    BT_ERROR_AUTH_REJECTED = -29359865,
    BT_ERROR_AUTH_FAILED = -29359864,
    BT_ERROR_REMOTE_DEVICE_NOT_FOUND = -29359863,
    BT_ERROR_SERVICE_SEARCH_FAILED = -29359862,
    BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED = -29359861
} bt_error_e;

/* ---- adapter and bonded devices ---- */

typedef enum { BT_ADAPTER_DISABLED = 0, BT_ADAPTER_ENABLED = 1 } bt_adapter_state_e;

/* *state: enabled when a powered adapter is there. Without a Bluetooth service or an adapter the
 * answer is BT_ERROR_NONE and disabled. INVALID_PARAMETER when state is NULL. */
int bt_adapter_get_state(bt_adapter_state_e* state);

/* The fields of a Class of Device (Bluetooth Assigned Numbers, 2.8): the major class, 0 to 31, and
 * the minor class with its six bits where they stand in the number, so 0x00 to 0xFC in steps of 4.
 */
typedef struct {
    int major_device_class;
    int minor_device_class;
} bt_class_s;

typedef struct {
    char* remote_address; /* never NULL */
    char* remote_name;    /* NULL when the device never told one */
    bt_class_s bt_class;  /* 0, 0 when unknown, as for LE devices */
    bool is_bonded;       /* keys are stored, the bond survives a restart */
    bool is_connected;    /* a link of any kind is up */
} bt_device_info_s;

/* The record of a bonded device of the enabled adapter, owned by the caller, to be released with
 * bt_adapter_free_device_info. REMOTE_DEVICE_NOT_BONDED: no bond with that address. NOT_ENABLED: no
 * powered adapter. INVALID_PARAMETER: NULL or malformed argument. *info is written
 * only on success. */
int bt_adapter_get_bonded_device_info(const char* remote_address, bt_device_info_s** info);

/* Releases a record and its strings; NULL is accepted. */
int bt_adapter_free_device_info(bt_device_info_s* info);

/* Calls `callback` for each bonded device of the enabled adapter, in the order of their addresses,
 * until it returns false; the record is the platform's and valid during the call. NOT_ENABLED: no
 * powered adapter. INVALID_PARAMETER: callback is NULL. */
typedef bool (*bt_adapter_bonded_device_cb)(bt_device_info_s* info, void* user_data);
int bt_adapter_foreach_bonded_device(bt_adapter_bonded_device_cb callback, void* user_data);

/* The vendor and product id that a bonded device declares, from either registry of vendors; 0 and 0
 * when it declares none. Results as for its record; the outputs are written only on success. */
int bt_device_get_remote_vid_pid(const char* remote_address, int* vendor_id, int* product_id);

typedef enum {
    BT_PROFILE_HID = 0x08 /* input devices: keyboards, mice, game pads */
} bt_profile_e;

/* Whether a bonded device is connected with that profile, or, where the platform cannot tell
 * profile by profile, connected and able to use it. NOT_SUPPORTED: another profile. Other results
 * as for its record; *connected is written only on success. */
int bt_device_is_profile_connected(const char* remote_address, bt_profile_e profile,
                                   bool* connected);

/* Whether the device may connect without being asked about. Results as for its record; the change
 * may take effect after the function returned. */
typedef enum { BT_DEVICE_AUTHORIZED = 0, BT_DEVICE_UNAUTHORIZED = 1 } bt_device_authorization_e;
int bt_device_set_authorization(const char* remote_address,
                                bt_device_authorization_e authorization);

/* ---- adapter switches ----
 * BT_ERROR_NONE: the request is on its way. A failure that comes back later is logged by the
 * platform. NOT_ENABLED: there is no adapter, or, but for bt_adapter_enable, none that is
 * powered. */

/* The adapter's name, to be released by the caller with free; untouched on failure.
 * OPERATION_FAILED: it has none. INVALID_PARAMETER: name is NULL. */
int bt_adapter_get_name(char** name);
/* ALREADY_DONE: it is in that state. Where several adapters are powered, the one in use is meant,
 * and another takes its place. */
int bt_adapter_enable(void);
int bt_adapter_disable(void);
/* Off and on again; bonds stay. */
int bt_adapter_reset(void);
/* Whether bonded devices may connect. NOT_SUPPORTED: the adapter always lets them. */
int bt_adapter_set_connectable(bool connectable);
typedef enum {
    BT_ADAPTER_VISIBILITY_MODE_NON_DISCOVERABLE = 0,
    BT_ADAPTER_VISIBILITY_MODE_GENERAL_DISCOVERABLE = 1
} bt_adapter_visibility_mode_e;
/* Visible to others for `duration` seconds, 0 for ever. INVALID_PARAMETER: another mode, or a
 * negative duration. */
int bt_adapter_set_visibility(bt_adapter_visibility_mode_e mode, int duration);

/* ---- accessories that connect while the TV is in standby; an extension of some TVs ---- */

typedef struct {
    char* remote_address; /* may be NULL */
} bt_adapter_headless_dev_info_s;
/* Calls `callback` for each registered one until it returns false. NOT_SUPPORTED: no such
 * extension. */
typedef bool (*bt_adapter_headless_device_info_cb)(bt_adapter_headless_dev_info_s* info,
                                                   void* user_data);
int bt_adapter_foreach_headless_device_info(bt_adapter_headless_device_info_cb callback,
                                            void* user_data);
int bt_adapter_unregister_headless_device(const char* remote_address);

/* ---- LE scan ---- */

/* Which packet of an advertiser: its advertisement, or its answer to a scan request. */
typedef enum {
    BT_ADAPTER_LE_PACKET_ADVERTISING = 0,
    BT_ADAPTER_LE_PACKET_SCAN_RESPONSE = 1
} bt_adapter_le_packet_type_e;

/* One received advertisement; everything in it is the platform's and valid during the callback.
 * The data are advertising-data structures (length, type, content; Bluetooth Core Specification,
 * Vol 3, Part C, 11): 0 to 31 bytes of a legacy advertisement, up to 255 of an extended one, as
 * received, so lengths in them may lie. */
typedef struct {
    char* remote_address; /* the advertiser's, often a random one */
    int rssi;             /* dBm; 127 when unknown */
    int adv_data_len;     /* bytes */
    char* adv_data;       /* NULL when adv_data_len is 0 */
    int scan_data_len;    /* bytes */
    char* scan_data;      /* NULL when scan_data_len is 0 */
} bt_adapter_le_device_scan_result_info_s;

/* Called for each advertisement heard while the scan runs; an advertisement with several
 * manufacturer entries is handed over as one result for each. What repeats within a scan, what is
 * too short to name a phone, and in a flood whatever names no bonded device, may be left out. A
 * bonded device that the platform recognises although it does not name itself may be handed over as
 * if it did: manufacturer data of 15 bytes with its address at bytes 7 to 12. With
 * a `result` other than BT_ERROR_NONE `info` is NULL and the scan is over: its start failed after
 * the function returned, or the adapter or the Bluetooth service went away. Data remembered from
 * before the scan never come. */
typedef void (*bt_adapter_le_scan_result_cb)(int result,
                                             bt_adapter_le_device_scan_result_info_s* info,
                                             void* user_data);

/* Starts a scan without an end of its own. NOW_IN_PROGRESS: a scan of this process runs already and
 * goes on, with the callback it was started with. NOT_ENABLED: no powered adapter.
 * INVALID_PARAMETER: callback is NULL. */
int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* user_data);

/* Stops the scan; no result is delivered after it returned. NOT_IN_PROGRESS: none runs. */
int bt_adapter_le_stop_scan(void);

/* The first manufacturer-specific structure (type 0xFF) of the packet: its company identifier and
 * the *data_len bytes after it, 0 or more, in a buffer that the caller releases with free.
 * OPERATION_FAILED: the packet has none that lies whole within its data. INVALID_PARAMETER: a NULL
 * argument or an unknown packet type. OUT_OF_MEMORY. The outputs are written only on success. */
int bt_adapter_le_get_scan_result_manufacturer_data(
    const bt_adapter_le_device_scan_result_info_s* info, bt_adapter_le_packet_type_e packet_type,
    int* manufacturer_id, char** data, int* data_len);

/* ---- audio ---- */

typedef enum {
    BT_AUDIO_PROFILE_TYPE_A2DP_SINK = 4 /* this device renders, the remote one is the source */
} bt_audio_profile_type_e;

/* What happened to an A2DP connection with `remote_address`:
 *   (BT_ERROR_NONE, true)   it is up: bt_audio_connect succeeded, or the phone connected by itself
 *   (an error, true)        bt_audio_connect failed: TIMED_OUT, RESOURCE_BUSY, NOT_ENABLED,
 *                           REMOTE_DEVICE_NOT_BONDED, AUTH_FAILED, OPERATION_FAILED and others
 *   (BT_ERROR_NONE, false)  it went down
 *   (an error, false)       bt_audio_connect ended because another device was asked for meanwhile
 * Each event is delivered once. The address is upper case and valid during the callback. */
typedef void (*bt_audio_connection_state_changed_cb)(int result, bool connected,
                                                     const char* remote_address, void* user_data);

/* Registers the one listener for A2DP connections; a second registration replaces it. `user_data`
 * must stay valid until it is unset. INVALID_PARAMETER when callback is NULL. */
int bt_audio_set_connection_state_changed_cb(bt_audio_connection_state_changed_cb callback,
                                             void* user_data);
int bt_audio_unset_connection_state_changed_cb(void);

/* Connects a bonded device. BT_ERROR_NONE: exactly one connection-state event with this address
 * follows, other than (BT_ERROR_NONE, false), also when there is no adapter or no such device; at
 * the latest some 12 s later, for the attempt has 10 s and its cancellation 2 s.
 * There is one attempt at a time: a device that is being connected is given up when another one is
 * asked for. While a scan is being stopped the request waits for that to end, because a radio that
 * still scans pages badly. NOW_IN_PROGRESS: that device is being connected already and its event is
 * still to come. INVALID_PARAMETER: NULL or malformed address, or another profile. A connection
 * that the phone makes by itself while the attempt is given up is an event of its own, after that
 * one. */
int bt_audio_connect(const char* remote_address, bt_audio_profile_type_e type);

typedef enum {
    BT_AVRCP_PLAYER_STATE_STOPPED = 0,
    BT_AVRCP_PLAYER_STATE_PLAYING = 1, /* playing, or seeking while it plays */
    BT_AVRCP_PLAYER_STATE_PAUSED = 2
} bt_avrcp_player_state_e;

/* What the player of the phone says: the one whose bt_audio_connect succeeded last or, where none
 * has, the one that connected last; another one that connects by itself meanwhile is not meant.
 * REMOTE_DEVICE_NOT_CONNECTED: it has left, even if others are connected. OPERATION_FAILED: it has
 * no player, or the player has not told its state yet. INVALID_PARAMETER: state is NULL. *state is
 * written only on success. */
int bt_avrcp_control_get_play_status(bt_avrcp_player_state_e* state);

/* Sends a command to the phone's remote-control target. NOT_SUPPORTED: not by this platform. */
int bt_avrcp_target_send_cmd(int command);

/* The connected audio devices of a kind: how many, and the one that connected last. */
typedef struct {
    int connected_count;
    char* remote_address; /* NULL when there is none */
    char* remote_name;    /* NULL when there is none or it never told one */
} bt_audio_connected_info_s;
/* The record is the caller's, to be released with bt_audio_free_connected_info; *info is written
 * only on success. `type` is a bt_audio_profile_type_e. NOT_SUPPORTED: another type.
 * INVALID_PARAMETER: info is NULL. */
int bt_audio_get_connected_info(int type, bt_audio_connected_info_s** info);
int bt_audio_free_connected_info(bt_audio_connected_info_s* info);

#ifdef __cplusplus
}
#endif

#endif
