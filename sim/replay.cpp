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

// The order of a capture is not quite that in which things happened. Each thread of the client records
// a command when it has sent it; the thread that receives records what it has read before it runs the
// application's callbacks. Therefore
// - whatever a command waits for is recorded before it. A client that does as it did can always send
//   its next command when all that was recorded before has happened, so no replay that goes by the
//   order of the capture comes to a standstill;
// - commands of two threads may have been sent in another order, and in a replay their threads run
//   ahead of each other in any case: a command is accepted before its turn. It may even be one of the
//   same kind, as when a callback asks on before the thread that asked first has recorded that;
// - an event may be recorded before the command that it answers, when the sender was held up between
//   sending and recording. Sent in that order it would come before the client is ready for it. Nothing
//   in the capture tells such an event from one that has caused the command. The client does: it sends
//   the command without the event. So an event that has outstanding commands close behind it waits
//   for them until the client has fallen silent: only then is it what the client waits for. Events of
//   one record were read at once, before the client could do anything about the first of them, and go
//   together.

// Outstanding commands among which the one that has come is looked for.
constexpr int kAhead = 32;
// As far behind its answer a command may be recorded. That is what other threads record, and the time
// that passes, while a thread that is ready to run does not run.
constexpr size_t kNearRecords = 8;
constexpr std::chrono::seconds kNearTime{1};

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

/// Negative when the clock was set back. Wraps around, for the times of a damaged capture.
std::chrono::microseconds between(const CapturedText& first, const CapturedText& second) {
    return std::chrono::microseconds(static_cast<int64_t>(static_cast<uint64_t>(second.time_us) -
                                                          static_cast<uint64_t>(first.time_us)));
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

Replay::Replay(asio::io_context& loop, const std::string& path, std::chrono::milliseconds grace,
               Outbox& out, Log& log, std::function<void(int code)> end)
    : loop_(loop), path_(path), grace_(grace), out_(out), log_(log), end_(std::move(end)),
      silence_(loop) {
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
        go_on();
    } else {
        differ(line, "came " + shown(line));
        finish(1);
    }
}

bool Replay::take(std::string_view line) {
    int looked_at = 0;
    for (size_t i = next_; i < steps_.size() && looked_at < kAhead; ++i) {
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

void Replay::go_on() {
    silence_.stop();
    for (; next_ < steps_.size(); ++next_) {
        const Step& step = steps_[next_];
        if (step.captured.is_command) {
            if (!step.done) {
                return;
            }
        } else if (step.captured.record != released_record_ && may_be_an_answer(next_)) {
            wait_for_silence();
            return;
        } else {
            send(step.captured.text);
        }
    }
}

/// Whether there are outstanding commands so close behind it that they may have been sent before it.
bool Replay::may_be_an_answer(size_t event) const {
    const CapturedText& answer = steps_[event].captured;
    for (size_t i = event + 1; i < steps_.size(); ++i) {
        const Step& step = steps_[i];
        if (step.captured.record - answer.record > kNearRecords ||
            between(answer, step.captured) > kNearTime) {
            return false;
        }
        if (step.captured.is_command && !step.done) {
            return true;
        }
    }
    return false;
}

void Replay::wait_for_silence() {
    silence_.start(pause_before(next_) + grace_, [this] {
        released_record_ = steps_[next_].captured.record;
        go_on();
    });
}

/// The time that the client had in the recording to send a command, as far as it matters.
std::chrono::milliseconds Replay::pause_before(size_t index) const {
    if (index == 0) {
        return kNearTime; // nobody knows when the client had connected
    }
    const std::chrono::microseconds pause = between(steps_[index - 1].captured, steps_[index].captured);
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::clamp<std::chrono::microseconds>(pause, std::chrono::microseconds(0), kNearTime));
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

/// The first command that is outstanding; past the last step when there is none.
size_t Replay::expected() const {
    size_t i = next_;
    while (i < steps_.size() && !(steps_[i].captured.is_command && !steps_[i].done)) {
        ++i;
    }
    return i;
}

void Replay::differ(std::string_view line, const std::string& came) {
    const size_t index = expected();
    if (index == steps_.size()) {
        log_.failure(path_ + ": behind the last record: expected no command, " + came);
        return;
    }
    const CapturedText& captured = steps_[index].captured;
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
    log_.failure(text + taken_before(index));
}

/// That a later command has come may be the very mistake.
std::string Replay::taken_before(size_t index) const {
    for (size_t i = index + 1; i < steps_.size(); ++i) {
        if (steps_[i].captured.is_command && steps_[i].done) {
            return "; already here: record " + std::to_string(steps_[i].captured.record) + ", " +
                   shown(steps_[i].captured.text);
        }
    }
    return {};
}

void Replay::client_left() {
    if (ended_) {
        return;
    }
    const bool whole = expected() == steps_.size();
    if (!whole) {
        differ({}, "but the client left");
    }
    finish(whole ? 0 : 1);
}

void Replay::finish(int code) {
    ended_ = true;
    silence_.stop();
    end_(code);
}

} // namespace sim
