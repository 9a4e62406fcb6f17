// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The other end of the control socket.
#include "control_socket.h"
#include "unique_fd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace sim {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kNoServer = 3;

/// Several words, as a shell has divided them, are one line again.
std::string to_line(const std::vector<std::string>& words) {
    if (words.size() == 1) {
        return words.front();
    }
    std::string line;
    for (const std::string& word : words) {
        line += line.empty() ? "" : " ";
        if (!word.empty() && word.find_first_of(" \t\"\\#") == std::string::npos) {
            line += word;
            continue;
        }
        line += '"';
        for (const char c : word) {
            line += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
        }
        line += '"';
    }
    return line;
}

UniqueFd connect_to(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return {};
    }
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return {};
    }
    return fd;
}

bool send_all(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::send(fd, text.data(), text.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

/// Prints the lines of the answer as they come. No other line begins like the last one.
int print_answer(int fd) {
    constexpr std::string_view kError = "error: ";
    std::string text;
    std::array<char, 4096> chunk{};
    for (;;) {
        for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
            const std::string line = text.substr(0, end);
            text.erase(0, end + 1);
            if (line == "ok") {
                return kDone;
            }
            if (line.compare(0, kError.size(), kError) == 0) {
                std::cerr << "vym-sim ctl: " << line.substr(kError.size()) << '\n';
                return kFailed;
            }
            std::cout << line << '\n' << std::flush;
        }
        const ssize_t count = recv(fd, chunk.data(), chunk.size(), 0);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            std::cerr << "vym-sim ctl: the simulator ended before it answered\n";
            return kNoServer;
        }
        text.append(chunk.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
}

} // namespace

int send_to_control(const std::string& dir, const std::vector<std::string>& words) {
    const std::string line = to_line(words);
    if (line.find('\n') != std::string::npos) {
        std::cerr << "vym-sim ctl: one line at a time; write a line end inside a text as \\n\n";
        return kUsage;
    }
    const std::string path = dir + ControlSocket::kName;
    const UniqueFd fd = connect_to(path);
    if (!fd) {
        std::cerr << "vym-sim ctl: no simulator answers on " << path << " ("
                  << std::generic_category().message(errno) << "); start vym-sim --dir " << dir << '\n';
        return kNoServer;
    }
    // A refusal may come before the whole line has been taken: what was answered counts.
    send_all(fd.get(), line + '\n');
    return print_answer(fd.get());
}

} // namespace sim
