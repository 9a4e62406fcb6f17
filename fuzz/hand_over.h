// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Descriptors for the library, on the way that the server's take.
#ifndef VYM_FUZZ_HAND_OVER_H
#define VYM_FUZZ_HAND_OVER_H

#include <cstdint>
#include <string_view>

namespace fuzz {

/// A connected pair of stream sockets, closed with the object.
class Pair {
public:
    Pair();
    ~Pair();
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    int ours() const { return fds_[0]; }
    int theirs() const { return fds_[1]; }
    void close_ours() { close_end(0); }
    void close_theirs() { close_end(1); }

private:
    void close_end(int end);

    int fds_[2] = {-1, -1};
};

/// Sends the bytes with a descriptor on them; the caller keeps his own.
void send_descriptor(int socket, std::string_view bytes, int fd);

/// Announces a descriptor and passes it, as the server does, without a receive thread. The adapter must
/// have been started.
void hand_over(uint8_t id, int fd);

/// Sends everything and the end of the stream.
void send_all_and_end(int socket, std::string_view bytes);

/// Waits until the peer has closed its end or sends something.
void wait_for_end(int socket);

/// Waits until the peer has read all that was sent.
void wait_until_read(int socket);

} // namespace fuzz

#endif
