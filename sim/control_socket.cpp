// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "control_socket.h"

#include <algorithm>
#include <array>
#include <asio/write.hpp>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sim {

class ControlSocket::Client : public std::enable_shared_from_this<Client> {
public:
    using Socket = asio::local::stream_protocol::socket;

    Client(Socket socket, Control& control)
        : socket_(std::move(socket)), control_(control),
          session_(control.open_session(control.desk())) {}

    void start() { read(); }

    void close() {
        closed_ = true;
        session_->cancel();
        asio::error_code ignored;
        socket_.close(ignored);
    }

private:
    void read() {
        if (reading_ || at_end_ || closed_ || input_.size() > kLongest) {
            return;
        }
        reading_ = true;
        socket_.async_read_some(asio::buffer(chunk_), [self = shared_from_this()](
                                                          const asio::error_code& error, size_t count) {
            self->reading_ = false;
            self->received(error, count);
        });
    }

    void received(const asio::error_code& error, size_t count) {
        if (closed_) {
            return;
        }
        input_.append(chunk_.data(), count);
        at_end_ = static_cast<bool>(error);
        if (at_end_ && is_hung_up()) {
            // Nobody is left to hear of it.
            close();
            return;
        }
        go_on();
        read();
    }

    /// Not so for a client that has only said everything it wants to say.
    bool is_hung_up() {
        pollfd entry{socket_.native_handle(), 0, 0};
        return poll(&entry, 1, 0) == 1 && (entry.revents & (POLLHUP | POLLERR)) != 0;
    }

    void go_on() {
        if (busy_ || closed_) {
            return;
        }
        size_t end = input_.find('\n');
        if (end == std::string::npos && input_.size() > kLongest) {
            at_end_ = true;
            input_.clear();
            answer({"the line is longer than " + std::to_string(kLongest) + " characters", {}, {}});
            return;
        }
        if (end == std::string::npos && at_end_) {
            if (input_.empty()) {
                close();
                return;
            }
            end = input_.size();
        }
        if (end != std::string::npos) {
            const std::string line = input_.substr(0, end);
            input_.erase(0, end + 1);
            carry_out(line);
        }
    }

    void carry_out(const std::string& line) {
        busy_ = true;
        try {
            std::optional<Step> step = control_.parse(line);
            if (!step) {
                answer({});
                return;
            }
            std::optional<Result> result =
                session_->run(std::move(*step), [self = weak_from_this()](Result later) {
                    if (const std::shared_ptr<Client> client = self.lock()) {
                        client->answer(std::move(later));
                    }
                });
            if (result) {
                answer(std::move(*result));
            }
        } catch (const Refused& error) {
            answer({error.what(), {}, {}});
        }
    }

    void answer(Result result) {
        busy_ = true;
        output_.clear();
        for (const std::string& line : result.lines) {
            output_ += line + '\n';
        }
        output_ += result.problem.empty() ? "ok\n" : "error: " + result.problem + '\n';
        asio::async_write(socket_, asio::buffer(output_),
                          [self = shared_from_this(),
                           then = std::move(result.afterwards)](const asio::error_code& error, size_t) {
                              self->busy_ = false;
                              if (then) {
                                  then();
                              }
                              if (error) {
                                  self->close();
                              }
                              self->go_on();
                              self->read();
                          });
    }

    Socket socket_;
    Control& control_;
    std::shared_ptr<Session> session_;
    std::array<char, 4096> chunk_{};
    std::string input_;
    std::string output_;
    bool reading_ = false;
    /// A line is being carried out, or its answer is on its way.
    bool busy_ = false;
    bool at_end_ = false;
    bool closed_ = false;
};

ControlSocket::ControlSocket(asio::io_context& loop, Control& control, std::string path)
    : control_(control), path_(std::move(path)), acceptor_(loop) {
    struct stat info {};
    if (lstat(path_.c_str(), &info) == 0 && S_ISSOCK(info.st_mode)) {
        unlink(path_.c_str());
    }
    acceptor_.open();
    acceptor_.bind(path_);
    acceptor_.listen();
    accept();
}

ControlSocket::~ControlSocket() {
    for (const std::weak_ptr<Client>& weak : clients_) {
        if (const std::shared_ptr<Client> client = weak.lock()) {
            client->close();
        }
    }
    unlink(path_.c_str());
}

void ControlSocket::accept() {
    acceptor_.async_accept([this](const asio::error_code& error, Client::Socket socket) {
        if (error) {
            return;
        }
        clients_.erase(std::remove_if(clients_.begin(), clients_.end(),
                                      [](const auto& client) { return client.expired(); }),
                       clients_.end());
        auto client = std::make_shared<Client>(std::move(socket), control_);
        clients_.push_back(client);
        client->start();
        accept();
    });
}

} // namespace sim
