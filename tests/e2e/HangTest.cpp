// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "platform/linux/base/FileDescriptor.h"
#include "tests/e2e/Bench.h"

// A service whose main loop hangs while its other threads work on: it writes its log into a pipe
// that nobody reads.

namespace {

class Hang : public Bench {
protected:
    Hang() {
        const std::string pipe = Root() + "/log";
        EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        m_pipe = Platform::FileDescriptor(open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        sockaddr_un address = {AF_UNIX, ""};
        (Root() + "/notify").copy(address.sun_path, sizeof(address.sun_path) - 1);
        m_systemd = Platform::FileDescriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(bind(m_systemd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        m_service = ScenarioRunner::ChildProcess::Start(
            {{"/bin/sh", "-c", R"(exec "$0" 2>"$1")", std::string(BIN_DIR) + "/bt-autoconnect",
              pipe},
             {{"NOTIFY_SOCKET", address.sun_path}, {"WATCHDOG_USEC", "100000"}}},
            {}, m_error);
    }

    // Takes what the service wrote so far out of the pipe.
    void ReadLog() const {
        std::array<char, 4096> lines = {};
        while (read(m_pipe.Get(), lines.data(), lines.size()) > 0) {
        }
    }
    // Takes the words that came to systemd so far; how many there were.
    int TakeBeats() const {
        std::array<char, 64> word = {};
        int count = 0;
        for (ssize_t size = 0;
             (size = recv(m_systemd.Get(), word.data(), word.size(), MSG_DONTWAIT)) > 0; ++count) {
            EXPECT_EQ(std::string(word.data(), static_cast<std::size_t>(size)), "WATCHDOG=1");
        }
        return count;
    }

    std::string m_error;
    Platform::FileDescriptor m_pipe;
    Platform::FileDescriptor m_systemd;
    std::unique_ptr<ScenarioRunner::ChildProcess> m_service;
};

TEST_F(Hang, OfTheMainLoopIsSeenBySystemdAndByWhoeverWakesTheService) {
    Timer reader = Timer::Every(10, [this] { ReadLog(); });
    const auto beats = [this, count = 0]() mutable { return (count += TakeBeats()) > 3; };
    ASSERT_TRUE(AwaitThat(beats)) << m_error;
    Tvctl({"wake"});

    reader.Cancel();
    for (int i = 0; i < 2000; ++i) {
        Emit("AutoConMobileUpdate");
    }
    // The bus has them all, so they come before what follows.
    Call("PrePareAndDoAutoConnect");
    TakeBeats();
    EXPECT_THAT(TvctlFailure({"wake"}), testing::HasSubstr("the service does not answer"));
    // One may have been on its way; a loop that runs sends a hundred meanwhile.
    EXPECT_LE(TakeBeats(), 1);

    reader = Timer::Every(10, [this] { ReadLog(); });
    Tvctl({"wake"});
    EXPECT_TRUE(AwaitThat(beats));
}

}  // namespace
