// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server's side of a recorded conversation, instead of a world.
#ifndef VYM_SIM_REPLAY_H
#define VYM_SIM_REPLAY_H

#include "capture.h"
#include "module.h"

#include <asio/io_context.hpp>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// Sends each recorded event once the client has sent all commands that were recorded before it. A data
/// transport is announced as it was, with a descriptor that takes everything and stays silent.
class Replay {
public:
    /// `end` is called once, with the exit code: 0 when the client left after the last step, 1 when it
    /// did something else than recorded; the log says what.
    /// Throws FileError for what is no capture, and for one that is cut off.
    Replay(asio::io_context& loop, const std::string& path, Outbox& out, Log& log,
           std::function<void(int code)> end);

    void client_came() { send_what_is_due(); }
    void received(std::string_view line);
    void client_left();

private:
    struct Step {
        CapturedText captured;
        bool done = false;
    };

    bool take(std::string_view line);
    void send_what_is_due();
    void send(const std::string& event);
    void differ(std::string_view line, const std::string& came);
    void finish(int code);

    asio::io_context& loop_;
    std::string path_;
    Outbox& out_;
    Log& log_;
    std::function<void(int)> end_;
    std::vector<Step> steps_;
    /// The first step that is not done.
    size_t next_ = 0;
    bool ended_ = false;
};

} // namespace sim

#endif
