// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial data descriptor: the messages of all serial connections, framed and counted with credits.
//
// A message is the connection's handle (32 bits), credits (8), the payload's length (16), all
// little-endian, and the payload. Credits say how many messages with a payload the other end may still
// send; a message without one costs nothing.
//
// What the client may send: kCredits messages at first, and one more for each that was taken. It comes
// back with the next message, or at once in a message of its own.
//
// What is sent to the client: kCredits messages at first, and more as its messages grant. A client that
// only reads never grants any, so when messages wait and no grant comes for Pace::serial_credit, the
// first grant is taken to hold again. The socket still keeps a client that does not read from being
// flooded.
#ifndef VYM_SIM_SERIAL_DATA_H
#define VYM_SIM_SERIAL_DATA_H

#include "module.h"
#include "timer.h"

#include <asio/posix/stream_descriptor.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

class SerialData {
public:
    /// The most messages that either end may have under way at first.
    static constexpr uint8_t kCredits = 16;
    /// The longest payload that is sent; longer texts are divided.
    static constexpr uint16_t kFrameSize = 990;

    /// Called for each payload; may write, begin and end connections.
    using Receive = std::function<void(uint32_t handle, std::string_view payload)>;

    SerialData(Hub& hub, Receive receive) : hub_(hub), receive_(std::move(receive)) {}

    bool is_open() const { return fd_.has_value(); }
    /// Makes a new pair and hands one end to the client.
    void open();
    /// Connections outlive the descriptor; what waits to be sent does not.
    void close();

    void begin(uint32_t handle);
    /// Forgets the connection, with everything that waits to be sent for it.
    void end(uint32_t handle);

    /// Never blocks; dropped while there is no descriptor or no such connection.
    void write(uint32_t handle, std::string_view bytes);
    /// Whether something waits that the client is slow to take.
    bool has_backlog(uint32_t handle) const;

private:
    struct Account {
        explicit Account(asio::io_context& loop) : refill(loop) {}

        Timer refill;
        bool refilling = false;
        unsigned credits = kCredits;
        /// Credits to be given back.
        uint8_t owed = 0;
        /// Payloads without a credit.
        std::deque<std::string> waiting;
    };
    struct Frame {
        uint32_t handle;
        std::string bytes;
    };

    bool can_send() const { return fd_ && !output_broken_; }
    void pump(uint32_t handle, Account& account);
    void post(uint32_t handle, Account& account, std::string_view payload);
    void flush();
    void await_output();
    void drop_output();
    void refill_later(uint32_t handle, Account& account);
    size_t count_pending() const;
    void await_input();
    void read_some();
    void take_messages();
    void take(uint32_t handle, uint8_t credit, std::string_view payload);

    Hub& hub_;
    Receive receive_;
    std::optional<asio::posix::stream_descriptor> fd_;
    /// Counts the descriptors, so that a wait for an old one is recognised when it ends.
    uint64_t run_ = 0;
    std::map<uint32_t, Account> accounts_;
    std::deque<Frame> queue_;
    size_t front_written_ = 0;
    /// Bytes of all messages that the client is still to take, also of those without a credit.
    size_t pending_ = 0;
    std::string input_;
    bool awaiting_input_ = false;
    bool awaiting_output_ = false;
    bool output_broken_ = false;
};

} // namespace sim

#endif
