// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A descriptor for data beside the text: a socket pair, one end of which is the client's.
#ifndef VYM_SIM_TRANSPORT_H
#define VYM_SIM_TRANSPORT_H

#include "log.h"
#include "unique_fd.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <system_error>

namespace sim {

struct TransportPair {
    /// Does not block.
    UniqueFd ours;
    /// Blocks, as on a real transport.
    UniqueFd clients;

    explicit operator bool() const { return static_cast<bool>(ours); }
};

/// `send_buffer` is how many bytes the client may be behind. None when the system has no more: the log
/// says so.
inline TransportPair make_transport(Log& log, const std::string& what, int send_buffer) {
    std::array<int, 2> pair{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0) {
        log.problem("no descriptor for " + what + ": " + std::generic_category().message(errno));
        return {};
    }
    fcntl(pair[0], F_SETFL, O_NONBLOCK);
    setsockopt(pair[0], SOL_SOCKET, SO_SNDBUF, &send_buffer, sizeof send_buffer);
    return {UniqueFd(pair[0]), UniqueFd(pair[1])};
}

} // namespace sim

#endif
