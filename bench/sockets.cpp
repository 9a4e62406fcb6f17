// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "sockets.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <linux/sockios.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr int kBacklog = 4;

int unix_socket() {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        give_up("socket");
    }
    return fd;
}

sockaddr_un address_of(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        give_up(path);
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    return address;
}

} // namespace

void give_up(const std::string& what) {
    std::fprintf(stderr, "bench: %s: %s\n", what.c_str(), std::strerror(errno));
    std::exit(1);
}

// Its name is there only when it listens: that is what the clients are started by.
Listener::Listener(const std::string& path) : fd_(unix_socket()) {
    const std::string early = path + ".early";
    const sockaddr_un address = address_of(early);
    if (bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd_, kBacklog) != 0 || rename(early.c_str(), path.c_str()) != 0) {
        give_up(path);
    }
}

Listener::~Listener() {
    close(fd_);
}

int Listener::accept() const {
    const int fd = accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
        give_up("accept");
    }
    return fd;
}

int connect_to(const std::string& path) {
    const int fd = unix_socket();
    const sockaddr_un address = address_of(path);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        give_up(path);
    }
    return fd;
}

bool write_all(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t sent = send(fd, text.data(), text.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

void wait_until_read(int fd) {
    int unread = 0;
    while (ioctl(fd, SIOCOUTQ, &unread) == 0 && unread > 0) {
        sched_yield();
    }
}

bool read_line(int fd) {
    std::array<char, 4096> room{};
    ssize_t got = 0;
    do {
        got = read(fd, room.data(), room.size());
    } while (got > 0 && room[static_cast<size_t>(got) - 1] != '\n');
    return got > 0;
}

} // namespace bench
