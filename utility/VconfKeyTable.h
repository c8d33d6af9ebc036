// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0

// Every configuration key of the application package: VCONF_KEY(id, enumerator, key), in the order
// of the ids, which are stable. Two rows are odd on purpose: 79 is a placeholder and no key, and
// 103 is the key of 48 once more. To be included, as often as needed, where VCONF_KEY is defined.

VCONF_KEY(0, DB_NIRVO_LASTSOUNDROUTE, "db/nirvo/lastSoundRoute")
VCONF_KEY(1, DB_NIRVO_ALLOWEDSSDEVICELIST, "db/nirvo/allowedSSDeviceList")
VCONF_KEY(2, DB_NIRVO_LAST_BTSPK_NAME, "db/nirvo/last_btspk_name")
VCONF_KEY(3, DB_NIRVO_LAST_BTSPK_ADDR, "db/nirvo/last_btspk_addr")
VCONF_KEY(4, DB_NIRVO_SOUNDSHAREDEVICE_SS_USE, "db/nirvo/soundsharedevice/ss_use")
VCONF_KEY(5, DB_NIRVO_SOUNDSHAREDEVICE_DEV_ONE_ADDR, "db/nirvo/soundsharedevice/dev_one_addr")
VCONF_KEY(6, DB_NIRVO_MUSICTV_PAIRED1, "db/nirvo/musictv_paired1")
VCONF_KEY(7, DB_NIRVO_MDE_SUPPORTED_DEV_LIST, "db/nirvo/mde_supported_dev_list")
VCONF_KEY(8, DB_NIRVO_LPM_MBR, "db/nirvo/lpm_mbr")
VCONF_KEY(9, DB_NIRVO_OOB_STATUS, "db/nirvo/oob_status")
VCONF_KEY(10, DB_NIRVO_CUR_SPK_VOL_LEVEL, "db/nirvo/cur_spk_vol_level")
VCONF_KEY(11, DB_NIRVO_BT_PCM_GAIN, "db/nirvo/bt_pcm_gain")
VCONF_KEY(12, DB_NIRVO_MUSICTV_PAIRED3, "db/nirvo/musictv_paired3")
VCONF_KEY(13, DB_NIRVO_AUTO_CONNECT_MOBILE_LIST, "db/nirvo/auto_connect_mobile_list")
VCONF_KEY(14, DB_NIRVO_MICOMRESET, "db/nirvo/micomReset")
VCONF_KEY(15, DB_NIRVO_AUDIO_MULTI_OUTPUT_ON_OFF, "db/nirvo/audio_multi_output_on_off")
VCONF_KEY(16, MEMORY_BT_KEYBOARD_UGRUNNING, "memory/bt_keyboard/UGRunning")
VCONF_KEY(17, DB_BLUETOOTH_SMARTRC_CONN_DEV_ADDR, "db/bluetooth_smartrc/conn_dev_addr")
VCONF_KEY(18, DB_BT_DEVICE_STATUS_UEVENT, "db/BT/device/status_uevent")
VCONF_KEY(19, DB_MENU_SOUND_SPEAKERSETTINGS_SOUNDMIRRORING,
          "db/menu/sound/speakersettings/soundmirroring")
VCONF_KEY(20, DB_MENU_SOUND_SPEAKERSETTINGS_SOUNDSHARESETTINGS_AUDIO_MULTI_OUTPUT,
          "db/menu/sound/speakersettings/soundsharesettings/audio_multi_output")
