// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <array>
#include <asio/post.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace {

constexpr int kTimeoutMs = 10000;

std::string last_error() {
    return std::generic_category().message(errno);
}

} // namespace

TemporaryDirectory::TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "vym-sim-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary directory");
    }
    path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool wait_readable(int fd) {
    pollfd entry{fd, POLLIN, 0};
    return poll(&entry, 1, kTimeoutMs) == 1;
}

std::string read_exactly(int fd, size_t count) {
    std::string bytes;
    while (bytes.size() < count && wait_readable(fd)) {
        std::array<char, 4096> chunk{};
        const ssize_t got = recv(fd, chunk.data(), std::min(chunk.size(), count - bytes.size()), 0);
        if (got <= 0) {
            break;
        }
        bytes.append(chunk.data(), static_cast<size_t>(got));
    }
    return bytes;
}

TestClient::TestClient(const std::string& dir) : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = dir + "/vym_socket";
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    if (connect(fd_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ADD_FAILURE() << "cannot connect to " << path << ": " << last_error();
    }
}

void TestClient::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0) {
            ADD_FAILURE() << "cannot send: " << last_error();
            return;
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

bool TestClient::receive() {
    if (!wait_readable(fd_.get())) {
        return false;
    }
    std::array<char, 4096> chunk{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    iovec part{chunk.data(), chunk.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t count = recvmsg(fd_.get(), &message, MSG_CMSG_CLOEXEC);
    if (count <= 0) {
        return false;
    }
    auto kept = static_cast<size_t>(count);
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
        int fd = -1;
        std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
        descriptors_.emplace_back(fd);
        // A read ends with the byte that carries a descriptor.
        EXPECT_EQ(chunk.at(kept - 1), '\0');
        --kept;
    }
    buffer_.append(chunk.data(), kept);
    return true;
}

std::string TestClient::event() {
    size_t end = 0;
    while ((end = buffer_.find('\0')) == std::string::npos) {
        if (!receive()) {
            ADD_FAILURE() << "no event; received so far: \"" << buffer_ << '"';
            return {};
        }
    }
    std::string text = buffer_.substr(0, end);
    buffer_.erase(0, end + 1);
    return text;
}

std::vector<std::string> TestClient::events(size_t count) {
    std::vector<std::string> all;
    while (all.size() < count) {
        all.push_back(event());
        if (all.back().empty()) {
            break;
        }
    }
    return all;
}

sim::UniqueFd TestClient::descriptor() {
    while (descriptors_.empty()) {
        if (!receive()) {
            ADD_FAILURE() << "no descriptor";
            return {};
        }
    }
    sim::UniqueFd fd = std::move(descriptors_.front());
    descriptors_.pop_front();
    return fd;
}

std::vector<std::string> TestClient::events_until_version() {
    send("AT#PV\r\n");
    std::vector<std::string> before;
    for (;;) {
        std::string next = event();
        if (next.empty() || next.rfind("PV", 0) == 0) {
            return before;
        }
        before.push_back(std::move(next));
    }
}

sim::UniqueFd TestClient::enable() {
    send("AT#PB\r\n");
    EXPECT_EQ(event(), "PA01");
    EXPECT_EQ(event().substr(0, 4), "PD01");
    sim::UniqueFd audio = descriptor();
    EXPECT_EQ(event().substr(0, 4), "PD00");
    serial_ = descriptor();
    return audio;
}

RunningSim::RunningSim(sim::World world, sim::Pace pace, const std::string& script, bool stay,
                       const std::string& evil) {
    sim::Options options;
    options.dir = dir_.path();
    options.log = sim::LogLevel::All;
    options.traffic_file = dir_.file("traffic");
    options.pace = pace;
    options.stay = stay;
    if (!evil.empty()) {
        options.evil = sim::to_evil_options(evil);
    }
    if (!script.empty()) {
        options.script_file = dir_.file("script");
        std::ofstream(options.script_file) << script;
    }
    server_ = std::make_unique<sim::Server>(loop_, std::move(world), options, log_);
    thread_ = std::thread([this] { loop_.run(); });
}

RunningSim::~RunningSim() {
    stop();
    // Whatever it has sent is as the protocol describes it: a line ends in brackets when it is not.
    std::istringstream lines(log_.str());
    for (std::string line; std::getline(lines, line);) {
        const bool is_event = line.substr(0, 3) == "-> ";
        EXPECT_FALSE(is_event && (line.back() == ')' || line.substr(3, 7) == "unknown")) << line;
    }
}

int RunningSim::result() {
    thread_.join();
    return server_->result();
}

void RunningSim::stop() {
    if (thread_.joinable()) {
        asio::post(loop_, [this] { server_->stop(); });
        thread_.join();
    }
}

sim::Pace RunningSim::quick() {
    sim::Pace pace;
    pace.discovery_step = std::chrono::milliseconds(1);
    pace.pairing_timeout = std::chrono::hours(1);
    pace.audio_packet = std::chrono::milliseconds(1);
    return pace;
}
