// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "serial_data.h"

#include "transport.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>

namespace sim {
namespace {

constexpr uint8_t kTransportSerial = 0;
constexpr size_t kHeader = 7;
constexpr unsigned kMostCredits = 255;
// A client that stops reading is soon noticed.
constexpr int kSendBuffer = 16 * 1024;
// With this much waiting for the client, its messages are left unread until it has read some: memory
// stays bounded whatever it sends.
constexpr size_t kHighWater = size_t{256} * 1024;

bool would_block(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR || error == ENOBUFS;
}

uint8_t octet(std::string_view bytes, size_t position) {
    return static_cast<uint8_t>(bytes[position]);
}

} // namespace

void SerialData::open() {
    TransportPair pair = make_transport(hub_.log, "serial data", kSendBuffer);
    if (!pair) {
        return;
    }
    close();
    fd_.emplace(hub_.loop, pair.ours.release());
    ++run_;
    awaiting_input_ = awaiting_output_ = output_broken_ = false;
    await_input();
    hub_.out.hand_over(kTransportSerial, std::move(pair.clients));
}

void SerialData::close() {
    if (!fd_) {
        return;
    }
    fd_.reset();
    drop_output();
    input_.clear();
    hub_.log.note("serial data closed");
}

void SerialData::begin(uint32_t handle) {
    accounts_.try_emplace(handle, hub_.loop);
}

void SerialData::end(uint32_t handle) {
    const auto account = accounts_.find(handle);
    if (account == accounts_.end()) {
        return;
    }
    accounts_.erase(account);
    // A message that the socket took in part is finished, or the stream loses its framing.
    const auto kept = queue_.begin() + (front_written_ > 0 ? 1 : 0);
    const auto gone = std::remove_if(kept, queue_.end(),
                                     [handle](const Frame& frame) { return frame.handle == handle; });
    queue_.erase(gone, queue_.end());
    pending_ = count_pending();
    await_input();
}

size_t SerialData::count_pending() const {
    size_t bytes = 0;
    for (const Frame& frame : queue_) {
        bytes += frame.bytes.size();
    }
    for (const auto& [handle, account] : accounts_) {
        for (const std::string& payload : account.waiting) {
            bytes += kHeader + payload.size();
        }
    }
    return bytes;
}

bool SerialData::has_backlog(uint32_t handle) const {
    const auto account = accounts_.find(handle);
    return !queue_.empty() || (account != accounts_.end() && !account->second.waiting.empty());
}

void SerialData::write(uint32_t handle, std::string_view bytes) {
    const auto account = accounts_.find(handle);
    if (account == accounts_.end() || !can_send()) {
        return;
    }
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, kFrameSize);
        account->second.waiting.emplace_back(piece);
        pending_ += kHeader + piece.size();
        bytes.remove_prefix(piece.size());
    }
    pump(handle, account->second);
}

void SerialData::pump(uint32_t handle, Account& account) {
    while (account.credits > 0 && !account.waiting.empty()) {
        --account.credits;
        post(handle, account, account.waiting.front());
        account.waiting.pop_front();
    }
    if (account.waiting.empty()) {
        account.refill.stop();
        account.refilling = false;
    } else if (!account.refilling) {
        refill_later(handle, account);
    }
    flush();
}

void SerialData::refill_later(uint32_t handle, Account& account) {
    account.refilling = true;
    account.refill.start(hub_.pace.serial_credit, [this, handle, &account] {
        account.refilling = false;
        account.credits = kCredits;
        pump(handle, account);
    });
}

void SerialData::post(uint32_t handle, Account& account, std::string_view payload) {
    Frame frame{handle, le32(handle) + static_cast<char>(account.owed) +
                            le16(static_cast<uint16_t>(payload.size()))};
    frame.bytes += payload;
    account.owed = 0;
    queue_.push_back(std::move(frame));
}

void SerialData::flush() {
    if (awaiting_output_) {
        return;
    }
    while (can_send() && !queue_.empty()) {
        const std::string& bytes = queue_.front().bytes;
        const ssize_t count = send(fd_->native_handle(), bytes.data() + front_written_,
                                   bytes.size() - front_written_, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            front_written_ += static_cast<size_t>(count);
            if (front_written_ == bytes.size()) {
                pending_ -= bytes.size();
                front_written_ = 0;
                queue_.pop_front();
            }
        } else if (would_block(errno)) {
            await_output();
            return;
        } else {
            // Reading meets the end of the stream and closes.
            output_broken_ = true;
            drop_output();
        }
    }
    await_input();
}

void SerialData::await_output() {
    awaiting_output_ = true;
    fd_->async_wait(asio::posix::stream_descriptor::wait_write,
                    [this, run = run_](const asio::error_code& error) {
                        if (!error && fd_ && run == run_) {
                            awaiting_output_ = false;
                            flush();
                        }
                    });
}

void SerialData::drop_output() {
    queue_.clear();
    front_written_ = pending_ = 0;
    for (auto& [handle, account] : accounts_) {
        account.refill.stop();
        account.refilling = false;
        account.waiting.clear();
        account.credits = kCredits;
        account.owed = 0;
    }
}

void SerialData::await_input() {
    if (awaiting_input_ || !fd_ || pending_ > kHighWater) {
        return;
    }
    awaiting_input_ = true;
    fd_->async_wait(asio::posix::stream_descriptor::wait_read,
                    [this, run = run_](const asio::error_code& error) {
                        if (!error) {
                            Clock::of(hub_.loop).take_turn(Clock::Turn::Data, [this, run] {
                                if (fd_ && run == run_) {
                                    awaiting_input_ = false;
                                    read_some();
                                }
                            });
                        }
                    });
}

void SerialData::read_some() {
    std::array<char, 4096> chunk{};
    const ssize_t count = recv(fd_->native_handle(), chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (count > 0) {
        input_.append(chunk.data(), static_cast<size_t>(count));
        take_messages();
    } else if (count == 0 || !would_block(errno)) {
        // The client has ended its side; the next enable or connection hands over a new descriptor.
        close();
        return;
    }
    await_input();
}

void SerialData::take_messages() {
    // Receivers write, and may even end in a new descriptor: what they are shown must not move.
    const std::string input = std::move(input_);
    input_.clear();
    std::string_view rest = input;
    const uint64_t run = run_;
    while (rest.size() >= kHeader) {
        const size_t length = octet(rest, 5) + size_t{256} * octet(rest, 6);
        if (rest.size() - kHeader < length) {
            break;
        }
        take(from_le32(rest), octet(rest, 4), rest.substr(kHeader, length));
        rest.remove_prefix(kHeader + length);
    }
    if (fd_ && run == run_) {
        input_ = rest;
    }
}

void SerialData::take(uint32_t handle, uint8_t credit, std::string_view payload) {
    auto account = accounts_.find(handle);
    if (account == accounts_.end()) {
        hub_.log.note("serial data for no connection, dropped: handle " + std::to_string(handle) +
                      ", " + std::to_string(payload.size()) + " bytes");
        return;
    }
    account->second.credits = std::min(account->second.credits + credit, kMostCredits);
    if (!payload.empty()) {
        account->second.owed = 1;
        receive_(handle, payload);
        // It may have ended.
        account = accounts_.find(handle);
        if (account == accounts_.end()) {
            return;
        }
        if (account->second.owed > 0 && can_send()) {
            pending_ += kHeader;
            post(handle, account->second, {});
        }
    }
    pump(handle, account->second);
}

} // namespace sim