VCONF_KEY(21, DB_MENU_SUPPORT_USE_MODE, "db/menu/support/use_mode")
VCONF_KEY(22, DB_MENU_WIDGET_LANGUAGE, "db/menu_widget/language")
VCONF_KEY(23, DB_MENU_NETWORK_DEVICEMANAGER_ACCESSNOTI, "db/menu/network/devicemanager/accessnoti")
VCONF_KEY(24, DB_BOOT_NEED_SETUP_WIZARD, "db/boot/need_setup_wizard")
VCONF_KEY(25, DB_MENU_VOICE_ASSISTANT_FARFIELD, "db/menu/voice/assistant_farfield")
VCONF_KEY(26, DB_LOW_POWER_SUPPORT_BT_DISABLE, "db/low-power-support/bt-disable")
VCONF_KEY(27, DB_VOICE_APP_VOICE_APP_STATUS, "db/voice-app/voice_app_status")
VCONF_KEY(28, DB_COMSS_DUID, "db/comss/duid")
VCONF_KEY(29, DB_ORG_ORLIX_BT_SETTINGS_EXTERNAL_CONTROLLER_VOLUME_LEVEL_OPTICAL,
          "db/org.orlix.bt-settings-external-controller/volume_level_optical")
VCONF_KEY(30, DB_ORG_ORLIX_BLEAPP_ADDED_MOBILE_KEYLIST, "db/org.orlix.bleapp/added_mobile_keylist")
VCONF_KEY(31, DB_SETTING_ACCESSIBILITY_TTS, "db/setting/accessibility/tts")
VCONF_KEY(32, MEMORY_ORG_ORLIX_NIRVO_MUSICTVCONNECTED, "memory/org.orlix.nirvo/musictvconnected")
VCONF_KEY(33, MEMORY_ORG_ORLIX_NIRVO_MUSICTVNAME, "memory/org.orlix.nirvo/musictvname")
VCONF_KEY(34, MEMORY_ORG_ORLIX_NIRVO_MUSICTVTRY, "memory/org.orlix.nirvo/musictvtry")
VCONF_KEY(35, MEMORY_ORG_ORLIX_NIRVO_MUSICTVSUCCESS, "memory/org.orlix.nirvo/musictvsuccess")
VCONF_KEY(36, MEMORY_ORG_ORLIX_NIRVO_INPUT_WINDOW_ID, "memory/org.orlix.nirvo/input_window_id")
VCONF_KEY(37, MEMORY_ORG_ORLIX_NIRVO_EXT_BT_SPK_NAME, "memory/org.orlix.nirvo/ext_bt_spk_name")
VCONF_KEY(38, MEMORY_ORG_ORLIX_NIRVO_LPM_MBR_BT, "memory/org.orlix.nirvo/lpm_mbr_bt")
VCONF_KEY(39, MEMORY_ORG_ORLIX_NIRVO_LPM_MBR_MULTIROOM, "memory/org.orlix.nirvo/lpm_mbr_multiroom")
VCONF_KEY(40, MEMORY_ORG_ORLIX_NIRVO_LPM_MBR_HDMI, "memory/org.orlix.nirvo/lpm_mbr_hdmi")
VCONF_KEY(41, MEMORY_ORG_ORLIX_NIRVO_LPM_MBR_SPDIF, "memory/org.orlix.nirvo/lpm_mbr_spdif")
VCONF_KEY(42, MEMORY_ORG_ORLIX_NIRVO_CUR_SPK_MUTE_STATE,
          "memory/org.orlix.nirvo/cur_spk_mute_state")
VCONF_KEY(43, MEMORY_ORG_ORLIX_NIRVO_SMARTRC_RECOVERY_STATE,
          "memory/org.orlix.nirvo/smartrc_recovery_state")
VCONF_KEY(44, MEMORY_ORG_ORLIX_NIRVO_RDM_REGISTERED_ADDRESS,
          "memory/org.orlix.nirvo/rdm_registered_address")
VCONF_KEY(45, MEMORY_ORG_ORLIX_NIRVO_NIRVO_MESSAGE, "memory/org.orlix.nirvo/nirvo_message")
VCONF_KEY(46, MEMORY_ORG_ORLIX_NIRVO_MDEINFO, "memory/org.orlix.nirvo/mdeinfo")
VCONF_KEY(47, MEMORY_BLUETOOTH_DUTMODE, "memory/bluetooth/dutmode")
VCONF_KEY(48, MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL, "memory/bluetooth_nirvoui/musictvfail")
VCONF_KEY(49, MEMORY_BLUETOOTH_BT_SMART_RC_CONNECTED, "memory/bluetooth/bt_smart_rc_connected")
VCONF_KEY(50, MEMORY_MENU_NETWORK_SCREENMIRRORING_P2P_TYPE,
          "memory/menu/network/screenmirroring/p2p_type")
