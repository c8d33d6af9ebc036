// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "platform/bluetooth.h"

namespace Util {

// Questions about the local adapter and bonded devices, what kind a device is, whether the TV is to
// use it, and the adapter's switches. Stateless; failures are logged, nothing throws. Addresses are
// 'XX:XX:XX:XX:XX:XX', either case; where the device database is asked, in the case in which they
// were stored. Main loop's thread only.
class BluetoothUtil {
public:
    // bt_adapter_state_e: 1 enabled; 0 disabled, also when the Bluetooth service cannot tell.
    static int GetAdapterState();

    // ---- one device; an unknown address gives false, 0 or "UNKNOWN_DEV_TYPE" ----

    static bool IsPairedDevice(const std::string& address);
    static bool IsConnectedDevice(const std::string& address);
    // Whether it is a phone or a computer.
    static bool IsMobile(const std::string& address);
    // Its kind, a bt_devices_type (utility/BtDeviceTypes.h), and that as a text.
    static int GetDeviceType(const std::string& address);
    static std::string GetStringDeviceType(std::string address);
    // Its name; of a device that is not bonded, the one in the device database.
    static bool GetDeviceName(const std::string& address, std::string& name);

    // ---- names and numbers ----

    // Whether the name is one of the maker's audio devices.
    static bool IsVelmoraAudio(const std::string& name);
    // Whether a minor class (bt_class_s) of the audio/video class is one that plays sound.
    static bool IsAudioMinorCOD(int minor);

    // ---- connected devices; the maker's accessories never count ----

    // Appends their addresses; the platform's result.
    static int GetConnectedDevices(std::vector<std::string>& out);
    // For each bonded device; `userData` is the vector. Always true: go on.
    static bool OnForeachConnectedDevice(bt_device_info_s* info, void* userData) noexcept;
    static int GetNumberOfBtdevice();
    static int GetConnectedDeviceNumberWithProfile(bt_profile_e profile);
    static int GetConnectedHidDeviceNumber() {
        return GetConnectedDeviceNumberWithProfile(BT_PROFILE_HID);
    }
    // The connected audio device of a kind (bt_audio_get_connected_info). False when there is none;
    // the outputs then stay as they are.
    static bool GetConnectedA2dpDevice(std::string& address, std::string& name, int type);
    // The maker's audio device that was used last, from a configuration key.
    static void GetLastVelmoraAudioDevice(std::string& address, std::string& name);

    // ---- the device database ----

    // Whether the TV is to use the device; a device that the database does not know is used.
    static bool IsUseDevice(const std::string& address);
    // Flags one of the maker's audio devices. False for any other name, and without a database.
    static bool SetUseDontuse(const std::string& name, const std::string& address, bool use);
    // Forgets everything that the database holds of the device.
    static void DeleteDeviceFromDB(const std::string& address);

    // ---- changes ----

    // Lets the device connect without a question to the user, or no longer.
    static void SetAutoAcceptDevice(const std::string& address, bool accept);
    // Tells the connected phone to switch off; `address` is not used. The platform's result.
    static int sendPowerOffCmd(const std::string& address);
    // Of the accessories that connect in standby, unregisters the first one that can be.
    static void RemoveAllHeadlessDevice();
    // For each of them. False ends the iteration: after a success.
    static bool RemoveAllHeadlessDeviceCb(bt_adapter_headless_dev_info_s* info,
                                          void* userData) noexcept;

    // ---- the adapter; the switches give the platform's result ----

    // "" when it cannot be read.
    static std::string GetAdapterName();
    static bool IsAdapterNameStartsWithTVprefix();
    // These two also store in a configuration key whether Bluetooth is to stay off.
    static int SetAdapterEnable();
    static int SetAdapterDisable();
    static int SetAdapterReset();
    static int SetAdapterConnectable(bool on);
    // Never visible on a product that is not to be discoverable.
    static int SetAdapterVisibility(bt_adapter_visibility_mode_e mode);
};

}  // namespace Util
