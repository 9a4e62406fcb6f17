// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server's side of a recorded conversation, instead of a world.
#ifndef VYM_SIM_REPLAY_H
#define VYM_SIM_REPLAY_H

#include "capture.h"
#include "module.h"
#include "timer.h"

#include <asio/io_context.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// Sends each recorded event once the client has sent all commands that were recorded before it, and
/// not before the command that it may answer, see replay.cpp. A data transport is announced as it was,
/// with a descriptor that takes everything and stays silent.
class Replay {
public:
    /// How long a client that waits for nothing takes at most to send its next command, beyond the time
    /// that it took in the recording.
    static constexpr std::chrono::milliseconds kGrace{100};

    /// `end` is called once, with the exit code: 0 when the client left after the last step, 1 when it
    /// did something else than recorded; the log says what.
    /// Throws FileError for what is no capture, and for one that is cut off.
    Replay(asio::io_context& loop, const std::string& path, std::chrono::milliseconds grace,
           Outbox& out, Log& log, std::function<void(int code)> end);

    void client_came() { go_on(); }
    void received(std::string_view line);
    void client_left();

private:
    struct Step {
        CapturedText captured;
        bool done = false;
    };

    bool take(std::string_view line);
    void go_on();
    bool may_be_an_answer(size_t event) const;
    void wait_for_silence();
    std::chrono::milliseconds pause_before(size_t index) const;
    void send(const std::string& event);
    size_t expected() const;
    std::string taken_before(size_t index) const;
    void differ(std::string_view line, const std::string& came);
    void finish(int code);

    asio::io_context& loop_;
    std::string path_;
    std::chrono::milliseconds grace_;
    Outbox& out_;
    Log& log_;
    std::function<void(int)> end_;
    std::vector<Step> steps_;
    /// The first step that is not done.
    size_t next_ = 0;
    /// The events of this record wait no longer.
    uint64_t released_record_ = 0;
    Timer silence_;
    bool ended_ = false;
};

} // namespace sim

#endif