VCONF_KEY(51, MEMORY_MENU_NETWORK_SCREENMIRRORING_GET_VOLUME_LEVEL_HDMI,
          "memory/menu/network/screenmirroring/get_volume_level_hdmi")
VCONF_KEY(52, MEMORY_MENU_NETWORK_SCREENMIRRORING_SET_VOLUME_LEVEL,
          "memory/menu/network/screenmirroring/set_volume_level")
VCONF_KEY(53, MEMORY_MENU_NETWORK_SCREENMIRRORING_VOLUME_SUPPORT_HDMI,
          "memory/menu/network/screenmirroring/volume_support_hdmi")
VCONF_KEY(54, MEMORY_MENU_NETWORK_SCREENMIRRORING_GET_VOLUME_LEVEL_MLR,
          "memory/menu/network/screenmirroring/get_volume_level_mlr")
VCONF_KEY(55, MEMORY_MENU_NETWORK_SCREENMIRRORING_VOLUME_SUPPORT_MLR,
          "memory/menu/network/screenmirroring/volume_support_mlr")
VCONF_KEY(56, MEMORY_MENU_NETWORK_SCREENMIRRORING_GET_VOLUME_LEVEL_BT,
          "memory/menu/network/screenmirroring/get_volume_level_bt")
VCONF_KEY(57, MEMORY_MENU_NETWORK_SCREENMIRRORING_SET_VOLUME_MUTE,
          "memory/menu/network/screenmirroring/set_volume_mute")
VCONF_KEY(58, MEMORY_MENU_NETWORK_SCREENMIRRORING_GET_VOLUME_MUTE_BT,
          "memory/menu/network/screenmirroring/get_volume_mute_bt")
VCONF_KEY(59, MEMORY_MENU_NETWORK_SCREENMIRRORING_VOLUME_SUPPORT_BT,
          "memory/menu/network/screenmirroring/volume_support_bt")
VCONF_KEY(60, MEMORY_IOT_THING_ACCESSORY_OPERATION, "memory/iot/thing/accessory/operation")
VCONF_KEY(61, MEMORY_IOT_THING_ACCESSORY_REASONCODE, "memory/iot/thing/accessory/reasoncode")
VCONF_KEY(62, MEMORY_IOT_THING_ACCESSORY_CONNECTEDDEVICES,
          "memory/iot/thing/accessory/connecteddevices")
VCONF_KEY(63, MEMORY_TV_VIEWER_EXT_VOLUME_TTS_PLAY, "memory/tv-viewer/ext_volume_tts_play")
VCONF_KEY(64, MEMORY_TV_VIEWER_EXT_VOLUME_TTS_PLAY_DONE,
          "memory/tv-viewer/ext_volume_tts_play_done")
VCONF_KEY(65, MEMORY_TV_VIEWER_EXT_VOLUME, "memory/tv-viewer/ext_volume")
VCONF_KEY(66, MEMORY_TV_VIEWER_SHOW_EXT_VOLUME, "memory/tv-viewer/show_ext_volume")
VCONF_KEY(67, MEMORY_BOOT_POWER_SUSPEND, "memory/boot/power_suspend")
VCONF_KEY(68, MEMORY_WIZARD_WIZARD_MODE, "memory/wizard/wizard_mode")
VCONF_KEY(69, MEMORY_PORTLAND_STATE, "memory/portland/state")
VCONF_KEY(70, MEMORY_MBR_MBR_MODE, "memory/mbr/mbr-mode")
VCONF_KEY(71, MEMORY_VOLUME_SETTING_BT_DEVICE, "memory/volume-setting/bt-device")
VCONF_KEY(72, MEMORY_CONNECTION_GUIDE_SELECTED_ITEM, "memory/connection_guide/selected_item")
VCONF_KEY(73, MEMORY_ORG_ORLIX_BLEAPP_AMBIENT_OPERATION,
          "memory/org.orlix.bleapp/ambient_operation")
