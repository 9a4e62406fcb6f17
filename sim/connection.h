// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// One client: the bytes and descriptors that cross its socket. Knows nothing of commands.
#ifndef VYM_SIM_CONNECTION_H
#define VYM_SIM_CONNECTION_H

#include "framer.h"
#include "timer.h"
#include "traffic.h"
#include "unique_fd.h"

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace sim {

class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Socket = asio::local::stream_protocol::socket;

    struct Listener {
        /// A line with its CR LF.
        std::function<void(std::string_view line)> line;
        /// A line longer than any command can be has begun; it is dropped.
        std::function<void()> line_too_long;
        /// The client is gone. Called once, from the event loop, never from send().
        std::function<void()> gone;
    };

    Connection(asio::io_context& loop, Socket socket, Traffic& traffic, Listener listener);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void start();
    /// Closes the socket and completes the traffic record. Nothing is called afterwards; the owner
    /// calls this before it goes, because waits in the event loop may keep the object alive for longer.
    void finish();

    /// Nothing of what the client has sent or will send counts any more; finish() is to follow.
    void cut() { cut_ = true; }
    /// While it is held, nothing is read and nothing is sent; what is to be sent waits.
    void hold(bool on);

    /// Both queue what the socket does not take at once and never block.
    void send(std::string bytes);
    /// Sends one 0x00 byte that carries the descriptor, then closes this end's copy. A second one may
    /// ride on the same byte.
    void send_descriptor(UniqueFd fd, UniqueFd second = {});
    /// What is sent from now on waits that long once it is its turn.
    void pause(std::chrono::milliseconds duration);
    /// Reads nothing for that long.
    void be_deaf(std::chrono::milliseconds duration);
    /// More is queued than a client that reads leaves there.
    bool is_congested() const;

private:
    struct Item {
        std::string bytes;
        UniqueFd fd;
        /// Instead of bytes.
        std::chrono::milliseconds pause{0};
        UniqueFd second{};
    };

    void add(Item item);
    void await_input();
    void read_some();
    void flush();
    /// Whether the front is a pause, which begins then.
    bool begin_pause();
    void await_output();
    long write_front();
    void front_sent();

    Socket socket_;
    Traffic& traffic_;
    Listener listener_;
    Framer framer_;
    std::deque<Item> queue_;
    size_t front_written_ = 0;
    size_t queued_bytes_ = 0;
    Clock& clock_;
    Timer pause_;
    Timer deafness_;
    bool pausing_ = false;
    bool deaf_ = false;
    bool awaiting_input_ = false;
    bool awaiting_output_ = false;
    bool output_broken_ = false;
    bool ended_ = false;
    bool cut_ = false;
    bool held_ = false;
};

} // namespace sim

#endif
