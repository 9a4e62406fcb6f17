// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/relay.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace support {
namespace {

sockaddr_un SocketAddress(const std::string& directory) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = directory + "/vym_socket";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

} // namespace

Relay::Relay(const std::string& near, const std::string& far) {
    const sockaddr_un here = SocketAddress(near);
    const sockaddr_un there = SocketAddress(far);
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&here), sizeof here), 0)
        << strerror(errno);
    EXPECT_EQ(listen(listener_, 1), 0) << strerror(errno);
    server_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(server_, reinterpret_cast<const sockaddr*>(&there), sizeof there), 0)
        << strerror(errno);
    EXPECT_EQ(pipe(stop_), 0);
    thread_ = std::thread([this] { Run(); });
}

Relay::~Relay() {
    close(stop_[1]);
    thread_.join();
    close(stop_[0]);
    close(server_);
    close(listener_);
}

std::string Relay::Commands() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return commands_;
}

std::string Relay::Events() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return events_;
}

void Relay::Run() {
    std::array<pollfd, 2> arrival = {{{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}}};
    poll(arrival.data(), arrival.size(), -1);
    if (arrival[0].revents == 0) {
        return;
    }
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    std::array<pollfd, 3> ends = {{{client, POLLIN, 0}, {server_, POLLIN, 0}, {stop_[0], POLLIN, 0}}};
    bool open = true;
    while (open && poll(ends.data(), ends.size(), -1) > 0 && ends[2].revents == 0) {
        if (ends[0].revents != 0) {
            open = PassOn(client, server_, commands_);
        }
        if (open && ends[1].revents != 0) {
            open = PassOn(server_, client, events_);
        }
    }
    shutdown(server_, SHUT_RDWR);
    close(client);
}

bool Relay::PassOn(int from, int to, std::string& noted) {
    std::array<char, 4096> bytes{};
    alignas(cmsghdr) std::array<char, 256> control{};
    iovec text = {bytes.data(), bytes.size()};
    msghdr message = {};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t received = recvmsg(from, &message, MSG_CMSG_CLOEXEC);
    if (received <= 0) {
        return false;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        noted.append(bytes.data(), static_cast<size_t>(received));
    }
    // The same message goes on, descriptors and all; our copies of these are closed.
    text.iov_len = static_cast<size_t>(received);
    const bool sent = sendmsg(to, &message, MSG_NOSIGNAL) == received;
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        for (size_t at = 0; CMSG_LEN(at + sizeof(int)) <= header->cmsg_len; at += sizeof(int)) {
            int fd = -1;
            memcpy(&fd, CMSG_DATA(header) + at, sizeof fd);
            close(fd);
        }
    }
    return sent;
}

} // namespace support