VCONF_KEY(74, MEMORY_ORG_ORLIX_EMANUAL_APP_ACTIVE_CATEGORY,
          "memory/org.orlix.emanual-app/active_category")
VCONF_KEY(75, MEMORY_ORG_ORLIX_BT_SETTINGS_EXTERNAL_CONTROLLER_EXT_BT_SPK_ADDR,
          "memory/org.orlix.bt-settings-external-controller/ext_bt_spk_addr")
VCONF_KEY(76, MEMORY_SP_KPI_BATLEV, "memory/sp-kpi/batlev")
VCONF_KEY(77, DB_NIRVO_LAST_SOUNDMIRRORING_DEV, "db/nirvo/last_soundmirroring_dev")
VCONF_KEY(78, MEMORY_MULTISCREEN_INFO, "memory/multiscreen/info")
VCONF_KEY(79, NOT_AVAILABLE_ANY_MORE, "Not available any more")
VCONF_KEY(80, MEMORY_ORG_ORLIX_NIRVO_SOUNDOUTPUT_INFO, "memory/org.orlix.nirvo/soundoutput_info")
VCONF_KEY(81, MEMORY_PRIVATE_SOUND_OUTPUT_MULTIVIEW_MAIN,
          "memory/private/sound/output/multiview_main")
VCONF_KEY(82, DB_MULTI_ASSISTANT_DEFAULT_ASSISTANT_APPID,
          "db/multi-assistant/default_assistant_appid")
VCONF_KEY(83, DB_MULTI_ASSISTANT_MVA_LANGUAGE, "db/multi-assistant/mva_language")
VCONF_KEY(84, DB_DEVICEASSISTANT_POPUPCLOSED, "db/deviceassistant/popupclosed")
VCONF_KEY(85, MEMORY_ORG_ORLIX_NIRVO_HSM_REMOCON_TYPE4, "memory/org.orlix.nirvo/hsm_remocon_type4")
VCONF_KEY(86, MEMORY_ORG_ORLIX_NIRVO_HSM_REMOCON_TYPE5, "memory/org.orlix.nirvo/hsm_remocon_type5")
VCONF_KEY(87, MEMORY_ORG_ORLIX_NIRVO_HSM_REMOCON_DISCONNECTED_ADDRESS,
          "memory/org.orlix.nirvo/hsm_remocon_disconnected_address")
VCONF_KEY(88, MEMORY_ORG_ORLIX_NIRVO_HSM_REMOCON_DISCONNECT_REASON,
          "memory/org.orlix.nirvo/hsm_remocon_disconnect_reason")
VCONF_KEY(89, MEMORY_MULTISCREEN_VOLUMEINFO_SOUNDSHARE, "memory/multiscreen/volumeinfo_soundshare")
VCONF_KEY(90, MEMORY_MULTISCREEN_VOLUMEINFO_BTHEADSET, "memory/multiscreen/volumeinfo_btheadset")
VCONF_KEY(91, DB_NIRVO_MUSICTV_PAIRED4, "db/nirvo/musictv_paired4")
VCONF_KEY(92, MEMORY_WIFI_FREQUENCY, "memory/wifi/frequency")
VCONF_KEY(93, DB_NIRVO_RESET, "db/nirvo/reset")
VCONF_KEY(94, MEMORY_MLEDMULTIVIEW_STATUS, "memory/mledmultiview/status")
VCONF_KEY(95, DB_MENU_NETWORK_DEVICENAME_TV_NAME, "db/menu/network/devicename/tv_name")
VCONF_KEY(96, DB_MENU_NETWORK_DEVICENAME_PREFIX_OF_TV_NAME,
          "db/menu/network/devicename/prefix_of_tv_name")
