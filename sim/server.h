// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulated server: its socket, the client that it serves, and the modules that play the world.
#ifndef VYM_SIM_SERVER_H
#define VYM_SIM_SERVER_H

#include "connection.h"
#include "dispatcher.h"
#include "module.h"
#include "traffic.h"
#include "world.h"

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sim {

/// The server cannot start; the text is one line that says why and what to do.
class StartError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Options {
    std::string dir;
    LogLevel log = LogLevel::Problems;
    /// No traffic is recorded when empty.
    std::string traffic_file;
    Pace pace;
};

/// Runs on the thread that runs the event loop; stop() is to be called there too.
class Server : private Outbox {
public:
    /// Listens at once. Throws StartError.
    Server(asio::io_context& loop, World world, Options options, std::ostream& log);
    ~Server() override;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    const std::string& path() const { return path_; }
    const World& world() const { return world_; }

    /// Closes everything, removes the socket and ends the event loop.
    void stop();

private:
    void send(const Event& event) override;
    void hand_over(uint8_t id, UniqueFd fd) override;
    bool is_congested() const override { return client_ && client_->is_congested(); }

    void accept();
    void serve(Connection::Socket socket);
    void client_gone();
    void drop_client();
    void remove_socket();

    asio::io_context& loop_;
    Options options_;
    World world_;
    Log log_;
    std::string path_;
    Traffic traffic_;
    Hub hub_;
    Dispatcher dispatcher_;
    std::vector<std::unique_ptr<Module>> modules_;
    asio::local::stream_protocol::acceptor acceptor_;
    std::shared_ptr<Connection> client_;
    /// Which file the socket is: another server may have put its own in the same place since.
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace sim

#endif
