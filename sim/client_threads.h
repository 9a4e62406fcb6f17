// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Whether a client is at work or waits for something to happen.
#ifndef VYM_SIM_CLIENT_THREADS_H
#define VYM_SIM_CLIENT_THREADS_H

#include <string>
#include <sys/types.h>

namespace sim {

/// Looks at the threads of the process at the other end of a socket.
class ClientThreads {
public:
    /// Throws std::system_error when the kernel does not say whose they are.
    explicit ClientThreads(int socket);

    /// Whether there was a moment during this call in which all its threads slept, or had ended. The
    /// one that asks is not counted, if it is the same process.
    bool all_wait() const;

private:
    /// Where the kernel tells of them.
    std::string tasks_;
};

} // namespace sim

#endif
