// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/SystemConfigUtil.h"

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/system_info.h"
#include "utility/VconfUtil.h"

// The texts of the log lines are as other components search for them, also where one names another
// feature than the one that was read.

namespace Util {

namespace {

#define FEATURE_PREFIX "com.velmora/featureconf/"

constexpr int kLfdProductType = 4;
constexpr int kIrKeyCodeMask = 0xFF;

// When a query logs the value it answers with.
enum LogWhen { kAlways, kOnSuccess };

bool ReadFeature(const char* key, bool* value) {
    return system_info_get_custom_bool(key, value) == 0;
}

bool ReadFeature(const char* key, int* value) {
    return system_info_get_custom_int(key, value) == 0;
}

}  // namespace

// A query of one boolean feature: `start` is the answer when it cannot be read.
#define BOOL_QUERY(function, key, start, errorText, infoFormat, infoWhen) \
    bool SystemConfigUtil::function() {                                   \
        bool value = start;                                               \
        const bool isRead = ReadFeature(FEATURE_PREFIX key, &value);      \
        if (!isRead) {                                                    \
            BTLOG_ERROR(errorText);                                       \
        }                                                                 \
        if (isRead || (infoWhen) == kAlways) {                            \
            BTLOG_INFO(infoFormat, value);                                \
        }                                                                 \
        return value;                                                     \
    }

BOOL_QUERY(isA2dpSinkSupport, "sound_mirroring_supported", false,
           "fail to get com.velmora/featureconf/sound_mirroring_supported", "support : [%d]",
           kAlways)
BOOL_QUERY(isA2dpSourceSupport, "bluetooth.audio_support", false,
           "fail to get com.velmora/featureconf/bluetooth.audio_support", "support : [%d]", kAlways)
BOOL_QUERY(isHfpSupport, "bluetooth.hfp_support", false,
           "fail to get com.velmora/featureconf/bluetooth.hfp_support", "support : [%d]", kAlways)
BOOL_QUERY(isSupportGripSensor, "setting.menuitem.remote_grib_support", false,
           "fail to get com.velmora/featureconf/setting.menuitem.remote_grib_support",
           "support : [%d]", kAlways)
BOOL_QUERY(IsAuracastSupport, "bluetooth.le_audio_support", false,
           "fail to get com.velmora/featureconf/bluetooth.le_audio_support", "support : [%d]",
           kAlways)
BOOL_QUERY(IsSupportVelmoraAudioCompatibilityFMS, "bluetooth.velmora_audio_compatibility_support",
           false,
           "Fail to get com.velmora/featureconf/bluetooth.velmora_audio_compatibility_support",
           "isSupportVelmoraAudioCompatibility FMS = %d", kOnSuccess)
BOOL_QUERY(IsCorvi, "product.is_game_screen_monitor", false,
           "Fail to get com.velmora/featureconf/product.is_game_screen_monitor", "isCorvi = %d",
           kOnSuccess)
BOOL_QUERY(IsSupportRotator, "product.rotation_accessory_support", false,
           "Fail to get com.velmora/featureconf/product.rotation_accessory_support",
           "isSupportRotator = %d", kOnSuccess)
BOOL_QUERY(IsInternalSpeakerSupported, "internal_speaker_supported", true,
           "Fail to get com.velmora/featureconf/internal_speaker_supported", "nfcSupport = %d",
           kOnSuccess)
BOOL_QUERY(IsNfcSupport, "nfcdaemon.is_nfc_support", false,
           "Fail to get com.velmora/featureconf/nfcdaemon.is_nfc_support", "nfcSupport = %d",
           kOnSuccess)
BOOL_QUERY(IsMledSupport, "4hdmi_multiview.support", false,
           "fail to get com.velmora/featureconf/4hdmi_multiview.support",
           "dualsound support : [%d]", kAlways)
BOOL_QUERY(IsSmartMonitor, "product.smart_monitor_feature_support", false,
           "fail to get com.velmora/featureconf/product.smart_monitor_feature_support",
           "isSmartMonitor : [%d]", kAlways)
BOOL_QUERY(IsProjector, "projector_feature_support", false,
           "fail to get com.velmora/featureconf/projector_feature_support", "isProjector : [%d]",
           kAlways)
BOOL_QUERY(IsOutdoorTv, "outdoor_tv_product_image_support", false,
           "fail to get com.velmora/featureconf/multiview.dualsound", "dualsound support : [%d]",
           kAlways)
BOOL_QUERY(IsChinaAiServiceSupport, "cn_ai_service_supported", false,
           "Fail to get com.velmora/featureconf/cn_ai_service_supported",
           "ChinaAiServiceSupport = %d", kOnSuccess)
BOOL_QUERY(IsAmbientSupport, "ambient_screen_support", false,
           "fail to com.velmora/featureconf/ambient_screen_support", "ambient support : [%d]",
           kOnSuccess)
BOOL_QUERY(IsMultiviewDualSoundSupport, "multiview.dualsound", false,
           "fail to get com.velmora/featureconf/multiview.dualsound", "dualsound support : [%d]",
           kOnSuccess)
BOOL_QUERY(IsMultiviewSupport, "multiview.support", false,
           "fail to get com.velmora/featureconf/multiview.support", "MultiView support : [%d]",
           kOnSuccess)
BOOL_QUERY(IsSoundMirroringSupport, "sound_mirroring_supported", false,
           "Failed to get com.velmora/featureconf/sound_mirroring_supported",
           "soundmirroring support : %d", kAlways)
BOOL_QUERY(IsPavraTV, "pavra_tv", false, "Failed to get com.velmora/featureconf/pavra_tv",
           "Is PavraTV :%d", kAlways)
BOOL_QUERY(IsZemiTV, "display_rotator_supported", false,
           "Failed to get com.velmora/featureconf/display_rotator_supported", "Is isZEMI :%d",
           kAlways)
BOOL_QUERY(IsMarloSupport, "iwb_support", false,
           "Failed to get com.velmora/featureconf/iwb_support", "marloSupport :%d", kAlways)

// A query of one integer feature: `failure` is the answer when it cannot be read, `success`, made
// of `value`, when it can.
#define INT_QUERY(type, function, key, start, failure, success, errorText, infoFormat) \
    type SystemConfigUtil::function() {                                                \
        int value = start;                                                             \
        if (!ReadFeature(FEATURE_PREFIX key, &value)) {                                \
            BTLOG_ERROR(errorText);                                                    \
            return failure;                                                            \
        }                                                                              \
        BTLOG_INFO(infoFormat, value);                                                 \
        return success;                                                                \
    }

INT_QUERY(int, GetNumOfSimultaneousHdmiRx, "soc.num_of_simultaneous_supported_hdmi_rx", 1, 1, value,
          "Fail to get com.velmora/featureconf/soc.num_of_simultaneous_supported_hdmi_rx",
          "numOfHdmiRx = %d")
INT_QUERY(int, GetEasyPairingThreshold, "bluetooth.vimba_easy_pairing_threshold", 0, -88, value,
          "Fail to get com.velmora/featureconf/bluetooth.vimba_easy_pairing_threshold",
          "threshold = %d")
INT_QUERY(int, GetNumOfView, "multiview.num_of_views", 0, 0, value,
          "Fail to get com.velmora/featureconf/multiview.num_of_views", "numOfView = %d")
INT_QUERY(int, GetDeviceType, "devicename.device_type_index", 0, 1, value,
          "Fail to get com.velmora/featureconf/devicename.device_type_index", "DeviceType : [%d]")
INT_QUERY(int, GetIconType, "devicename.icon_index", 0, 6, value,
          "Fail to get com.velmora/featureconf/devicename.icon_index", "IconType : [%d]")
INT_QUERY(bool, IsBLESupport, "ble_support", 0, false, value != 0,
          "Fail to get com.velmora/featureconf/ble_support", "BLE support : [%d]")

// A query of one boolean feature that is read once in the life of the process; a failed read is
// tried again by the next call.
#define CACHED_QUERY(function, key, infoFormat)                                         \
    bool SystemConfigUtil::function() {                                                 \
        static bool value = false;                                                      \
        static bool isRead = false;                                                     \
        if (!isRead) {                                                                  \
            if (!ReadFeature(FEATURE_PREFIX key, &value)) {                             \
                BTLOG_ERROR("fail to get com.velmora/featureconf/multiview.dualsound"); \
                return value;                                                           \
            }                                                                           \
            isRead = true;                                                              \
        }                                                                               \
        BTLOG_INFO(infoFormat, value);                                                  \
        return value;                                                                   \
    }

CACHED_QUERY(IsLumeoTV, "lumeo_tv", "Is LumeoTV :%d")
CACHED_QUERY(IsArtModeOnly, "artapp.artmode_only_support", "Is ArtModeOnly :%d")

bool SystemConfigUtil::isA2dpSupport() {
    return isA2dpSourceSupport() || isA2dpSinkSupport();
}

bool SystemConfigUtil::IsBluetoothDiscoverable() {
    bool isDiscoverable = true;
    if (!ReadFeature(FEATURE_PREFIX "bluetooth.discoverable", &isDiscoverable)) {
        BTLOG_ERROR("fail to get com.velmora/featureconf/bluetooth.discoverable");
    }
    BTLOG_INFO("general discoverable : [%d]", isDiscoverable);
    if (!isDiscoverable) {
        return false;
    }
    if (!ReadFeature(FEATURE_PREFIX "bluetooth.always_classic_discoverable", &isDiscoverable)) {
        BTLOG_ERROR("fail to get com.velmora/featureconf/bluetooth.always_classic_discoverable");
    }
    BTLOG_INFO("classic discoverable : [%d]", isDiscoverable);
    return isDiscoverable;
}

bool SystemConfigUtil::IsTessa() {
    int version = 0;
    if (!ReadFeature(FEATURE_PREFIX "the_tessa_version", &version)) {
        BTLOG_ERROR("fail to get com.velmora/featureconf/the_tessa_version");
    }
    BTLOG_INFO("Is LumeoTV :%d", version);
    return version != 0;
}

bool SystemConfigUtil::IsLfdProduct() {
    int type = 0;
    if (!ReadFeature(FEATURE_PREFIX "product.product_type", &type)) {
        BTLOG_ERROR("com.velmora/featureconf/product.product_type");
    }
    BTLOG_INFO("product type : %d", type);
    return type == kLfdProductType && !IsMarloSupport();
}

bool SystemConfigUtil::GetIrKeyCode(unsigned char& code) {
    int value = 0;
    if (system_info_get_value_int(SYSTEM_INFO_KEY_IR_KEY_CODE, &value) != 0) {
        return false;
    }
    code = static_cast<unsigned char>(value & kIrKeyCodeMask);
    return true;
}

bool SystemConfigUtil::IsHmsModeEnable() {
    return false;
}

bool SystemConfigUtil::IsB2BOptionEnable() {
    return false;
}

bool SystemConfigUtil::isLastBtAudioAutoConnectionEnable() {
    bool isEnabled = false;
    VconfUtil::GetVconf(VCONF_KEY_DB_NIRVO_LAST_AUDIO_AUTO_CONNECTION, isEnabled);
    BTLOG_INFO("isSupportLastBtAudioAutoConnection vconf = %d", isEnabled);
    return isEnabled;
}

bool SystemConfigUtil::IsSupportVelmoraAudioCompatibilityVconf() {
    bool isSupported = false;
    VconfUtil::GetVconf(VCONF_KEY_DB_NIRVO_VELMORA_AUDIO_COMPATIBILITY, isSupported);
    BTLOG_INFO("isSupportVelmoraAudioCompatibility vconf = %d", isSupported);
    return isSupported;
}

bool SystemConfigUtil::IsSupportVelmoraAudioCompatibility() {
    return IsSupportVelmoraAudioCompatibilityFMS() && IsSupportVelmoraAudioCompatibilityVconf();
}

}  // namespace Util
