// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <string>

#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"
#include "platform/linux/base/Datagram.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/PlatformLog.h"

// What the journal gets, by a journal of this test. An executable of its own: where the log goes is
// decided at its first line.

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// The end of a socket in the journal's folder: bound, or connected if `isPeer`.
Platform::FileDescriptor Socket(const std::string& path, int type, bool isPeer = false) {
    Platform::FileDescriptor end(socket(AF_UNIX, type, 0));
    sockaddr_un address = {AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* const name = reinterpret_cast<const sockaddr*>(&address);
    EXPECT_EQ((isPeer ? connect : bind)(end.Get(), name, sizeof address), 0);
    return end;
}

// What came next, "" when nothing did; of a file, what is in it.
std::string Take(const Platform::FileDescriptor& end) {
    std::array<char, 65536> text;
    std::array<char, CMSG_SPACE(sizeof(int))> control;
    iovec content = {text.data(), text.size()};
    msghdr message = {nullptr, 0, &content, 1, control.data(), control.size(), 0};
    const ssize_t size = recvmsg(end.Get(), &message, MSG_DONTWAIT);
    if (size == 0 && CMSG_FIRSTHDR(&message) != nullptr) {
        const Platform::FileDescriptor file(
            *reinterpret_cast<int*>(CMSG_DATA(CMSG_FIRSTHDR(&message))));
        std::ifstream stream("/proc/self/fd/" + std::to_string(file.Get()), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

void Trace() {
    BTLOG_TRACE_AT(7);
}

TEST(Log, GoesToTheJournalInFields) {
    const std::string folder = GStringPtr(g_dir_make_tmp("log-XXXXXX", nullptr)).get();
    ASSERT_EQ(std::system(("mkdir " + folder + "/journal").c_str()), 0);
    const std::string path = folder + "/journal/socket";
    auto journal = Socket(path, SOCK_DGRAM);
    const auto listener = Socket(folder + "/journal/stdout", SOCK_STREAM);
    listen(listener.Get(), 1);
    const auto error = Socket(folder + "/journal/stdout", SOCK_STREAM, true);
    const Platform::FileDescriptor lines(accept(listener.Get(), nullptr, nullptr));
    dup2(error.Get(), STDERR_FILENO);

    BTLOG_AT(8, "BT_AUTO_CONNECT", DLOG_INFO, "Found %s in list", "A\nMESSAGE=\x1b[2J\xff");
    EXPECT_EQ(Take(journal),
              "PRIORITY=6\nSYSLOG_IDENTIFIER=BT_AUTO_CONNECT\nCODE_FILE=LogTest.cpp\nCODE_LINE=8\n"
              "CODE_FUNC=TestBody\nMESSAGE_ID=ffc4f94872df40a1b1d6bdb221e1eb0a\nBT_EVENT=heard\n"
              "BT_ADDRESS=A\\x0AMESSAGE=\\x1B[2J\\xFF\nMESSAGE=LogTest.cpp: TestBody(8) > Found "
              "A\\x0AMESSAGE=\\x1B[2J\\xFF in list\n");
    Trace();
    EXPECT_THAT(Take(journal), HasSubstr("BT_AUTO_CONNECT\nCODE_LINE=7\nCODE_FUNC=void "));
    Take(journal);
    PLATFORM_ERROR("%s %c%5.1f %% %s", "A", 'c', 1.0, std::string(20000, '.').c_str());
    EXPECT_THAT(Take(journal), AllOf(HasSubstr("MESSAGE=A c  1.0 % ..."),
                                     HasSubstr(".. [cut: 3627 more bytes]\n")));
    const std::string large(1 << 20, 'x');
    EXPECT_TRUE(Platform::SendDatagram(path, large));
    EXPECT_EQ(Take(journal), large);

    // A journal that is gone, and one that was started again.
    ASSERT_EQ(std::system(("rm " + path).c_str()), 0);
    PLATFORM_WARN("%s is not connected: %s", "A", "B");
    EXPECT_THAT(Take(lines), EndsWith(" W TV_PLATFORM: A is not connected: B\n"));
    journal = Socket(path, SOCK_DGRAM);
    PLATFORM_WARN("%s is not connected: %s", "A", "B");
    EXPECT_THAT(Take(journal),
                HasSubstr("\nBT_ADDRESS=A\nREASON=B\nMESSAGE=A is not connected: B\n"));
    EXPECT_EQ(Take(lines), "");
    EXPECT_EQ(std::system(("rm -r " + folder).c_str()), 0);
}

}  // namespace
