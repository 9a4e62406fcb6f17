// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "replay.h"

#include "described.h"
#include "transport.h"

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <memory>
#include <optional>

namespace sim {
namespace {

// Threads of a client may send, and record, their commands in another order: that many may be ahead.
constexpr int kWindow = 8;
constexpr int kTransportBuffer = 64 * 1024;
constexpr std::string_view kTransport = "PD";

/// Our end of a data transport, until the client closes its own: a client must not block on it.
class Sink : public std::enable_shared_from_this<Sink> {
public:
    Sink(asio::io_context& loop, UniqueFd fd) : fd_(loop, fd.release()) {}

    void read() {
        fd_.async_read_some(asio::buffer(buffer_),
                            [self = shared_from_this()](const asio::error_code& error, size_t) {
                                if (!error) {
                                    self->read();
                                }
                            });
    }

private:
    asio::posix::stream_descriptor fd_;
    std::array<char, 4096> buffer_{};
};

/// The text of a command behind its "AT#" and without its end.
std::string_view body(std::string_view line) {
    constexpr std::string_view kStart = "AT#";
    line.remove_suffix(2);
    return line.substr(0, kStart.size()) == kStart ? line.substr(kStart.size()) : line;
}

std::string shown(std::string_view line) {
    return described(protocol::Direction::Command, body(line));
}

/// Which transport an event announces, if it does.
std::optional<uint8_t> transport_in(std::string_view event) {
    constexpr size_t kLength = 10;
    if (event.size() < kLength || event.substr(0, kTransport.size()) != kTransport) {
        return std::nullopt;
    }
    try {
        return Fields(event.substr(kTransport.size())).byte("transport");
    } catch (const BadCommand&) {
        return std::nullopt;
    }
}

} // namespace

Replay::Replay(asio::io_context& loop, const std::string& path, Outbox& out, Log& log,
               std::function<void(int code)> end)
    : loop_(loop), path_(path), out_(out), log_(log), end_(std::move(end)) {
    for (CapturedText& captured : read_capture(path)) {
        steps_.push_back({std::move(captured)});
    }
}

void Replay::received(std::string_view line) {
    if (ended_) {
        return;
    }
    if (log_.shows_traffic()) {
        log_.command(shown(line));
    }
    if (take(line)) {
        send_what_is_due();
    } else {
        differ(line, "came " + shown(line));
        finish(1);
    }
}

bool Replay::take(std::string_view line) {
    int looked_at = 0;
    for (size_t i = next_; i < steps_.size() && looked_at < kWindow; ++i) {
        Step& step = steps_[i];
        if (!step.captured.is_command || step.done) {
            continue;
        }
        ++looked_at;
        if (step.captured.text == line) {
            step.done = true;
            return true;
        }
    }
    return false;
}

void Replay::send_what_is_due() {
    for (; next_ < steps_.size(); ++next_) {
        const Step& step = steps_[next_];
        if (!step.captured.is_command) {
            send(step.captured.text);
        } else if (!step.done) {
            return;
        }
    }
}

void Replay::send(const std::string& event) {
    const std::optional<uint8_t> transport = transport_in(event);
    if (!transport) {
        out_.send(Event(event));
        return;
    }
    TransportPair pair = make_transport(log_, "a recorded transport", kTransportBuffer);
    if (pair) {
        std::make_shared<Sink>(loop_, std::move(pair.ours))->read();
        out_.hand_over(*transport, std::move(pair.clients));
    }
}

void Replay::differ(std::string_view line, const std::string& came) {
    if (next_ == steps_.size()) {
        log_.failure(path_ + ": behind the last record: expected no command, " + came);
        return;
    }
    const CapturedText& captured = steps_[next_].captured;
    std::string text = path_ + ": record " + std::to_string(captured.record) + ": expected " +
                       shown(captured.text) + ", " + came;
    if (!line.empty() && shown(captured.text) == shown(line)) {
        // The difference is in what a long value's line does not show.
        const auto [ours, theirs] =
            std::mismatch(captured.text.begin(), captured.text.end(), line.begin(), line.end());
        static_cast<void>(theirs);
        text +=
            " (they differ from character " + std::to_string(ours - captured.text.begin() + 1) + " on)";
    }
    log_.failure(text);
}

void Replay::client_left() {
    if (ended_) {
        return;
    }
    const bool whole = next_ == steps_.size();
    if (!whole) {
        differ({}, "but the client left");
    }
    finish(whole ? 0 : 1);
}

void Replay::finish(int code) {
    ended_ = true;
    end_(code);
}

} // namespace sim
