// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/scenario-runner/Workspace.h"

#include <filesystem>
#include <utility>

#include "autoconnect/ZemiAutoConnection/Conditions.h"
#include "common/CHandle.h"

namespace ScenarioRunner {
namespace {

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
    std::optional<Workspace> workspace(Workspace(path.get()));
    const std::string services = workspace->m_path + "/services";
    for (const std::string& directory : {services, workspace->Root()}) {
        std::error_code problem;
        if (!std::filesystem::create_directory(directory, problem)) {
            error = directory + ": " + problem.message();
            return std::nullopt;
        }
    }
    const std::string name = Conditions::kMediaPlayerAppId;
    const GStringPtr configuration(g_markup_printf_escaped(
        kBusConfiguration, workspace->BusAddress().c_str(), services.c_str()));
    if (!Write(services + "/" + name + ".service",
               "[D-BUS Service]\nName=" + name + "\nExec=" + mediaPlayer + "\n", error) ||
        !Write(workspace->BusConfiguration(), configuration.get(), error)) {
        return std::nullopt;
    }
    return workspace;
}

Workspace::Workspace(Workspace&& other) noexcept
    : m_path(std::exchange(other.m_path, "")), m_keep(other.m_keep) {}

Workspace::~Workspace() {
    if (!m_path.empty() && !m_keep) {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
}

}  // namespace ScenarioRunner
