// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/SystemConfigUtil.h"

#include "autoconnect/src/AutoConnectDbg.h"
#include "platform/system_info.h"
#include "utility/VconfUtil.h"

// Other components search for the texts of the log lines, so they stay as they are, even where a
// text names another feature than the one that was read.

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

// The same; a failure is logged as `errorText`, for the query at `place`.
template <typename Value>
bool ReadFeature(const LogPlace& place, const char* key, Value* value, const char* errorText) {
    const bool isRead = ReadFeature(key, value);
    if (!isRead) {
        BTLOG_FOR(place, DLOG_ERROR, "%s", errorText);
    }
    return isRead;
}

}  // namespace

// A query of one boolean feature: when it cannot be read, `start` is the answer and `errorText` is
// logged.
#define IRREGULAR_QUERY(function, key, start, errorText, infoFormat, infoWhen)              \
    bool SystemConfigUtil::function() {                                                     \
        bool value = start;                                                                 \
        const bool isRead = ReadFeature(BTLOG_HERE, FEATURE_PREFIX key, &value, errorText); \
        if (isRead || (infoWhen) == kAlways) {                                              \
            BTLOG_INFO(infoFormat, value);                                                  \
        }                                                                                   \
        return value;                                                                       \
    }

// The usual case: false when it cannot be read, and the error text is "FAILURE to get KEY".
#define BOOL_QUERY(function, key, failure, infoFormat, infoWhen)                             \
    IRREGULAR_QUERY(function, key, false, failure " to get " FEATURE_PREFIX key, infoFormat, \
                    infoWhen)

BOOL_QUERY(isA2dpSinkSupport, "sound_mirroring_supported", "fail", "support : [%d]", kAlways)
BOOL_QUERY(isA2dpSourceSupport, "bluetooth.audio_support", "fail", "support : [%d]", kAlways)
BOOL_QUERY(isHfpSupport, "bluetooth.hfp_support", "fail", "support : [%d]", kAlways)
BOOL_QUERY(isSupportGripSensor, "setting.menuitem.remote_grib_support", "fail", "support : [%d]",
           kAlways)
BOOL_QUERY(IsAuracastSupport, "bluetooth.le_audio_support", "fail", "support : [%d]", kAlways)
BOOL_QUERY(IsSupportVelmoraAudioCompatibilityFMS, "bluetooth.velmora_audio_compatibility_support",
           "Fail", "isSupportVelmoraAudioCompatibility FMS = %d", kOnSuccess)
BOOL_QUERY(IsCorvi, "product.is_game_screen_monitor", "Fail", "isCorvi = %d", kOnSuccess)
BOOL_QUERY(IsSupportRotator, "product.rotation_accessory_support", "Fail", "isSupportRotator = %d",
           kOnSuccess)
IRREGULAR_QUERY(IsInternalSpeakerSupported, "internal_speaker_supported", true,
                "Fail to get " FEATURE_PREFIX "internal_speaker_supported", "nfcSupport = %d",
                kOnSuccess)
BOOL_QUERY(IsNfcSupport, "nfcdaemon.is_nfc_support", "Fail", "nfcSupport = %d", kOnSuccess)
BOOL_QUERY(IsMledSupport, "4hdmi_multiview.support", "fail", "dualsound support : [%d]", kAlways)
BOOL_QUERY(IsSmartMonitor, "product.smart_monitor_feature_support", "fail", "isSmartMonitor : [%d]",
           kAlways)
BOOL_QUERY(IsProjector, "projector_feature_support", "fail", "isProjector : [%d]", kAlways)
IRREGULAR_QUERY(IsOutdoorTv, "outdoor_tv_product_image_support", false,
                "fail to get " FEATURE_PREFIX "multiview.dualsound", "dualsound support : [%d]",
                kAlways)
BOOL_QUERY(IsChinaAiServiceSupport, "cn_ai_service_supported", "Fail", "ChinaAiServiceSupport = %d",
           kOnSuccess)
IRREGULAR_QUERY(IsAmbientSupport, "ambient_screen_support", false,
                "fail to " FEATURE_PREFIX "ambient_screen_support", "ambient support : [%d]",
                kOnSuccess)
BOOL_QUERY(IsMultiviewDualSoundSupport, "multiview.dualsound", "fail", "dualsound support : [%d]",
           kOnSuccess)
