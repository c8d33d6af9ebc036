// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/Workspace.h"

#include <glib.h>

#include <filesystem>
#include <utility>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "common/CHandle.h"

namespace ScenarioRunner {
namespace {

namespace fs = std::filesystem;

bool Write(const std::string& file, const std::string& text, std::string& error) {
    GErrorPtr failure;
    if (g_file_set_contents(file.c_str(), text.data(), static_cast<gssize>(text.size()),
                            Out(failure)) != FALSE) {
        return true;
    }
    error = failure->message;
    return false;
}

// A bus without restrictions: what a policy forbids is not what scenarios are about. Of its address
// and the folder of its services.
constexpr char kBusConfiguration[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>%s</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%s</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

}  // namespace

std::optional<Workspace> Workspace::Make(const std::string& mediaPlayer, std::string& error) {
    GErrorPtr failure;
    const GStringPtr path(g_dir_make_tmp("scenario-XXXXXX", Out(failure)));
    if (path == nullptr) {
        error = failure->message;
        return std::nullopt;
    }
    Workspace workspace(path.get());
    if (!workspace.Fill(mediaPlayer, error)) {
        return std::nullopt;
    }
    return workspace;
}

Workspace::Workspace(Workspace&& other) noexcept
    : m_path(std::exchange(other.m_path, "")), m_keep(other.m_keep) {}

Workspace::~Workspace() {
    if (!m_path.empty() && !m_keep) {
        std::error_code error;
        fs::remove_all(m_path, error);
    }
}

bool Workspace::Fill(const std::string& mediaPlayer, std::string& error) const {
    const std::string services = m_path + "/services";
    std::error_code failure;
    for (const std::string& directory : {services, Root()}) {
        if (!fs::create_directory(directory, failure)) {
            error = directory + ": " + failure.message();
            return false;
        }
    }
    const std::string service = std::string("[D-BUS Service]\nName=") +
                                Conditions::kMediaPlayerAppId + "\nExec=" + mediaPlayer + "\n";
    const GStringPtr configuration(
        g_markup_printf_escaped(kBusConfiguration, BusAddress().c_str(), services.c_str()));
    return Write(services + "/" + Conditions::kMediaPlayerAppId + ".service", service, error) &&
           Write(BusConfiguration(), configuration.get(), error);
}

}  // namespace ScenarioRunner
