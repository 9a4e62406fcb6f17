// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Both ends of an AF_UNIX stream socket. What fails here ends the process with a line that says what.
#ifndef VYM_BENCH_SOCKETS_H
#define VYM_BENCH_SOCKETS_H

#include <string>
#include <string_view>

namespace bench {

[[noreturn]] void give_up(const std::string& what);

/// Listens and accepts one client after the other.
class Listener {
public:
    explicit Listener(const std::string& path);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    Listener(Listener&&) = delete;
    Listener& operator=(Listener&&) = delete;

    [[nodiscard]] int accept() const;

private:
    int fd_;
};

int connect_to(const std::string& path);

/// False when the peer is gone.
bool write_all(int fd, std::string_view text);

/// Lets the peer run until it has read everything that was written.
void wait_until_read(int fd);

/// Reads up to the end of a line, a byte behind it included; false when the peer is gone.
bool read_line(int fd);

} // namespace bench

#endif
