// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "server.h"

#include "described.h"
#include "modules.h"

#include <algorithm>
#include <asio/post.hpp>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>

namespace sim {
namespace {

std::string reason(int error) {
    return std::generic_category().message(error);
}

/// Whether a server accepts connections at this path.
bool is_alive(const std::string& path) {
    const UniqueFd probe(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    // EAGAIN: alive, with a full queue of clients.
    return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
           errno == EAGAIN;
}

std::string socket_path(const std::string& dir) {
    struct stat info {};
    if (stat(dir.c_str(), &info) != 0) {
        throw StartError("cannot use directory \"" + dir + "\": " + reason(errno) +
                         "; create it first");
    }
    if (!S_ISDIR(info.st_mode)) {
        throw StartError(dir + " is not a directory; give the directory that the socket is to lie in");
    }
    std::string path = dir + "/vym_socket";
    constexpr size_t kLongest = sizeof(sockaddr_un::sun_path) - 1;
    if (path.size() > kLongest) {
        throw StartError("the path " + path + " has " + std::to_string(path.size()) +
                         " characters, a socket's path has at most " + std::to_string(kLongest) +
                         "; use a shorter directory");
    }
    return path;
}

/// Makes the path free: what a killed server left behind is removed, anything else is not touched.
void clear_path(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        return;
    }
    if (!S_ISSOCK(info.st_mode)) {
        throw StartError(path + " exists and is no socket; move it away");
    }
    if (is_alive(path)) {
        throw StartError("another server is listening on " + path +
                         "; stop it or use another directory");
    }
    if (unlink(path.c_str()) != 0) {
        throw StartError("cannot remove the left-over socket " + path + ": " + reason(errno));
    }
}

UniqueFd spare_descriptor() {
    return UniqueFd(open("/dev/null", O_RDWR | O_CLOEXEC));
}

std::string free_socket_path(const std::string& dir) {
    std::string path = socket_path(dir);
    clear_path(path);
    return path;
}

} // namespace

Server::Server(asio::io_context& loop, World world, Options options, std::ostream& log)
    : loop_(loop), options_(std::move(options)), world_(std::move(world)), log_(options_.log, log),
      path_(free_socket_path(options_.dir)),
      traffic_(options_.traffic_file), hub_{loop_, world_, *this, log_, options_.pace,
                                            {},    {},     {},    {},   Chance(options_.seed)},
      dispatcher_(log_), control_(loop_, world_, [this] { return is_client_here(); }), acceptor_(loop_),
      stall_(loop_) {
    if (options_.evil) {
        evil_.emplace(*options_.evil);
    }
    start_clock();
    hub_.radio_on = [this] {
        for (const auto& module : modules_) {
            module->radio_on();
        }
    };
    hub_.radio_off = [this] {
        for (const auto& module : modules_) {
            module->radio_off();
        }
    };
    hub_.link_down = [this](const Address& address) {
        for (const auto& module : modules_) {
            module->link_down(address);
        }
    };
    hub_.device_back = [this](const Address& address) {
        for (const auto& module : modules_) {
            module->device_back(address);
        }
    };
    if (options_.replay_file.empty()) {
        play_world();
    } else {
        read_replay();
    }
    control_.add(verbs());
    read_script();
    try {
        acceptor_.open();
        acceptor_.bind(path_);
        acceptor_.listen();
    } catch (const std::system_error& error) {
        throw StartError("cannot listen on " + path_ + ": " + error.code().message());
    }
    struct stat info {};
    if (stat(path_.c_str(), &info) == 0) {
        device_ = info.st_dev;
        inode_ = info.st_ino;
    }
    accept();
    open_control();
    start_script();
}

Server::~Server() {
    drop_client();
    remove_socket();
}

void Server::start_clock() {
    Clock& clock = Clock::of(loop_);
    if (options_.virtual_time) {
        Clock::Conditions conditions;
        conditions.is_quiet = [this] { return !is_client_here() || client_threads_->all_wait(); };
        // While nobody is here the world waits, or a client would find another one each time it comes;
        // but a script may let time pass.
        conditions.may_time_pass = [this] { return is_client_here() || control_.is_pausing(); };
        clock.make_virtual(std::move(conditions));
    }
    if (!options_.transcript_file.empty()) {
        transcript_.emplace(options_.transcript_file, clock);
        log_.record_with([this](std::string_view line) { transcript_->add(line); });
    }
    control_.on_order([this](const std::string& line) { log_.order(line); });
}

void Server::play_world() {
    modules_ = make_modules(hub_);
    for (const auto& module : modules_) {
        dispatcher_.add(module->commands());
        control_.add(module->verbs());
    }
}

void Server::read_replay() {
    Outbox& out = *this;
    const auto end = [this](int code) {
        result_ = code;
        stop_soon();
    };
    replay_ =
        std::make_unique<Replay>(loop_, options_.replay_file, options_.replay_grace, out, log_, end);
}

void Server::remove_socket() {
    struct stat info {};
    if (inode_ != 0 && lstat(path_.c_str(), &info) == 0 && info.st_dev == device_ &&
        info.st_ino == inode_) {
        unlink(path_.c_str());
    }
    inode_ = 0;
}

void Server::stop() {
    asio::error_code ignored;
    acceptor_.close(ignored);
    remove_socket();
    control_socket_.reset();
    drop_client();
    loop_.stop();
}

void Server::stop_soon() {
    // A command may be at work, and its client is to be closed.
    in_turn([this] { asio::post(loop_, [this] { stop(); }); });
}

void Server::accept() {
    acceptor_.async_accept([this](const asio::error_code& error, Connection::Socket socket) {
        if (!error) {
            serve(std::move(socket));
        } else if (acceptor_.is_open()) {
            log_.problem("cannot accept a client: " + error.message());
            accept();
        }
    });
}

void Server::serve(Connection::Socket socket) {
    log_.note("client connected");
    Connection::Listener listener;
    listener.line = [this](std::string_view line) {
        with_client(Clock::Turn::Command, [this, text = std::string(line)] {
            if (!closing_) {
                received(text);
            }
        });
    };
    listener.line_too_long = [this] { log_.problem("a line is longer than any command, ignored"); };
    listener.gone = [this] { with_client(Clock::Turn::Command, [this] { client_gone(); }); };
    client_threads_.emplace(socket.native_handle());
    client_ = std::make_shared<Connection>(loop_, std::move(socket), traffic_, std::move(listener));
    client_->hold(stalled_);
    client_->start();
    if (replay_) {
        replay_->client_came();
    }
    control_.look();
}

void Server::count_message() {
    ++messages_;
    if (messages_ == options_.kill_after) {
        log_.note("killed");
        static_cast<void>(std::raise(SIGKILL));
    }
    if (messages_ == options_.stall_after) {
        log_.note("stalls for good");
        stalled_ = true;
        client_->hold(true);
    }
}

void Server::received(std::string_view line) {
    control_.command_came(line);
    count_message();
    misbehave_at(line);
    if (closing_) {
        // The client has sent more than what it was closed at.
    } else if (replay_) {
        replay_->received(line);
    } else {
        dispatcher_.run(line);
    }
    // What waited for this command goes on before the next one is looked at.
    control_.look();
}

void Server::drop_client() {
    if (client_) {
        client_->finish();
        client_.reset();
    }
    if (evil_) {
        evil_->client_left();
    }
    closing_ = false;
}

void Server::client_gone() {
    // Before the modules are told: what they still send has nobody to read it.
    drop_client();
    for (const auto& module : modules_) {
        module->client_left();
    }
    log_.note("client left");
    if (replay_) {
        replay_->client_left();
    }
    accept();
    control_.look();
}

void Server::send(const Event& event) {
    if (client_) {
        send_in_turn(event, UniqueFd());
    }
}

void Server::hand_over(uint8_t id, UniqueFd fd) {
    if (client_) {
        const Event event = Event("PD").byte(id).dword(static_cast<uint32_t>(fd.get()));
        send_in_turn(event, std::move(fd));
    }
}

void Server::send_in_turn(const Event& event, UniqueFd fd) {
    // A function can be copied, a descriptor not.
    const auto shared = std::make_shared<UniqueFd>(std::move(fd));
    with_client(Clock::Turn::Event, [this, event, shared] {
        tell(event, static_cast<bool>(*shared));
        deliver(event, std::move(*shared));
        count_message();
    });
}

void Server::in_turn(std::function<void()> function) {
    Clock::of(loop_).take_turn(Clock::Turn::Event, std::move(function));
}

void Server::with_client(Clock::Turn turn, std::function<void()> function) {
    Clock::of(loop_).take_turn(turn, [this, f = std::move(function), client = std::weak_ptr(client_)] {
        if (client_ && client.lock() == client_) {
            f();
        }
    });
}

void Server::tell(const Event& event, bool has_descriptor) {
    if (log_.shows_traffic()) {
        log_.event(described(protocol::Direction::Event, event.bytes()));
        if (has_descriptor) {
            log_.event("descriptor");
        }
    }
    control_.event_sent(event.bytes());
}

void Server::deliver(const Event& event, UniqueFd fd) {
    if (!evil_) {
        client_->send(event.bytes() + '\0');
        if (fd) {
            client_->send_descriptor(std::move(fd));
        }
        return;
    }
    // How much is still on its way to a client that is being dropped depends on the moment.
    if (is_client_here()) {
        carry_out(evil_->on_event(event.bytes(), static_cast<bool>(fd)), fd);
    }
}

void Server::misbehave_at(std::string_view line) {
    constexpr std::string_view kPrefix = "AT#";
    if (evil_) {
        UniqueFd none;
        carry_out(evil_->on_command(line.substr(std::min(line.size(), kPrefix.size()))), none);
    }
}

void Server::carry_out(const Deeds& deeds, UniqueFd& fd) {
    if (!deeds.report.empty()) {
        log_.misdeed(deeds.report);
    }
    for (const Deed& deed : deeds.all) {
        if (is_client_here()) {
            carry_out(deed, fd);
        }
    }
}

void Server::carry_out(const Deed& deed, UniqueFd& fd) {
    switch (deed.what) {
    case Deed::What::Write:
        client_->send(deed.bytes);
        break;
    case Deed::What::Descriptor:
        client_->send_descriptor(std::move(fd));
        break;
    case Deed::What::Spare:
        client_->send_descriptor(spare_descriptor());
        break;
    case Deed::What::Both:
        client_->send_descriptor(std::move(fd), spare_descriptor());
        break;
    case Deed::What::Pause:
        client_->pause(deed.duration);
        break;
    case Deed::What::Deafness:
        client_->be_deaf(deed.duration);
        break;
    case Deed::What::Close:
        close_soon();
        break;
    }
}

} // namespace sim
