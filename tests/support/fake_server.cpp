// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/fake_server.h"

#include "vym_sdk.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace support {
namespace {

constexpr size_t kMostDescriptors = 64;

[[noreturn]] void Fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void CloseIfOpen(int& fd) {
    if (fd >= 0) {
        close(fd);
        fd = -1;
    }
}

bool WaitReadable(int fd, std::chrono::steady_clock::time_point end) {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<Milliseconds>(end - std::chrono::steady_clock::now());
        pollfd entry{fd, POLLIN, 0};
        const int ready =
            poll(&entry, 1, static_cast<int>(std::max<Milliseconds::rep>(left.count(), 0)));
        if (ready >= 0 || errno != EINTR) {
            return ready > 0;
        }
    }
}

// Appends what is there; false at the end of the stream, on failure, and when the time is up.
bool ReadSome(int fd, std::string& text, size_t most, std::chrono::steady_clock::time_point end) {
    std::array<char, 4096> part{};
    if (!WaitReadable(fd, end)) {
        return false;
    }
    const ssize_t count = recv(fd, part.data(), std::min(most, part.size()), 0);
    if (count <= 0) {
        return false;
    }
    text.append(part.data(), static_cast<size_t>(count));
    return true;
}

bool Starts(std::string_view text, std::string_view with) {
    const size_t common = std::min(text.size(), with.size());
    return text.substr(0, common) == with.substr(0, common);
}

} // namespace

FakeServer::FakeServer(const std::string& directory) : path_(directory + "/vym_socket") {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof(address.sun_path)) {
        errno = ENAMETOOLONG;
        Fail(path_);
    }
    path_.copy(address.sun_path, path_.size());
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener_ < 0 || bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(listener_, 4) != 0) {
        Fail("cannot listen on " + path_);
    }
}

FakeServer::~FakeServer() {
    CloseClient();
    StopListening();
}

bool FakeServer::Accept(Milliseconds limit) {
    CloseClient();
    if (!WaitReadable(listener_, std::chrono::steady_clock::now() + limit)) {
        return false;
    }
    client_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client_ < 0) {
        return false;
    }
    timeval send_limit{};
    send_limit.tv_sec = static_cast<time_t>(TimeLimit().count() / 1000);
    setsockopt(client_, SOL_SOCKET, SO_SNDTIMEO, &send_limit, sizeof(send_limit));
    return true;
}

void FakeServer::Send(std::string_view bytes) {
    EXPECT_TRUE(WriteBytes(client_, bytes)) << "the fake server could not send " << Escaped(bytes);
}

void FakeServer::SendEvents(const std::vector<std::string>& events) {
    for (const std::string& event : events) {
        Send(Event(event));
    }
}

void FakeServer::SendDescriptor(int fd) {
    SendMessage(std::string_view("\0", 1), {fd});
}

void FakeServer::SendWithDescriptors(std::string_view bytes, const std::vector<int>& fds) {
    SendMessage(bytes, fds);
}

void FakeServer::SendMessage(std::string_view bytes, const std::vector<int>& fds) {
    ASSERT_LE(fds.size(), kMostDescriptors);
    alignas(cmsghdr) std::array<char, CMSG_SPACE(kMostDescriptors * sizeof(int))> control{};
    const size_t fd_bytes = fds.size() * sizeof(int);
    std::string text(bytes);
    iovec part{text.data(), text.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = CMSG_SPACE(fd_bytes);
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(fd_bytes);
    std::memcpy(CMSG_DATA(header), fds.data(), fd_bytes);
    EXPECT_EQ(sendmsg(client_, &message, MSG_NOSIGNAL), static_cast<ssize_t>(text.size()))
        << "the fake server could not pass a descriptor";
}

bool FakeServer::Fill(size_t count, Milliseconds limit, std::string_view expected_start) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (pending_.size() < count && Starts(pending_, expected_start)) {
        if (!ReadSome(client_, pending_, 4096, end)) {
            return false;
        }
    }
    return pending_.size() >= count;
}