VCONF_KEY(97, MEMORY_PRIVATE_SOUND_VOLUME_MULTIVIEW_SUB,
          "memory/private/sound/volume/multiview_sub")
VCONF_KEY(98, DB_NIRVO_RC_PAIRCOUNT, "db/nirvo/RC_PairCount")
VCONF_KEY(99, DB_NIRVO_RC_RECONNECTCOUNT, "db/nirvo/RC_ReConnectCount")
VCONF_KEY(100, DB_NIRVO_RC_RSSIVALUE, "db/nirvo/RC_RSSIValue")
VCONF_KEY(101, DB_NIRVO_RC_MODULERESETCOUNT, "db/nirvo/RC_ModuleResetCount")
VCONF_KEY(102, DB_NIRVO_LAST_SMARTRC_ADDRESS, "db/nirvo/last_smartrc_address")
VCONF_KEY(103, MEMORY_BLUETOOTH_NIRVOUI_MUSICTVFAIL_AGAIN, "memory/bluetooth_nirvoui/musictvfail")
VCONF_KEY(104, DB_NIRVO_SMARTRC_ADC_FLAG, "db/nirvo/smartrc_adc_flag")
VCONF_KEY(105, MEMORY_VOLT_FIRSTSCREEN_STATE, "memory/volt/firstscreen_state")
VCONF_KEY(106, MEMORY_APPFW_CURRENT_FULLSCREEN_APPID, "memory/appfw/current_fullscreen_appid")
VCONF_KEY(107, DB_MULTI_ASSISTANT_AOV_NORMAL_OFF, "db/multi-assistant/aov_normal_off")
VCONF_KEY(108, MEMORY_MULTISCREEN_SOUND_MIXING_OFF, "memory/multiscreen/sound_mixing_off")
VCONF_KEY(109, MEMORY_MULTISCREEN_REMOVE_SCREEN_INFO, "memory/multiscreen/remove_screen_info")
VCONF_KEY(110, MEMORY_MULTISCREEN_VOLUMEINFO_SOUNDSHARE_SUB,
          "memory/multiscreen/volumeinfo_soundshare_sub")
VCONF_KEY(111, MEMORY_MULTISCREEN_VOLUMEINFO_BTHEADSET_SUB,
          "memory/multiscreen/volumeinfo_btheadset_sub")
VCONF_KEY(112, MEMORY_ORG_ORLIX_NIRVO_SUB_AUDIO_ZONEID, "memory/org.orlix.nirvo/sub_audio_zoneid")
VCONF_KEY(113, DB_NIRVO_AMBIENT_MODE_FULL_POWER_OFF_EVENT,
          "db/nirvo/ambient_mode_full_power_off_event")
VCONF_KEY(114, MEMORY_ORG_ORLIX_NIRVO_SERVICE_REJECT_LIST,
          "memory/org.orlix.nirvo/service_reject_list")
VCONF_KEY(115, DB_NIRVO_LAST_BTSPK_LIST, "db/nirvo/last_btspk_list")
VCONF_KEY(116, MEMORY_NIRVO_CONNECTED_BTSPK_ADDR_LIST, "memory/nirvo/connected_btspk_addr_list")
VCONF_KEY(117, DB_COM_VELMORA_TV_BT_MDEMANAGER_BTINFOSYNC_FACTORY_RESET_FLAG,
          "db/com.velmora.tv.bt-mdemanager/btinfosync/factory_reset_flag")
VCONF_KEY(118, DB_COM_VELMORA_TV_BT_MDEMANAGER_BTINFOSYNC_DEVICES,
          "db/com.velmora.tv.bt-mdemanager/btinfosync/devices")
VCONF_KEY(119, DB_NIRVO_SOUNDSHAREDEVICE_ADDRESS_LIST, "db/nirvo/soundsharedevice/address_list")
VCONF_KEY(120, DB_BLUETOOTH_SMARTRC_ROTATION_STAND_ADDRESS,
          "db/bluetooth_smartrc/rotation_stand_address")
