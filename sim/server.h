// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulated server: its socket, the client that it serves, and the modules that play the world.
#ifndef VYM_SIM_SERVER_H
#define VYM_SIM_SERVER_H

#include "client_threads.h"
#include "connection.h"
#include "control.h"
#include "control_socket.h"
#include "dispatcher.h"
#include "evil.h"
#include "module.h"
#include "replay.h"
#include "script.h"
#include "timer.h"
#include "traffic.h"
#include "transcript.h"
#include "world.h"

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <memory>
#include <optional>
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
    /// All that happens is recorded here, unless it is empty.
    std::string transcript_file;
    Pace pace;
    /// Time passes as fast as the client allows.
    bool virtual_time = false;
    /// None: what differs from one time to the next is always the same.
    std::optional<uint32_t> seed{};
    /// Carried out once the server listens, unless it is empty; "-" is standard input.
    std::string script_file;
    /// The server goes on when the script has come to its good end.
    bool stay = false;
    /// A capture whose server's side is played instead of the world, unless it is empty.
    std::string replay_file;
    std::chrono::milliseconds replay_grace = Replay::kGrace;
    /// None: the server behaves.
    std::optional<EvilOptions> evil{};
    /// After so many messages, commands and events counted together, the server is killed; 0 for never.
    unsigned kill_after = 0;
    /// The same, and it lives, but nothing crosses the socket any more.
    unsigned stall_after = 0;
};

/// Runs on the thread that runs the event loop; stop() is to be called there too.
class Server : private Outbox {
public:
    /// Listens at once. Throws StartError, ScriptError for a bad script, and FileError for a bad
    /// capture.
    Server(asio::io_context& loop, World world, Options options, std::ostream& log);
    ~Server() override;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    const std::string& path() const { return path_; }
    const World& world() const { return world_; }

    /// Closes everything, removes the sockets and ends the event loop.
    void stop();
    /// What the script or the replay ended with, or what the server was told to end with.
    int result() const { return result_; }
    Control& control() { return control_; }

private:
    void send(const Event& event) override;
    void hand_over(uint8_t id, UniqueFd fd) override;
    bool is_congested() const override { return client_ && client_->is_congested(); }

    void send_in_turn(const Event& event, UniqueFd fd);
    void tell(const Event& event, bool has_descriptor);
    void count_message();
    void deliver(const Event& event, UniqueFd fd);
    void misbehave_at(std::string_view line);
    void carry_out(const Deeds& deeds, UniqueFd& fd);
    void carry_out(const Deed& deed, UniqueFd& fd);

    void accept();
    void serve(Connection::Socket socket);
    void client_gone();
    void drop_client();
    void remove_socket();
    void received(std::string_view line);
    void start_clock();
    void read_replay();
    void play_world();

    // The language's verbs for the server itself, in server_verbs.cpp.
    std::vector<Verb> verbs();
    void close_client(Given& given);
    void close_soon();
    void stall(Given& given);
    void crash(Given& given);
    void send_raw(Given& given);
    void end(Given& given);
    /// Calls it when what has been sent is on its way.
    void in_turn(std::function<void()> function);
    /// Calls it in its turn, if the client is still the same then.
    void with_client(Clock::Turn turn, std::function<void()> function);
    void stop_soon();
    bool is_client_here() const { return client_ && !closing_; }
    void open_control();
    void read_script();
    void start_script();

    asio::io_context& loop_;
    Options options_;
    World world_;
    Log log_;
    std::string path_;
    Traffic traffic_;
    std::optional<Transcript> transcript_;
    Hub hub_;
    Dispatcher dispatcher_;
    std::vector<std::unique_ptr<Module>> modules_;
    Control control_;
    std::unique_ptr<Script> script_;
    /// There are no modules when there is one.
    std::unique_ptr<Replay> replay_;
    std::unique_ptr<ControlSocket> control_socket_;
    int result_ = 0;
    asio::local::stream_protocol::acceptor acceptor_;
    std::shared_ptr<Connection> client_;
    std::optional<ClientThreads> client_threads_;
    std::optional<Evil> evil_;
    /// The client is as good as gone.
    bool closing_ = false;
    /// Until the server is itself again.
    Timer stall_;
    bool stalled_ = false;
    unsigned messages_ = 0;
    /// Which file the socket is: another server may have put its own in the same place since.
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace sim

#endif
