// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Util {

// Whether this TV model has a product feature. Each query reads one key of the platform's feature
// store under "com.velmora/featureconf/", logs what it found, and falls back to a fixed answer when
// the key cannot be read. Main loop's thread only.
class SystemConfigUtil {
public:
    // ---- boolean features; false when they cannot be read, unless the comment says otherwise ----

    // The sound-mirroring feature: a TV that mirrors sound is a sink.
    static bool isA2dpSinkSupport();
    static bool isA2dpSourceSupport();
    static bool isHfpSupport();
    static bool isSupportGripSensor();
    static bool IsAuracastSupport();
    static bool IsSupportVelmoraAudioCompatibilityFMS();
    static bool IsCorvi();
    static bool IsSupportRotator();
    // True when it cannot be read: a TV has a speaker unless it says otherwise.
    static bool IsInternalSpeakerSupported();
    static bool IsNfcSupport();
    static bool IsMledSupport();
    static bool IsSmartMonitor();
    static bool IsProjector();
    static bool IsOutdoorTv();
    static bool IsChinaAiServiceSupport();
    static bool IsAmbientSupport();
    static bool IsMultiviewDualSoundSupport();
    static bool IsMultiviewSupport();
    static bool IsSoundMirroringSupport();
    static bool IsPavraTV();
    // The rotating TVs, the only ones that connect phones by themselves.
    static bool IsZemiTV();
    static bool IsMarloSupport();
    // Once read, the answer stays for the life of the process.
    static bool IsLumeoTV();
    static bool IsArtModeOnly();

    // ---- integer features, with the answer when they cannot be read ----

    static int GetNumOfSimultaneousHdmiRx();  // 1
    static int GetEasyPairingThreshold();     // -88
    static int GetNumOfView();                // 0
    static int GetDeviceType();               // 1
    static int GetIconType();                 // 6
    static bool IsBLESupport();               // false

    // ---- queries made of several reads ----

    // Source or sink.
    static bool isA2dpSupport() { return isA2dpSourceSupport() || isA2dpSinkSupport(); }
    // Whether it is discoverable, and always so over BR/EDR; each true when it cannot be read.
    static bool IsBluetoothDiscoverable();
    static bool IsTessa();
    // A large-format display: product type 4 without the interactive-whiteboard feature.
    static bool IsLfdProduct();
    // The infrared key code in `code`. False when it cannot be read; `code` then stays as it is.
    static bool GetIrKeyCode(unsigned char& code);
    // Always false.
    static bool IsHmsModeEnable() { return false; }
    static bool IsB2BOptionEnable() { return false; }

    // ---- configuration keys instead of features ----

    static bool isLastBtAudioAutoConnectionEnable();
    static bool IsSupportVelmoraAudioCompatibilityVconf();
    // The feature and the configuration key.
    static bool IsSupportVelmoraAudioCompatibility() {
        return IsSupportVelmoraAudioCompatibilityFMS() && IsSupportVelmoraAudioCompatibilityVconf();
    }
};

}  // namespace Util