VCONF_KEY(121, MEMORY_MENU_NETWORK_SCREENMIRRORING_TIM_INITIATED,
          "memory/menu/network/screenmirroring/tim_initiated")
VCONF_KEY(122, DB_NIRVO_CORVIWHEEL_ADC_FLAG, "db/nirvo/corviwheel_adc_flag")
VCONF_KEY(123, DB_NIRVO_LAST_CORVI_WHEEL_ADDRESS, "db/nirvo/last_corvi_wheel_address")
VCONF_KEY(124, MEMORY_ORG_ORLIX_NIRVO_HSM_WHEEL_DISCONNECTED_ADDRESS,
          "memory/org.orlix.nirvo/hsm_wheel_disconnected_address")
VCONF_KEY(125, MEMORY_ORG_ORLIX_NIRVO_HSM_WHEEL_DISCONNECTED_REASON,
          "memory/org.orlix.nirvo/hsm_wheel_disconnected_reason")
VCONF_KEY(126, MEMORY_ORG_ORLIX_NIRVO_CORVI_WHEEL_BATTERY_LEVEL,
          "memory/org.orlix.nirvo/corvi_wheel_battery_level")
VCONF_KEY(127, MEMORY_ORG_ORLIX_NIRVO_PRE_SPEAKER_SELECTION,
          "memory/org.orlix.nirvo/pre_speaker_selection")
VCONF_KEY(128, MEMORY_NIRVO_PCM_GAIN_CONTROL_FLAG, "memory/nirvo/pcm_gain_control_flag")
VCONF_KEY(129, DB_NIRVO_PAIRING_BLOCEKD_DEVICES, "db/nirvo/pairing_blocekd_devices")
VCONF_KEY(130, DB_NIRVO_VELMORA_AUDIO_COMPATIBILITY, "db/nirvo/velmora_audio_compatibility")
VCONF_KEY(131, MEMORY_EDGEBLENDING_MODE, "memory/edgeblending/mode")
VCONF_KEY(132, MEMORY_NIRVO_PRE_SPEAKER_SELECTION_FOR_SINGLEVIEW,
          "memory/nirvo/pre_speaker_selection_for_singleview")
VCONF_KEY(133, DB_MENU_MAINTENANCE_MODE, "db/menu/maintenance_mode")
VCONF_KEY(134, MEMORY_BOOT_COLD_POWEROFF_REQUEST_PKG, "memory/boot/cold_poweroff_request_pkg")
VCONF_KEY(135, DB_QZ_CONNECTIVITY_DATA_MGR_BROADCASTSTATUS,
          "db/qz-connectivity-data-mgr/BroadcastStatus")
VCONF_KEY(136, MEMORY_NIRVO_VIMBA_CONNECTED_LAUNCH_ON_EVENT,
          "memory/nirvo/vimba_connected_launch_on_event")
VCONF_KEY(137, DB_FACTORY_FACTORY_RESET_COUNT, "db/factory/factory_reset_count")
VCONF_KEY(138, DB_FACTORY_SERVICE_RESET_COUNT, "db/factory/service_reset_count")
VCONF_KEY(139, DB_NIRVO_LAST_AUDIO_AUTO_CONNECTION, "db/nirvo/last_audio_auto_connection")
VCONF_KEY(140, DB_CUSTOMSERVICE_CUSTOMHOME_PLAYLOCK, "db/customservice/customhome_playlock")
VCONF_KEY(141, MEMORY_TOUCH_INTERACTIVE_TOUCH_INTERACTIVE_RUNNING,
          "memory/touch_interactive/touch_interactive_running")
VCONF_KEY(142, MEMORY_ACM_NETWORKSPEAKER_STATUS, "memory/acm/networkspeaker_status")
VCONF_KEY(143, MEMORY_NIRVO_IS_CONNECTING_BT_AUDIO_DEVICE,
          "memory/nirvo/is_connecting_bt_audio_device")
