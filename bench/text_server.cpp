// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server of the candidates that speak the library's wire.

#include "candidate.h"
#include "sockets.h"
#include "workload.h"

#include <algorithm>
#include <array>
#include <unistd.h>

namespace bench {
namespace {

constexpr size_t kFloodWrite = 16384;

void stream_alone(int fd, const Stream& events) {
    size_t at = 0;
    do {
        const size_t end = events.text.find('\0', at) + 1;
        if (!write_all(fd, std::string_view(events.text).substr(at, end - at))) {
            return;
        }
        wait_until_read(fd);
        at = end == events.text.size() ? 0 : end;
    } while (true);
}

void stream_flood(int fd, const Stream& events) {
    std::string text = events.text;
    while (text.size() < 2 * kFloodWrite) {
        text += events.text;
    }
    // Behind the end the beginning again, so that each write is one piece.
    const size_t cycle = text.size();
    text.append(text, 0, kFloodWrite);
    size_t at = 0;
    while (write_all(fd, std::string_view(text).substr(at, kFloodWrite))) {
        at = (at + kFloodWrite) % cycle;
    }
}

void answer(int fd) {
    const std::string text = name_answer() + '\0';
    while (read_line(fd) && write_all(fd, text)) {
    }
}

void drain(int fd) {
    std::array<char, 65536> room{};
    while (read(fd, room.data(), room.size()) > 0) {
    }
}

void talk(int fd, const Job& job, const Stream& events) {
    if (job.workload == "round-trip") {
        answer(fd);
        return;
    }
    // A client that wants events says so when it is ready for them.
    if (events.events == 0) {
        drain(fd);
    } else if (read_line(fd)) {
        if (job.workload == "event") {
            stream_alone(fd, events);
        } else {
            stream_flood(fd, events);
        }
    }
}

} // namespace

void serve(const Job& job) {
    const Stream events = stream(job.workload);
    const Listener listener(job.socket_path());
    while (true) {
        const int fd = listener.accept();
        talk(fd, job, events);
        close(fd);
    }
}

} // namespace bench
