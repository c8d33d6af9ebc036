// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/Datagram.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "platform/linux/base/FileDescriptor.h"

namespace Platform {

namespace {

// Opened once. It has no connection, so that a receiver which was started again is reached, too.
// Never closed: lines are written after main ended.
int Socket() {
    static const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    return fd;
}

bool Send(const msghdr& message) {
    ssize_t sent = -1;
    do {
        sent = sendmsg(Socket(), &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

FileDescriptor SealedFile(std::string_view text) {
    FileDescriptor file(memfd_create("datagram", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    const bool isWritten =
        file.IsOpen() &&
        write(file.Get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        fcntl(file.Get(), F_ADD_SEALS, kSeals) == 0;
    return isWritten ? std::move(file) : FileDescriptor();
}

// Without a text: the receiver reads the file.
bool SendFile(msghdr message, const FileDescriptor& file) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    message.msg_iovlen = 0;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int fd = file.Get();
    std::memcpy(CMSG_DATA(header), &fd, sizeof fd);
    return Send(message);
}

}  // namespace

bool SendDatagram(const std::string& path, std::string_view text) noexcept {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        errno = EINVAL;
        return false;
    }
    path.copy(address.sun_path, path.size());
    if (path[0] == '@') {
        address.sun_path[0] = '\0';
    }
    iovec content = {const_cast<char*>(text.data()), text.size()};
    msghdr message = {};
    message.msg_name = &address;
    message.msg_namelen = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    if (Send(message)) {
        return true;
    }
    if (errno != EMSGSIZE && errno != ENOBUFS) {
        return false;
    }
    const FileDescriptor file = SealedFile(text);
    return file.IsOpen() && SendFile(message, file);
}

}  // namespace Platform
