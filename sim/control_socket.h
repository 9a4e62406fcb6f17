// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// DIR/vym_control: the control language for other programs. One line in; the lines of the answer and
// "ok" or "error: ..." out. Lines are carried out one after the other, clients side by side.
#ifndef VYM_SIM_CONTROL_SOCKET_H
#define VYM_SIM_CONTROL_SOCKET_H

#include "control.h"

#include <asio/local/stream_protocol.hpp>
#include <memory>
#include <string>
#include <vector>

namespace sim {

class ControlSocket {
public:
    /// The longest line, and the most that is read ahead of a client's own answers.
    static constexpr size_t kLongest = size_t{64} * 1024;
    static constexpr const char* kName = "/vym_control";

    /// Listens; a socket that is there already is taken to be left over. Throws std::system_error.
    ControlSocket(asio::io_context& loop, Control& control, std::string path);
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

private:
    class Client;

    void accept();

    Control& control_;
    std::string path_;
    asio::local::stream_protocol::acceptor acceptor_;
    std::vector<std::weak_ptr<Client>> clients_;
};

/// What "vym-sim ctl" does: sends a line to the simulator of this directory and prints the answer.
/// Returns the program's exit code: 0 done, 1 refused or failed, 2 no line, 3 no simulator there.
int send_to_control(const std::string& dir, const std::vector<std::string>& words);

} // namespace sim

#endif