::testing::AssertionResult FakeServer::Receives(std::string_view expected, Milliseconds limit) {
    const bool filled = Fill(expected.size(), limit, expected);
    const std::string received = pending_.substr(0, expected.size());
    if (received == expected) {
        pending_.erase(0, expected.size());
        return ::testing::AssertionSuccess();
    }
    // The rest of the odd line makes the report readable and the next check start afresh.
    const auto end = std::chrono::steady_clock::now() + std::min(limit, Milliseconds(500));
    while (pending_.find('\n') == std::string::npos && ReadSome(client_, pending_, 4096, end)) {
    }
    const size_t line_end = pending_.find('\n');
    const std::string line =
        pending_.substr(0, line_end == std::string::npos ? line_end : line_end + 1);
    pending_.erase(0, line.size());
    ::testing::AssertionResult failure = SameBytes(expected, line);
    return failure ? ::testing::AssertionFailure() << "parts only after " << Escaped(line)
                   : failure << (filled ? "" : "\n(and then nothing came)");
}

void FakeServer::ExpectCommand(std::string_view expected, const char* file, int line) {
    const ::testing::AssertionResult result = Receives(expected);
    if (!result) {
        ADD_FAILURE_AT(file, line) << result.message();
    }
}

void FakeServer::ExpectNothingMore(const char* file, int line) {
    std::string marker = "AT#ZZ" + std::to_string(++markers_) + "\r\n";
    send_at_command(marker.data(), static_cast<int>(marker.size()));
    const ::testing::AssertionResult result = Receives(marker);
    if (!result) {
        ADD_FAILURE_AT(file, line) << "something else was sent before the marker\n" << result.message();
    }
}

std::string FakeServer::ReceiveBytes(size_t count, Milliseconds limit) {
    // The outcome is what there is: the caller compares.
    const auto end = std::chrono::steady_clock::now() + limit;
    while (pending_.size() < count && ReadSome(client_, pending_, count - pending_.size(), end)) {
    }
    std::string received = pending_.substr(0, count);
    pending_.erase(0, received.size());
    return received;
}

bool FakeServer::SeesEndOfStream(Milliseconds limit) {
    return ReadsEndOfStream(client_, limit);
}

bool FakeServer::ClientHasRead() const {
    return PeerHasRead(client_);
}

void FakeServer::Shutdown(int how) const {
    shutdown(client_, how);
}

void FakeServer::CloseClient() {
    CloseIfOpen(client_);
    pending_.clear();
}

void FakeServer::StopListening() {
    if (listener_ >= 0) {
        CloseIfOpen(listener_);
        unlink(path_.c_str());
    }
}

SocketPair::SocketPair() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds_) != 0) {
        Fail("cannot make a pair of sockets");
    }
}

SocketPair::~SocketPair() {
    CloseNear();
    CloseFar();
}

void SocketPair::CloseNear() {
    CloseIfOpen(fds_[0]);
}

void SocketPair::CloseFar() {
    CloseIfOpen(fds_[1]);
}

int SocketPair::TakeFar() {
    const int fd = fds_[1];
    fds_[1] = -1;
    return fd;
}

std::string ReadBytes(int fd, size_t count, Milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    std::string text;
    while (text.size() < count && ReadSome(fd, text, count - text.size(), end)) {
    }
    return text;
}

bool ReadsEndOfStream(int fd, Milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    std::string dropped;
    while (ReadSome(fd, dropped, 4096, end)) {
    }
    char byte = 0;
    return recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

bool WriteBytes(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

bool PeerHasRead(int fd, Milliseconds limit) {
    return WaitUntil(
        [fd] {
            int unread = -1;
            return ioctl(fd, SIOCOUTQ, &unread) == 0 && unread == 0;
        },
        limit);
}

} // namespace support
