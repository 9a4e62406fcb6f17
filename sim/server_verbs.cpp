// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the server itself can be told to do, and the ways in which it is told.
#include "server.h"

#include <asio/post.hpp>
#include <cstdlib>
#include <system_error>

namespace sim {
namespace {

constexpr int kCrashed = 3;

} // namespace

std::vector<Verb> Server::verbs() {
    const auto verb = [this](const char* pattern, const char* help, void (Server::*handler)(Given&)) {
        return Verb{pattern, help, [this, handler](Given& given) { (this->*handler)(given); }};
    };
    return {
        verb("server crash", "end at once, without cleaning up (exit code 3)", &Server::crash),
        verb("server stall SECONDS", "let nothing cross the socket for that long", &Server::stall),
        verb("server close", "drop the client", &Server::close_client),
        verb("event TEXT", "send these characters (\\xNN for any byte) and the NUL of an event",
             &Server::send_raw),
        {"log TEXT", "write a line to standard error",
         [this](Given& given) { log_.words(printable(given.text(0), 400)); }, false},
        {"exit [CODE=0..255]", "end the server with this exit code, or 0",
         [this](Given& given) { end(given); }, false},
    };
}

void Server::crash(Given& given) {
    given.afterwards([this] { in_turn([] { std::_Exit(kCrashed); }); });
}

void Server::end(Given& given) {
    const int code = given.has(0) ? given.number<int>(0) : 0;
    given.afterwards([this, code] {
        result_ = code;
        stop_soon();
    });
}

void Server::stall(Given& given) {
    stalled_ = true;
    if (client_) {
        client_->hold(true);
    }
    stall_.start(given.duration(0), [this] {
        stalled_ = false;
        if (client_) {
            client_->hold(false);
        }
    });
}

void Server::close_client(Given& given) {
    static_cast<void>(given);
    if (!is_client_here()) {
        throw Refused("no client is connected");
    }
    with_client(Clock::Turn::Event, [this] { close_soon(); });
}

void Server::close_soon() {
    closing_ = true;
    client_->cut();
    // It may be in the middle of handing over commands.
    asio::post(loop_, [this, client = client_] {
        if (client == client_) {
            client_gone();
        }
    });
}

void Server::send_raw(Given& given) {
    if (!is_client_here()) {
        throw Refused("no client is connected");
    }
    with_client(Clock::Turn::Event, [this, text = given.text(0)] {
        log_.event("raw \"" + printable(text) + '"');
        control_.event_sent(text);
        client_->send(text + '\0');
    });
}

void Server::open_control() {
    try {
        control_socket_ =
            std::make_unique<ControlSocket>(loop_, control_, options_.dir + ControlSocket::kName);
    } catch (const std::system_error& error) {
        // Its name is a little longer than that of the clients' socket: not worth a refusal.
        log_.problem("no control socket " + options_.dir + ControlSocket::kName + ": " +
                     error.code().message());
    }
}

void Server::read_script() {
    if (!options_.script_file.empty()) {
        script_ = std::make_unique<Script>(control_, options_.script_file,
                                           sim::read_script(options_.script_file));
    }
}

void Server::start_script() {
    if (!script_) {
        return;
    }
    Script::Listener listener;
    listener.answer = [this](const std::string& line) { log_.words(line); };
    listener.failure = [this](const std::string& line) { log_.failure(line); };
    listener.end = [this](bool good) {
        result_ = good ? 0 : 1;
        if (!good || !options_.stay) {
            stop_soon();
        }
    };
    asio::post(loop_, [this, listener] { script_->start(listener); });
}

} // namespace sim
