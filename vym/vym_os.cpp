// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_os.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// As many descriptors as the kernel lets one message carry (SCM_MAX_FD): none is ever cut off, and what
// a sender passes beyond the one that is due is closed here.
constexpr size_t kDescriptorRoom = 253;

// Keeps the first descriptor of the message, closes the others.
int take_first(const cmsghdr* header) {
    const size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    int first = 0;
    for (size_t i = 0; i < count; ++i) {
        int fd = 0;
        memcpy(&fd, CMSG_DATA(header) + i * sizeof(int), sizeof fd);
        if (i == 0) {
            first = vym_os_not_zero(fd);
        } else {
            close(fd);
        }
    }
    return first > 0 ? first : 0;
}

} // namespace

extern "C" {

vym::received_t vym_os_receive(int fd, void* buf, size_t count) {
    alignas(cmsghdr) unsigned char control[CMSG_SPACE(kDescriptorRoom * sizeof(int))];
    iovec text = {buf, count};
    msghdr message = {};
    message.msg_iov = &text;
    message.msg_iovlen = 1;

    vym::received_t result = {};
    do {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        result.bytes = recvmsg(fd, &message, MSG_CMSG_CLOEXEC);
        if (result.bytes < 0 && errno == ENOTSOCK) {
            message.msg_controllen = 0;
            result.bytes = read(fd, buf, count);
        }
    } while (result.bytes < 0 && errno == EINTR);
    if (result.bytes < 0) {
        return result;
    }
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr) {
        return result;
    }
    result.has_header = true;
    result.header_len = static_cast<int>(header->cmsg_len);
    result.header_level = header->cmsg_level;
    result.header_type = header->cmsg_type;
    if (header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS &&
        header->cmsg_len >= CMSG_LEN(sizeof(int))) {
        result.fd = take_first(header);
    }
    return result;
}

ssize_t vym_os_send(int fd, const void* buf, size_t count, int flags) {
    return send(fd, buf, count, flags | MSG_NOSIGNAL);
}

int vym_os_not_zero(int fd) {
    if (fd != 0) {
        return fd;
    }
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, 1);
    close(fd);
    return moved;
}

int64_t vym_os_now_ms(void) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

int sock_send_all(int sock_fd, const uint8_t* buf, int len) {
    int sent = 0;
    while (sent < len) {
        const ssize_t n = vym_os_send(sock_fd, buf + sent, static_cast<size_t>(len - sent), 0);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return -1;
        }
        sent += static_cast<int>(n);
    }
    return len;
}

int sock_recv_all(int sock_fd, uint8_t* buf, int len) {
    int received = 0;
    while (received < len) {
        const ssize_t n =
            recv(sock_fd, buf + received, static_cast<size_t>(len - received), MSG_WAITALL);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return -1;
        }
        received += static_cast<int>(n);
    }
    return len;
}

} // extern "C"
