// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_FAKE_SERVER_H
#define VYM_TESTS_SUPPORT_FAKE_SERVER_H

#include "support/text.h"
#include "support/wait.h"

#include <string>
#include <string_view>
#include <vector>

namespace support {

/**
 * The other end of the socket: listens on "<directory>/vym_socket", writes exactly the bytes it is told
 * to, and compares what the client wrote. It knows nothing of the protocol.
 */
class FakeServer {
public:
    explicit FakeServer(const std::string& directory);
    ~FakeServer();
    FakeServer(const FakeServer&) = delete;
    FakeServer& operator=(const FakeServer&) = delete;
    FakeServer(FakeServer&&) = delete;
    FakeServer& operator=(FakeServer&&) = delete;

    /** Takes the next client (the one before is closed); false when none came in time. */
    [[nodiscard]] bool Accept(Milliseconds limit = TimeLimit());

    /** One send of exactly these bytes; they may contain NULs. Fails the test when they cannot be sent.
     */
    void Send(std::string_view bytes);

    /** One send for each event, each with its NUL. */
    void SendEvents(const std::vector<std::string>& events);

    /** The byte 00 with the descriptor on it; the caller keeps his own. */
    void SendDescriptor(int fd);

    /** One send of `bytes` with the descriptors on it. */
    void SendWithDescriptors(std::string_view bytes, const std::vector<int>& fds);

    /** Whether the next bytes from the client are exactly these; shows where they differ. Bytes of a
     * line that differs are dropped, so that later checks start with the next line. */
    [[nodiscard]] ::testing::AssertionResult Receives(std::string_view expected,
                                                      Milliseconds limit = TimeLimit());

    /** Receives(), with a failure reported at the caller's line. */
    void ExpectCommand(std::string_view expected, const char* file = __builtin_FILE(),
                       int line = __builtin_LINE());

    /** Nothing was sent that has not been expected: the library sends a marker, which must come next.
     */
    void ExpectNothingMore(const char* file = __builtin_FILE(), int line = __builtin_LINE());

    /** Everything the client sends until it has sent `count` bytes or the limit has passed. */
    [[nodiscard]] std::string ReceiveBytes(size_t count, Milliseconds limit = TimeLimit());

    /** Whether the client ends the connection (after whatever it still sends). */
    [[nodiscard]] bool SeesEndOfStream(Milliseconds limit = TimeLimit());

    /** Waits until the client has taken everything out of the socket: the next send makes a new read.
     */
    [[nodiscard]] bool ClientHasRead() const;

    /** Ends one or both directions (SHUT_WR, SHUT_RDWR ...) and keeps the descriptor. */
    void Shutdown(int how) const;

    /** Closes the client's connection. */
    void CloseClient();

    /** Closes the listening socket and removes its file: later connects fail. */
    void StopListening();

    /** The connection's descriptor, for what has no function here. */
    [[nodiscard]] int ClientFd() const { return client_; }

private:
    void SendMessage(std::string_view bytes, const std::vector<int>& fds);
    [[nodiscard]] bool Fill(size_t count, Milliseconds limit, std::string_view expected_start);

    std::string path_;
    std::string pending_;
    int listener_ = -1;
    int client_ = -1;
    int markers_ = 0;
};

/** A connected pair of stream sockets, both ends closed with the object unless taken. */
class SocketPair {
public:
    SocketPair();
    ~SocketPair();
    SocketPair(const SocketPair&) = delete;
    SocketPair& operator=(const SocketPair&) = delete;
    SocketPair(SocketPair&&) = delete;
    SocketPair& operator=(SocketPair&&) = delete;

    [[nodiscard]] int Near() const { return fds_[0]; }
    [[nodiscard]] int Far() const { return fds_[1]; }
    void CloseNear();
    void CloseFar();
    /** Gives the far end away. */
    int TakeFar();

private:
    int fds_[2] = {-1, -1};
};

/** Reads exactly `count` bytes from `fd`, fewer when the peer closes or the limit passes. */
std::string ReadBytes(int fd, size_t count, Milliseconds limit = TimeLimit());

/** Whether `fd` delivers its end of stream within the limit; text before it is dropped. */
bool ReadsEndOfStream(int fd, Milliseconds limit = TimeLimit());

/** Waits until the peer of the stream socket `fd` has read all that was written. */
bool PeerHasRead(int fd, Milliseconds limit = TimeLimit());

/** Writes all bytes, without SIGPIPE; false on failure. */
bool WriteBytes(int fd, std::string_view bytes);

} // namespace support

#endif
