// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "connection.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace sim {
namespace {

// With this much waiting for the client, its commands are left unread until it has read its events:
// memory stays bounded whatever it asks for.
constexpr size_t kHighWater = size_t{256} * 1024;

bool would_block(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

/// `second` may be -1.
long send_with_descriptors(int socket, std::string_view bytes, int first, int second) {
    const std::array<int, 2> fds{first, second};
    const size_t length = sizeof(int) * (second < 0 ? 1 : 2);
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof fds)> control{};
    // sendmsg() does not write through the pointer that iovec wants without const.
    iovec part{const_cast<char*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = CMSG_SPACE(length);
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(length);
    std::memcpy(CMSG_DATA(header), fds.data(), length);
    return sendmsg(socket, &message, MSG_NOSIGNAL);
}

} // namespace

Connection::Connection(asio::io_context& loop, Socket socket, Traffic& traffic, Listener listener)
    : socket_(std::move(socket)), traffic_(traffic), listener_(std::move(listener)),
      framer_({[this](std::string_view line) {
                   traffic_.received(line);
                   if (!cut_) {
                       listener_.line(line);
                   }
               },
               [this](std::string_view bytes, bool first) {
                   traffic_.received(bytes);
                   if (first && !cut_) {
                       listener_.line_too_long();
                   }
               }}),
      clock_(Clock::of(loop)), pause_(loop), deafness_(loop) {
    socket_.native_non_blocking(true);
}

void Connection::finish() {
    ended_ = true;
    // What crossed the socket without its end mark is part of the traffic too.
    traffic_.received(framer_.unfinished());
    if (!queue_.empty()) {
        traffic_.sent(std::string_view(queue_.front().bytes).substr(0, front_written_));
    }
    queue_.clear();
    pause_.stop();
    deafness_.stop();
    asio::error_code ignored;
    socket_.close(ignored);
}

void Connection::start() {
    await_input();
}

void Connection::hold(bool on) {
    held_ = on;
    if (!on) {
        flush();
        await_input();
    }
}

void Connection::await_input() {
    if (awaiting_input_ || ended_ || held_ || deaf_ || is_congested()) {
        return;
    }
    awaiting_input_ = true;
    socket_.async_wait(Socket::wait_read, [self = shared_from_this()](const asio::error_code& error) {
        if (error) {
            self->awaiting_input_ = false;
            return;
        }
        self->clock_.take_turn(Clock::Turn::Command, [self] {
            self->awaiting_input_ = false;
            if (!self->ended_ && !self->held_ && !self->deaf_) {
                self->read_some();
            }
        });
    });
}

void Connection::read_some() {
    std::array<char, 4096> chunk{};
    const ssize_t count = recv(socket_.native_handle(), chunk.data(), chunk.size(), 0);
    if (count > 0) {
        framer_.feed({chunk.data(), static_cast<size_t>(count)});
    } else if (count == 0 || !would_block(errno)) {
        ended_ = true;
        listener_.gone();
    }
    await_input();
}

void Connection::add(Item item) {
    queued_bytes_ += item.bytes.size();
    queue_.push_back(std::move(item));
    flush();
}

void Connection::send(std::string bytes) {
    add({std::move(bytes), {}, {}});
}

void Connection::send_descriptor(UniqueFd fd, UniqueFd second) {
    add({std::string(1, '\0'), std::move(fd), {}, std::move(second)});
}

void Connection::pause(std::chrono::milliseconds duration) {
    add({{}, {}, duration});
}

void Connection::be_deaf(std::chrono::milliseconds duration) {
    deaf_ = true;
    deafness_.start(duration, [this] {
        deaf_ = false;
        await_input();
    });
}

bool Connection::is_congested() const {
    return queued_bytes_ > kHighWater;
}

long Connection::write_front() {
    const Item& item = queue_.front();
    const std::string_view rest = std::string_view(item.bytes).substr(front_written_);
    if (item.fd) {
        return send_with_descriptors(socket_.native_handle(), rest, item.fd.get(), item.second.get());
    }
    return ::send(socket_.native_handle(), rest.data(), rest.size(), MSG_NOSIGNAL);
}

void Connection::front_sent() {
    const Item& item = queue_.front();
    if (item.fd) {
        traffic_.sent_descriptor(item.bytes);
    } else {
        traffic_.sent(item.bytes);
    }
    queued_bytes_ -= item.bytes.size();
    front_written_ = 0;
    queue_.pop_front();
}

bool Connection::begin_pause() {
    const std::chrono::milliseconds duration = queue_.front().pause;
    if (duration.count() == 0) {
        return false;
    }
    queue_.pop_front();
    pausing_ = true;
    pause_.start(duration, [this] {
        pausing_ = false;
        flush();
        await_input();
    });
    return true;
}

void Connection::await_output() {
    awaiting_output_ = true;
    socket_.async_wait(Socket::wait_write, [self = shared_from_this()](const asio::error_code& error) {
        self->awaiting_output_ = false;
        if (!error) {
            self->flush();
            self->await_input();
        }
    });
}

void Connection::flush() {
    if (awaiting_output_ || pausing_ || ended_ || held_) {
        return;
    }
    while (!queue_.empty() && !output_broken_) {
        if (begin_pause()) {
            return;
        }
        const long count = write_front();
        if (count >= 0) {
            front_written_ += static_cast<size_t>(count);
            if (front_written_ == queue_.front().bytes.size()) {
                front_sent();
            }
        } else if (would_block(errno)) {
            await_output();
            return;
        } else {
            output_broken_ = true;
        }
    }
    if (output_broken_) {
        // The client is dying. Its last commands still count: reading goes on until its end.
        queue_.clear();
        queued_bytes_ = front_written_ = 0;
    }
}

} // namespace sim
