// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_wire.h"

#include "bt_utils.h"
#include "vym_os.h"

#include <cstdio>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int kQueueRoom = 16;
constexpr size_t kAsideRoom = 4096;
constexpr int kWaitMs = 1000;
constexpr int kWaitStepMs = 50;
// A receipt of this many single bytes is what recvfd_client() reports on; what comes later is only
// text.
constexpr int kReportedTries = 2;

struct queued_t {
    uint64_t position; // of the byte that carried it
    int fd;
};

struct {
    uint64_t received; // bytes taken off the socket
    queued_t queue[kQueueRoom];
    int queued;
    uint8_t aside[kAsideRoom]; // taken off the socket, not yet handed out
    size_t aside_len;
} s_wire;

void drop_oldest() {
    --s_wire.queued;
    memmove(s_wire.queue, s_wire.queue + 1, static_cast<size_t>(s_wire.queued) * sizeof(queued_t));
}

// The kernel never returns text beyond a message that carries a descriptor, so what came belongs to the
// last byte of the read.
void account(ssize_t bytes, int fd) {
    if (bytes > 0) {
        s_wire.received += static_cast<uint64_t>(bytes);
    }
    if (fd <= 0) {
        return;
    }
    if (s_wire.queued == kQueueRoom) {
        close(fd);
        return;
    }
    s_wire.queue[s_wire.queued++] = {s_wire.received > 0 ? s_wire.received - 1 : 0, fd};
}

int take_queued(uint64_t position) {
    vym_wire_close_before(position);
    if (s_wire.queued == 0) {
        return 0;
    }
    const int fd = s_wire.queue[0].fd;
    drop_oldest();
    return fd;
}

// One receipt while a descriptor is awaited. Returns false when the peer is gone.
bool receive_aside(int fd, bool report) {
    uint8_t* room = s_wire.aside + s_wire.aside_len;
    const size_t count = report ? 1 : kAsideRoom - s_wire.aside_len;
    const vym::received_t got = vym_os_receive(fd, room, count);
    if (got.bytes > 0) {
        s_wire.aside_len += static_cast<size_t>(got.bytes);
    }
    account(got.bytes, got.fd);
    if (report) {
        vym_report_descriptor(&got);
    }
    return got.bytes > 0;
}

} // namespace

extern "C" {

void vym_wire_reset(void) {
    for (int i = 0; i < s_wire.queued; ++i) {
        close(s_wire.queue[i].fd);
    }
    s_wire.queued = 0;
    s_wire.received = 0;
    s_wire.aside_len = 0;
}

ssize_t vym_wire_read(int fd, void* buf, size_t count) {
    if (s_wire.aside_len == 0) {
        const vym::received_t got = vym_os_receive(fd, buf, count);
        account(got.bytes, got.fd);
        return got.bytes;
    }
    const size_t n = count < s_wire.aside_len ? count : s_wire.aside_len;
    memcpy(buf, s_wire.aside, n);
    s_wire.aside_len -= n;
    memmove(s_wire.aside, s_wire.aside + n, s_wire.aside_len);
    return static_cast<ssize_t>(n);
}

int vym_wire_pending(void) {
    return s_wire.aside_len > 0 ? 1 : 0;
}

uint64_t vym_wire_position(void) {
    return s_wire.received - s_wire.aside_len;
}

void vym_wire_close_before(uint64_t position) {
    while (s_wire.queued > 0 && s_wire.queue[0].position < position) {
        close(s_wire.queue[0].fd);
        drop_oldest();
    }
}

int vym_wire_take_descriptor(int fd, uint64_t position, int (*go_on)(void)) {
    int taken = take_queued(position);
    if (taken > 0) {
        const vym::received_t ahead = {1, taken, false, 0, 0, 0};
        vym_report_descriptor(&ahead);
        return taken;
    }
    if (fd <= 0) {
        return 0; // not connected; descriptor 0 is the application's standard input
    }
    const int64_t deadline = vym_os_now_ms() + kWaitMs;
    int tries = 0;
    bool open = true;
    while (taken == 0 && (open || tries < kReportedTries) && s_wire.aside_len < kAsideRoom &&
           go_on() != 0) {
        const int64_t left = deadline - vym_os_now_ms();
        if (left <= 0) {
            break;
        }
        pollfd waiting = {fd, POLLIN, 0};
        const int ready = poll(&waiting, 1, left < kWaitStepMs ? static_cast<int>(left) : kWaitStepMs);
        if (ready > 0) {
            open = receive_aside(fd, tries < kReportedTries);
            ++tries;
            taken = take_queued(position);
        }
    }
    return taken;
}

} // extern "C"
