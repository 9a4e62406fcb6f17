// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A client of the control socket.
#ifndef VYM_TESTS_CONTROL_CLIENT_H
#define VYM_TESTS_CONTROL_CLIENT_H

#include "running_sim.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

class ControlClient {
public:
    explicit ControlClient(const std::string& dir)
        : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = dir + "/vym_control";
        std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
        EXPECT_EQ(connect(fd_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
            << path << ": " << std::strerror(errno);
    }

    void say(const std::string& text) {
        std::string_view rest = text;
        while (!rest.empty()) {
            const ssize_t count = ::send(fd_.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
            if (count < 0) {
                return; // the server has closed; what it answered can be read
            }
            rest.remove_prefix(static_cast<size_t>(count));
        }
    }

    /// A line without its end; empty at the end.
    std::string line() {
        std::string text;
        for (std::string c = read_exactly(fd_.get(), 1); !c.empty() && c != "\n";
             c = read_exactly(fd_.get(), 1)) {
            text += c;
        }
        return text;
    }

    /// The lines of an answer, the last one included.
    std::vector<std::string> answer() {
        std::vector<std::string> lines;
        do {
            lines.push_back(line());
        } while (!lines.back().empty() && lines.back() != "ok" &&
                 lines.back().rfind("error: ", 0) != 0);
        return lines;
    }

    /// The last line of the answer to this one.
    std::string order(const std::string& text) {
        say(text + "\n");
        return answer().back();
    }

    void end_of_orders() { shutdown(fd_.get(), SHUT_WR); }
    int fd() const { return fd_.get(); }

private:
    sim::UniqueFd fd_;
};

#endif
