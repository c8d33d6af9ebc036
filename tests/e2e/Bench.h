// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/TestBus.h"
#include "tools/tv-sim/Simulator.h"

// The real executables on a bus of their own, driven by verbs. Waiting is waiting for a line, never
// for a time; a line that does not come within the deadline fails the test and shows the log.
class Bench : public testing::Test {
protected:
    // What the bus starts for com.velmora.tv.bmp; the media player unless a test says otherwise.
    explicit Bench(const std::string& mediaPlayer = BIN_DIR "/media-player");
    ~Bench() override;

    // `scenario` is the text of a scenario file, [phone] sections above all. Waits for the adapter
    // unless the scenario keeps it away.
    void StartSimulator(const std::string& scenario);
    // The same in this process, for a test that says what phones do when. Its answers take a loop
    // that runs, so they come during the waits.
    std::unique_ptr<TvSim::Simulator> Simulate(TvSim::Scenario scenario);
    void KillSimulator();
    // Starts it and waits until it owns its name; with the simulator there, until it knows the
    // objects.
    void StartService();
    // Runs a program with its path to its end: what it printed, and how it ended.
    static std::pair<std::vector<std::string>, std::string> RunToEnd(
        const std::string& program, std::vector<std::string> arguments);
    // Runs an executable, which must end so ("" for status 0); what it printed and, when that is a
    // failure, its last complaint.
    std::vector<std::string> Run(const std::string& program,
                                 const std::vector<std::string>& arguments,
                                 const std::string& wantedEnd);
    // Runs tvctl, which must succeed; its output, line by line.
    std::vector<std::string> Tvctl(const std::vector<std::string>& arguments);
    // Runs tvctl, which must fail that way; what it printed and complained of, as one text.
    std::string TvctlFailure(const std::vector<std::string>& arguments,
                             const char* end = "status 1");
    // A TV on which a wake-up leads to a connection; the phone is registered.
    void SetUpTv(const std::vector<std::string>& phones = {kAlice});
    // SetUpTv, the simulator with Alice and whatever follows in her section and after it, and the
    // service.
    void StartAll(const std::string& scenario = "",
                  const std::vector<std::string>& phones = {kAlice});
    void Wake() { Emit("PrePareAndDoAutoConnect"); }
    // One wake-up makes Alice's phone play.
    void ExpectMusic();
    // A signal from another process; `parameters` is a floating tuple or NULL.
    void Emit(const char* name, GVariant* parameters = nullptr,
              const char* path = "/com/velmora/tv/bt/autoconnect",
              const char* interface = "com.velmora.tv.bt.autoconnect");

    // Stops the service for that long and lets it go on.
    void Stall(int ms);
    // Launches the media player with cmd=play and an unknown extra, about a phone unless that is
    // empty; the answer has come.
    void LaunchPlay(const std::string& phone = "");

    // Stands on the bus under that name and answers nothing, Emit then speaks for it; or gives the
    // name up.
    void Own(const char* name, bool own = true);

    // Another program discovers from now on what fits the pattern.
    void Discover(const char* pattern);
    // Calls a method of the service's object; the name of the error that came back.
    std::string Call(const char* method);

    // Waits for the next line of the service's log, or of the simulator's events, that holds
    // `text`; lines before it are passed over and do not count again.
    void AwaitLog(const std::string& text) { Await(m_log, text); }
    void AwaitEvent(const std::string& text) { Await(m_events, text); }
    // Likewise of what the bus and what it started have to say: the media player's log.
    void AwaitPlayer(const std::string& text) { Await(m_playerLog, text); }
    // Waits until the service ended; "" for status 0.
    [[nodiscard]] std::string AwaitEnd();
    // How many lines of the service's log so far hold `text`.
    [[nodiscard]] std::size_t CountLog(const std::string& text) const { return Count(m_log, text); }
    [[nodiscard]] std::size_t CountEvents(const std::string& text) const {
        return Count(m_events, text);
    }
    [[nodiscard]] std::size_t CountPlayer(const std::string& text) const {
        return Count(m_playerLog, text);
    }
    [[nodiscard]] GDBusConnection* Connection() const { return m_connection.get(); }
    [[nodiscard]] std::string Root() const { return m_bus.folder.Root(); }
    // What the service has logged.
    [[nodiscard]] std::string LogFile() const { return Root() + "/service.log"; }

    static constexpr const char* kAlice = "A0:11:22:33:44:01";
    static constexpr const char* kBen = "A0:11:22:33:44:02";
    static constexpr const char* kAlicePhone = "[phone Alice]\naddress=A0:11:22:33:44:01\n";

private:
    using ChildPtr = std::unique_ptr<ScenarioRunner::ChildProcess>;
    struct Lines {
        std::vector<std::string> all;
        std::size_t read = 0;
    };

    // Calls a method; the name of the error that came back, if any.
    std::string Ask(const char* whom, const char* path, const char* interface, const char* method,
                    GVariant* arguments);
    static ChildPtr Start(const std::string& program, std::vector<std::string> arguments,
                          ScenarioRunner::ChildProcess::Handlers handlers);
    static void Await(Lines& lines, const std::string& text);
    static std::size_t Count(const Lines& lines, const std::string& text);

    Lines m_log;
    Lines m_events;
    Lines m_playerLog;
    TestBus m_bus;
    std::optional<std::string> m_serviceEnd;
    ChildPtr m_simulator;
    bool m_isSimulated = false;  // in either way
    ChildPtr m_service;
    GObjectPtr<GDBusConnection> m_connection;
};
