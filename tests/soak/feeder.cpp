// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "soak/feeder.h"

#include "protocol/protocol.h"
#include "tests/protocol/generated_values.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <linux/sockios.h>
#include <poll.h>
#include <sched.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace soak {
namespace {

constexpr size_t kPiece = size_t{16} * 1024;
constexpr size_t kSpacing = 7;
// These bring a descriptor with them, and are what numbers travel in.
constexpr std::string_view kTransport = "PD";
constexpr std::string_view kNumber = "BS";
// vym_bluetooth_read_address()
constexpr std::string_view kReady = "AT#BTOR\r\n";

void Add(std::vector<std::string>& cycle, std::string event) {
    cycle.push_back(std::move(event));
    if (cycle.size() % kSpacing == kSpacing - 1) {
        cycle.emplace_back();
    }
}

void AddAll(std::vector<std::string>& cycle, const protocol::Message& message) {
    using generated::Kind;
    for (const Kind kind : {Kind::kSmall, Kind::kSpecial, Kind::kMaximum}) {
        for (size_t round = 0; round < generated::Rounds(message.fields); ++round) {
            generated::Values values(kind, round);
            Add(cycle, protocol::encode(message, values.Of(message)) + '\0');
        }
    }
}

/** The application says that it is ready; before, it would miss events. */
void WaitUntilReady(int client) {
    std::array<char, kPiece> commands{};
    std::string all;
    for (ssize_t count = 1; count > 0 && all.find(kReady) == std::string::npos;) {
        count = recv(client, commands.data(), commands.size(), 0);
        all.append(commands.data(), count > 0 ? static_cast<size_t>(count) : 0);
    }
}

/** Takes what the library sends, and waits until it takes what is sent to it. */
void WaitUntilWritable(int client) {
    std::array<char, kPiece> commands{};
    pollfd waits{client, POLLIN | POLLOUT, 0};
    do {
        poll(&waits, 1, -1);
        while (recv(client, commands.data(), commands.size(), MSG_DONTWAIT) > 0) {
        }
    } while ((waits.revents & (POLLOUT | POLLHUP)) == 0);
}

void Send(int client, std::string_view bytes) {
    while (!bytes.empty()) {
        WaitUntilWritable(client);
        const ssize_t sent = send(client, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            _exit(EXIT_FAILURE);
        }
        bytes.remove_prefix(sent > 0 ? static_cast<size_t>(sent) : 0);
    }
}

/** So that the next event comes alone. */
void WaitUntilRead(int client) {
    for (int unread = 1; unread != 0; sched_yield()) {
        ioctl(client, SIOCOUTQ, &unread);
    }
}

} // namespace

std::string Numbered(uint64_t number) {
    char event[32];
    std::snprintf(event, sizeof event, "BS%012llX0000", static_cast<unsigned long long>(number));
    return std::string(event) + '\0';
}

std::vector<std::string> MakeCycle() {
    std::vector<std::string> cycle;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Message& event : profile->events) {
            if (event.tag != kTransport && event.tag != kNumber) {
                AddAll(cycle, event);
            }
        }
    }
    if (!cycle.back().empty()) {
        cycle.emplace_back();
    }
    return cycle;
}

void Feed(int listener, const std::vector<std::string>& cycle, uint64_t cycles) {
    const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    WaitUntilReady(client);
    std::string piece;
    uint64_t number = 0;
    for (uint64_t i = 0; i < cycles; ++i) {
        for (const std::string& event : cycle) {
            ++number;
            piece += event.empty() ? Numbered(number) : event;
            if (i < kCyclesAlone) {
                Send(client, piece);
                piece.clear();
                WaitUntilRead(client);
            } else if (piece.size() >= kPiece) {
                Send(client, std::string_view(piece).substr(0, kPiece));
                piece.erase(0, kPiece);
            }
        }
    }
    Send(client, piece);
    std::array<char, kPiece> commands{};
    while (recv(client, commands.data(), commands.size(), 0) > 0) {
    }
    close(client);
}

} // namespace soak
