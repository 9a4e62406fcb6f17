// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "hand_over.h"

#include "target.h"
#include "vym_sdk.h"
#include "vym_wire.h"

#include <cerrno>
#include <linux/sockios.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace fuzz {

Pair::Pair() {
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds_) == 0,
            "there is a pair of sockets");
}

Pair::~Pair() {
    close_ours();
    close_theirs();
}

void Pair::close_end(int end) {
    if (fds_[end] >= 0) {
        close(fds_[end]);
        fds_[end] = -1;
    }
}

void send_descriptor(int socket, std::string_view bytes, int fd) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof fd)] = {};
    iovec part{const_cast<char*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof fd);
    std::memcpy(CMSG_DATA(header), &fd, sizeof fd);
    require(sendmsg(socket, &message, MSG_NOSIGNAL) > 0, "a descriptor can be sent");
}

void hand_over(uint8_t id, int fd) {
    const Pair wire;
    uint8_t byte = 0;
    send_descriptor(wire.ours(), std::string_view("\0", 1), fd);
    vym_wire_reset();
    require(vym_wire_read(wire.theirs(), &byte, 1) == 1, "the descriptor's byte arrives");
    char event[] = "PD0000000000";
    std::snprintf(event, sizeof event, "PD%02X00000000", static_cast<unsigned>(id));
    process_event(reinterpret_cast<uint8_t*>(event), sizeof event);
}

void send_all_and_end(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        require(sent > 0 || errno == EINTR, "the reader reads on");
        bytes.remove_prefix(sent > 0 ? static_cast<size_t>(sent) : 0);
    }
    shutdown(socket, SHUT_WR);
}

void wait_for_end(int socket) {
    char byte = 0;
    while (recv(socket, &byte, 1, 0) < 0 && errno == EINTR) {
    }
}

void wait_until_read(int socket) {
    for (int unread = 1; unread != 0; sched_yield()) {
        require(ioctl(socket, SIOCOUTQ, &unread) == 0, "the system tells what is unread");
    }
}

} // namespace fuzz