BOOL_QUERY(IsMultiviewSupport, "multiview.support", "fail", "MultiView support : [%d]", kOnSuccess)
BOOL_QUERY(IsSoundMirroringSupport, "sound_mirroring_supported", "Failed",
           "soundmirroring support : %d", kAlways)
BOOL_QUERY(IsPavraTV, "pavra_tv", "Failed", "Is PavraTV :%d", kAlways)
BOOL_QUERY(IsZemiTV, "display_rotator_supported", "Failed", "Is isZEMI :%d", kAlways)
BOOL_QUERY(IsMarloSupport, "iwb_support", "Failed", "marloSupport :%d", kAlways)

// A query of one integer feature: `failure` is the answer when it cannot be read, `success`, made
// of `value`, when it can.
#define INT_QUERY(type, function, key, start, failure, success, infoFormat) \
    type SystemConfigUtil::function() {                                     \
        int value = start;                                                  \
        if (!ReadFeature(BTLOG_HERE, FEATURE_PREFIX key, &value,            \
                         "Fail to get " FEATURE_PREFIX key)) {              \
            return failure;                                                 \
        }                                                                   \
        BTLOG_INFO(infoFormat, value);                                      \
        return success;                                                     \
    }

INT_QUERY(int, GetNumOfSimultaneousHdmiRx, "soc.num_of_simultaneous_supported_hdmi_rx", 1, 1, value,
          "numOfHdmiRx = %d")
INT_QUERY(int, GetEasyPairingThreshold, "bluetooth.vimba_easy_pairing_threshold", 0, -88, value,
          "threshold = %d")
INT_QUERY(int, GetNumOfView, "multiview.num_of_views", 0, 0, value, "numOfView = %d")
INT_QUERY(int, GetDeviceType, "devicename.device_type_index", 0, 1, value, "DeviceType : [%d]")
INT_QUERY(int, GetIconType, "devicename.icon_index", 0, 6, value, "IconType : [%d]")
INT_QUERY(bool, IsBLESupport, "ble_support", 0, false, value != 0, "BLE support : [%d]")

// A query of one boolean feature that is read once in the life of the process; a failed read is
// tried again by the next call.
#define CACHED_QUERY(function, key, infoFormat)                                              \
    bool SystemConfigUtil::function() {                                                      \
        static bool value = false;                                                           \
        static bool isRead = false;                                                          \
        isRead = isRead || ReadFeature(BTLOG_HERE, FEATURE_PREFIX key, &value,               \
                                       "fail to get " FEATURE_PREFIX "multiview.dualsound"); \
        if (isRead) {                                                                        \
            BTLOG_INFO(infoFormat, value);                                                   \
        }                                                                                    \
        return value;                                                                        \
    }

CACHED_QUERY(IsLumeoTV, "lumeo_tv", "Is LumeoTV :%d")
CACHED_QUERY(IsArtModeOnly, "artapp.artmode_only_support", "Is ArtModeOnly :%d")

bool SystemConfigUtil::IsBluetoothDiscoverable() {
    bool isDiscoverable = true;
    ReadFeature(BTLOG_HERE, FEATURE_PREFIX "bluetooth.discoverable", &isDiscoverable,
                "fail to get " FEATURE_PREFIX "bluetooth.discoverable");
    BTLOG_INFO("general discoverable : [%d]", isDiscoverable);
    if (!isDiscoverable) {
        return false;
    }
    ReadFeature(BTLOG_HERE, FEATURE_PREFIX "bluetooth.always_classic_discoverable", &isDiscoverable,
                "fail to get " FEATURE_PREFIX "bluetooth.always_classic_discoverable");
    BTLOG_INFO("classic discoverable : [%d]", isDiscoverable);
    return isDiscoverable;
}

bool SystemConfigUtil::IsTessa() {
    int version = 0;
    ReadFeature(BTLOG_HERE, FEATURE_PREFIX "the_tessa_version", &version,
                "fail to get " FEATURE_PREFIX "the_tessa_version");
    BTLOG_INFO("Is LumeoTV :%d", version);
    return version != 0;
}

bool SystemConfigUtil::IsLfdProduct() {
    int type = 0;
    ReadFeature(BTLOG_HERE, FEATURE_PREFIX "product.product_type", &type,
                FEATURE_PREFIX "product.product_type");
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

}  // namespace Util
