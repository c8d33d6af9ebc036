// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace ScenarioRunner {

// The directory of one run, which only its owner can read: a bus configuration, the root of the
// TV's state and the logs. It is removed with all that is in it unless it is kept.
class Workspace {
public:
    // Empty when it cannot be made; `error` then says why.
    [[nodiscard]] static std::optional<Workspace> Make(const std::string& mediaPlayer,
                                                       std::string& error);
    ~Workspace();
    Workspace(Workspace&& other) noexcept;
    Workspace& operator=(Workspace&&) = delete;

    void Keep() { m_keep = true; }
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] std::string Root() const { return m_path + "/root"; }
    [[nodiscard]] std::string BusConfiguration() const { return m_path + "/bus.conf"; }
    [[nodiscard]] std::string BusAddress() const { return "unix:path=" + m_path + "/bus"; }

private:
    explicit Workspace(std::string path) : m_path(std::move(path)) {}

    std::string m_path;  // empty when moved from
    bool m_keep = false;
};

}  // namespace ScenarioRunner
