// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A simulated server on a thread of its own, and a client that talks to it in literal bytes.
#ifndef VYM_TESTS_RUNNING_SIM_H
#define VYM_TESTS_RUNNING_SIM_H

#include "server.h"
#include "unique_fd.h"

#include <asio/io_context.hpp>
#include <deque>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// A directory that goes away with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// The whole content of a file; empty when there is none.
std::string content_of(const std::string& path);

/// A blocking client. Whatever does not come within ten seconds fails the test with an empty answer.
class TestClient {
public:
    explicit TestClient(const std::string& dir);

    void send(std::string_view bytes);
    /// The next event without its NUL. The 0x00 that carries a descriptor is not part of any event.
    std::string event();
    /// The next events, as many as asked for.
    std::vector<std::string> events(size_t count);
    /// The oldest descriptor that came; waits for one.
    sim::UniqueFd descriptor();
    /// Sends a command whose answer is known and returns every event that came before that answer: what
    /// an earlier command without an answer of its own has caused.
    std::vector<std::string> events_until_version();
    /// How many descriptors have come and were not taken.
    size_t descriptors_waiting() const { return descriptors_.size(); }
    int fd() const { return fd_.get(); }
    void close() { fd_.reset(); }

    /// Switches on, and takes what that brings: the audio descriptor is returned, the serial one kept.
    sim::UniqueFd enable();
    const sim::UniqueFd& serial() const { return serial_; }
    void close_serial() { serial_.reset(); }

private:
    bool receive();

    sim::UniqueFd fd_;
    std::string buffer_;
    std::deque<sim::UniqueFd> descriptors_;
    sim::UniqueFd serial_;
};

/// Reads exactly `count` bytes; shorter when the other end closes or ten seconds pass.
std::string read_exactly(int fd, size_t count);

/// Waits up to ten seconds for input or the end of the stream.
bool wait_readable(int fd);

class RunningSim {
public:
    /// The lines of a script are carried out when there are any. `evil`: as for the option.
    explicit RunningSim(sim::World world = sim::built_in_world(), sim::Pace pace = quick(),
                        const std::string& script = {}, bool stay = false,
                        const std::string& evil = {});
    ~RunningSim();
    RunningSim(const RunningSim&) = delete;
    RunningSim& operator=(const RunningSim&) = delete;

    /// Steps of a millisecond, and time-outs that do not strike by themselves.
    static sim::Pace quick();

    const std::string& dir() const { return dir_.path(); }
    TestClient client() const { return TestClient(dir_.path()); }
    std::string traffic() const { return content_of(dir_.file("traffic")); }

    /// Waits until the script has ended the server; what it ended with.
    int result();
    /// Ends the server; the world and the log may be looked at then.
    void stop();
    const sim::World& world() const { return server_->world(); }
    std::string log() const { return log_.str(); }

private:
    TemporaryDirectory dir_;
    std::ostringstream log_;
    asio::io_context loop_{1};
    std::unique_ptr<sim::Server> server_;
    std::thread thread_;
};

#endif
