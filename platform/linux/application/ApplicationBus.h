// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/CHandle.h"

// Applications as the system bus knows them. An application is called by its bus name, which is its
// id; it runs when the name has an owner, it is installed when the bus can start it or it runs, and
// it is launched through org.freedesktop.Application, which the bus starts when needed.
namespace Platform {

using LaunchExtras = std::vector<std::pair<std::string, std::string>>;

// The action of org.freedesktop.Application that carries a launch; its one parameter holds the
// extras as a(ss).
inline constexpr char kApplicationInterface[] = "org.freedesktop.Application";
inline constexpr char kLaunchAction[] = "launch";

// The platform data of a launch that name the phone which it is about: its address, a text.
inline constexpr char kPhoneData[] = "com.velmora.tv.phone";

[[nodiscard]] bool IsApplicationId(const std::string& id);

// Where the application's object stands: dots become slashes and '-' becomes '_', as
// freedesktop.org has it for applications that are activated over D-Bus.
[[nodiscard]] std::string ObjectPathOf(const std::string& applicationId);

// Whether the calling thread is the one that must not wait.
[[nodiscard]] bool IsMainLoopThread();

// Ask the bus and wait, 2 s at most each; nothing when the bus does not answer. Any thread.
[[nodiscard]] std::optional<bool> IsRunning(const std::string& applicationId);
[[nodiscard]] std::optional<bool> IsInstalled(const std::string& applicationId);

// The arguments of ActivateAction for a launch, about a phone unless that is empty; floating.
[[nodiscard]] GVariant* LaunchArguments(const LaunchExtras& extras, const std::string& phone);

}  // namespace Platform
