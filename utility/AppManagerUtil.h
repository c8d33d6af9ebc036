// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/application.h"
#include "utility/UiAppLaunch.h"

namespace Util {

// Launches applications and answers questions about them. Failures are logged. Main loop's thread
// only, except SendNirvoUiMessage.
class AppManagerUtil {
public:
    // Texts for the application, (key, value), in this order.
    using Extras = std::vector<std::pair<std::string, std::string>>;

    // Launches the application `appId`, or sends it the request when it already runs. True when the
    // request was accepted. Without `isSync` a launch that fails later is tried once more, at once.
    static bool LaunchApp(const std::string& appId, Extras extras, bool isSync);
    static bool LaunchApp(const std::string& appId, bool isSync) {
        return LaunchApp(appId, Extras(), isSync);
    }

    // The result of an asynchronous launch; makes the one retry.
    static void OnAppControlResult(app_control_h request, app_control_error_e result,
                                   void* userData) noexcept;

    // Open the TV's settings at the list of Bluetooth devices or of sound outputs.
    static bool launchBluetoothDeviceist(bool isSync);
    static bool launchBluetoothAudioList(bool isSync);

    // Queues the event for the package's UI application and, with `pictureOn`, switches the picture
    // on. False when either failed. Any thread when `pictureOn` is false.
    static bool SendNirvoUiMessage(const nirvo_event& event, bool pictureOn);

    static bool IsAppRunning(const std::string& appId);
    static bool IsAppForeGround(const std::string& appId);
    static bool IsPackageInstalled(const std::string& pkgId);
    // Throws a std::string with the failed call's name when the platform cannot tell.
    static bool IsUpdating(const std::string& appId);
    // Whether the application's description has the item `key` with exactly this value.
    static bool DoesHaveMetadata(const std::string& appId, const std::string& key,
                                 const std::string& value);
    // Ids of the applications that can be seen on the screen.
    static std::vector<std::string> GetVisibleAppList();

    // Delivers events to the UI application from before main until the process exits.
    static UiAppLaunch uiappLaunch;
};

}  // namespace Util
