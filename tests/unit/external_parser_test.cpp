// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The listener through which an external parser attaches to the capture.

#include "vym_debug.h"

#include "support/limits.h"
#include "unit/debug_support.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using unit::becomes_true;
using unit::descriptor;
using unit::PATIENCE;

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr int PARSER_PORT = 4338;

/// Catches what is printed on standard error by any thread.
class stderr_pipe {
public:
    stderr_pipe() : saved(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        reading = descriptor(ends[0]);
        const descriptor writing(ends[1]);
        dup2(writing.get(), STDERR_FILENO);
    }
    ~stderr_pipe() { dup2(saved.get(), STDERR_FILENO); }
    stderr_pipe(const stderr_pipe&) = delete;
    stderr_pipe& operator=(const stderr_pipe&) = delete;

    /// Waits until `wanted` was printed.
    bool prints(const std::string& wanted) {
        return becomes_true([&] {
            take();
            return text.find(wanted) != std::string::npos;
        });
    }

    /// @return what was printed since the last question.
    std::string rest() {
        take();
        return std::exchange(text, "");
    }

private:
    void take() {
        pollfd waited = {reading.get(), POLLIN, 0};
        while (poll(&waited, 1, 10) == 1) {
            char part[512];
            const ssize_t n = read(reading.get(), part, sizeof(part));
            if (n <= 0) {
                return;
            }
            text.append(part, static_cast<size_t>(n));
        }
    }

    descriptor saved;
    descriptor reading;
    std::string text;
};

/// The listener's thread as an application would run it.
class listener_thread {
public:
    listener_thread() {
        std::promise<pid_t> number;
        auto started = number.get_future();
        thread = std::thread([this, &number] {
            number.set_value(gettid());
            result.set_value(ext_parser_thread(nullptr));
        });
        id = started.get();
    }
    ~listener_thread() {
        if (thread.joinable()) {
            becomes_true([this] { // a thread that has not begun to listen does not notice a stop
                vym_debug_stop_listener();
                return ended.wait_for(0s) == std::future_status::ready;
            });
            EXPECT_TRUE(ends());
        }
    }
    listener_thread(const listener_thread&) = delete;
    listener_thread& operator=(const listener_thread&) = delete;

    void send_signal(int signal_number) { pthread_kill(thread.native_handle(), signal_number); }

    /// Waits for the end of the thread.
    bool ends() {
        if (ended.wait_for(PATIENCE) != std::future_status::ready) {
            std::abort(); // nothing could be cleaned up any more
        }
        thread.join();
        return ended.get() == nullptr;
    }

    bool stop() {
        vym_debug_stop_listener();
        return ends();
    }

    std::string name() const {
        std::ifstream file("/proc/self/task/" + std::to_string(id) + "/comm");
        std::string line;
        std::getline(file, line);
        return line;
    }

private:
    std::promise<void*> result;
    std::future<void*> ended = result.get_future();
    std::thread thread;
    pid_t id = 0;
};

sockaddr_in parser_address(int port = PARSER_PORT) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// @return a socket connected to the listener, or -1.
descriptor try_connect(int receive_room = 0, int port = PARSER_PORT) {
    descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (receive_room > 0) {
        setsockopt(client.get(), SOL_SOCKET, SO_RCVBUF, &receive_room, sizeof(receive_room));
    }
    const sockaddr_in address = parser_address(port);
    if (connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == -1) {
        return descriptor();
    }
    const timeval patience = {20, 0};
    setsockopt(client.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    return client;
}

int send_text(std::string text) {
    return send_ext_parser(text.data(), static_cast<int>(text.size()));
}

enum class arrival { NOTHING, DATA, END };

arrival look_at(const descriptor& client, int wait_ms) {
    pollfd waited = {client.get(), POLLIN, 0};
    if (poll(&waited, 1, wait_ms) != 1) {
        return arrival::NOTHING;
    }
    char byte = 0;
    return recv(client.get(), &byte, 1, 0) == 1 ? arrival::DATA : arrival::END;
}

/// Connects and makes sure, by sending single bytes, that it is this client that is attached. A
/// connection that came while the listener was between two sockets is reset and tried again.
descriptor attach(int receive_room = 0, int port = PARSER_PORT) {
    descriptor client;
    const bool attached = becomes_true([&] {
        if (client.get() == -1) {
            client = try_connect(receive_room, port);
        }
        if (client.get() == -1) {
            return false;
        }
        send_text("?");
        const arrival seen = look_at(client, 10);
        if (seen == arrival::END) {
            client = descriptor();
        }
        return seen == arrival::DATA;
    });
    EXPECT_TRUE(attached) << "nobody attaches the client";
    while (client.get() != -1 && look_at(client, 0) == arrival::DATA) {
    }
    return client;
}

std::string receive(const descriptor& client, size_t count) {
    std::string text(count, '\0');
    const ssize_t n = recv(client.get(), text.data(), count, MSG_WAITALL);
    text.resize(n > 0 ? static_cast<size_t>(n) : 0);
    return text;
}

/// Whether the library closed the connection; bytes before the end are skipped.
bool is_cut_off(const descriptor& client) {
    arrival seen = arrival::DATA;
    while (seen == arrival::DATA) {
        seen = look_at(client, static_cast<int>(std::chrono::milliseconds(PATIENCE).count()));
    }
    return seen == arrival::END;
}

/// The port is one for the whole machine: tests that run at the same time take turns.
class ExternalParser : public testing::Test {
protected:
    void SetUp() override {
        const std::string path = (fs::temp_directory_path() / "vym-parser-port.lock").string();
        turn = descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        ASSERT_NE(turn.get(), -1) << path;
        ASSERT_EQ(flock(turn.get(), LOCK_EX), 0);
        const descriptor stranger = try_connect();
        ASSERT_EQ(stranger.get(), -1)
            << "another program listens on port " << PARSER_PORT << ": stop it";
    }
    void TearDown() override { vym_debug_stop_listener(); }

    descriptor turn;
};

TEST_F(ExternalParser, WithoutAParserNothingIsSent) {
    EXPECT_EQ(send_text("lost"), 0);
    vym_debug_stop_listener();
    ext_parser_detached();
    EXPECT_EQ(send_text("lost"), 0);
}

TEST_F(ExternalParser, WhatIsSentArrives) {
    listener_thread listener;
    const descriptor client = attach();
    EXPECT_EQ(send_text(std::string("ab\0cd", 5)), 5);
    EXPECT_EQ(receive(client, 5), std::string("ab\0cd", 5));
}

TEST_F(ExternalParser, TheThreadHasItsNameAsFarAsTheKernelKeepsIt) {
    listener_thread listener;
    const descriptor client = attach();
    EXPECT_EQ(listener.name(), "BtsnoopExtParse");
}

TEST_F(ExternalParser, ASecondParserReplacesTheFirst) {
    listener_thread listener;
    const descriptor first = attach();
    const descriptor second = attach();
    EXPECT_TRUE(is_cut_off(first));
    EXPECT_EQ(send_text("for the second"), 14);
    EXPECT_EQ(receive(second, 14), "for the second");
}

TEST_F(ExternalParser, StopCutsTheParserOffAndEndsTheThread) {
    listener_thread listener;
    const descriptor client = attach();
    EXPECT_TRUE(listener.stop());
    EXPECT_TRUE(is_cut_off(client));
    EXPECT_EQ(send_text("late"), 0);
    EXPECT_EQ(try_connect().get(), -1) << "somebody still listens";
}

TEST_F(ExternalParser, TheListenerCanBeStartedAgain) {
    for (int round = 0; round < 5; ++round) {
        listener_thread listener;
        const descriptor client = attach();
        EXPECT_EQ(send_text("round"), 5);
        EXPECT_EQ(receive(client, 5), "round");
        EXPECT_TRUE(listener.stop());
    }
}

TEST_F(ExternalParser, ANewListenerWaitsForOneThatIsAboutToEnd) {
    for (int round = 0; round < 20; ++round) {
        listener_thread old;
        attach();
        vym_debug_stop_listener();
        listener_thread next; // often begins before the old thread has ended
        const descriptor client = attach();
        EXPECT_TRUE(old.ends());
        EXPECT_EQ(send_text("next"), 4);
        EXPECT_EQ(receive(client, 4), "next");
    }
}

TEST_F(ExternalParser, ASecondListenerReturnsAtOnceAndLeavesTheFirstAlone) {
    listener_thread first;
    const descriptor client = attach();
    listener_thread second;
    EXPECT_TRUE(second.ends());
    EXPECT_EQ(send_text("still here"), 10);
    EXPECT_EQ(receive(client, 10), "still here");
    EXPECT_NE(attach().get(), -1);
}

TEST_F(ExternalParser, TheSignalEndsTheThreadAndLeavesTheParserAttached) {
    listener_thread listener;
    const descriptor client = attach();
    listener.send_signal(SIGUSR2);
    EXPECT_TRUE(listener.ends());
    EXPECT_EQ(try_connect().get(), -1) << "somebody still listens";
    EXPECT_EQ(send_text("bye"), 3);
    EXPECT_EQ(receive(client, 3), "bye");
}

TEST_F(ExternalParser, TheSignalSentManyTimesNeverLeavesTheLockTaken) {
    for (int round = 0; round < 20; ++round) {
        listener_thread listener;
        ASSERT_TRUE(becomes_true([] { return try_connect().get() != -1; }));
        listener.send_signal(SIGUSR2);
        EXPECT_TRUE(listener.ends());
        ext_parser_detached(); // would hang
    }
}

TEST_F(ExternalParser, TheSignalOnAnotherThreadDoesNothing) {
    listener_thread listener;
    const descriptor client = attach();
    raise(SIGUSR2);
    EXPECT_NE(attach().get(), -1);
}

TEST_F(ExternalParser, AnotherSignalDoesNotEndTheThread) {
    struct sigaction previous {};
    struct sigaction action {};
    static std::atomic<int> handled{0};
    handled = 0;
    action.sa_handler = [](int) { ++handled; };
    sigaction(SIGUSR1, &action, &previous);
    stderr_pipe messages;
    {
        listener_thread listener;
        attach();
        listener.send_signal(SIGUSR1);
        EXPECT_TRUE(becomes_true([] { return handled == 1; }));
        EXPECT_NE(attach().get(), -1);
    }
    EXPECT_EQ(messages.rest(), "") << "taken for a failure";
    sigaction(SIGUSR1, &previous, nullptr);
}

TEST_F(ExternalParser, TheCallersSignalMaskIsGivenBack) {
    std::thread([] {
        sigset_t before;
        sigset_t after;
        pthread_sigmask(SIG_SETMASK, nullptr, &before);
        std::thread stopper([] {
            EXPECT_TRUE(becomes_true([] { return try_connect().get() != -1; }));
            vym_debug_stop_listener();
        });
        ext_parser_thread(nullptr);
        stopper.join();
        pthread_sigmask(SIG_SETMASK, nullptr, &after);
        EXPECT_EQ(sigismember(&before, SIGUSR2), 0);
        EXPECT_EQ(sigismember(&after, SIGUSR2), 0);
    }).join();
}

/// Sends until the library notices that the parser is gone.
void expect_detached_with_an_error() {
    int result = 1;
    EXPECT_TRUE(becomes_true([&] {
        result = send_text("anybody?");
        return result < 1;
    }));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(send_text("nobody"), 0);
}

TEST_F(ExternalParser, AParserThatIsGoneIsDetachedAndMayComeBack) {
    listener_thread listener;
    attach(); // closed in order: the failing send would raise SIGPIPE
    expect_detached_with_an_error();
    descriptor client = attach();
    const linger reset = {1, 0};
    setsockopt(client.get(), SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
    client = descriptor();
    expect_detached_with_an_error();
    const descriptor again = attach();
    EXPECT_EQ(send_text("back"), 4);
    EXPECT_EQ(receive(again, 4), "back");
}

TEST_F(ExternalParser, SendingNothingDetaches) {
    listener_thread listener;
    for (const int len : {0, -1}) {
        const descriptor client = attach();
        char byte = 'x';
        EXPECT_EQ(send_ext_parser(&byte, len), len);
        EXPECT_TRUE(is_cut_off(client));
    }
}

TEST_F(ExternalParser, AParserThatDoesNotReadIsDetachedInsteadOfHoldingTheLock) {
    listener_thread listener;
    const descriptor client = attach(4096);
    const std::string block(1 << 20, 'x');
    EXPECT_TRUE(becomes_true([&] { return send_text(block) == -1; }));
    EXPECT_EQ(send_text("more"), 0);
}

/// Takes the parser's port, as another program would.
descriptor occupy_port() {
    descriptor occupant(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    setsockopt(occupant.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    const sockaddr_in address = parser_address();
    EXPECT_EQ(bind(occupant.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(listen(occupant.get(), 1), 0);
    return occupant;
}

/// The ports on which this process listens.
std::vector<int> listening_ports() {
    std::vector<int> ports;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        const int fd = std::stoi(entry.path().filename().string());
        int listening = 0;
        socklen_t size = sizeof(listening);
        sockaddr_in address{};
        socklen_t room = sizeof(address);
        if (getsockopt(fd, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) == 0 && listening != 0 &&
            getsockname(fd, reinterpret_cast<sockaddr*>(&address), &room) == 0 &&
            address.sin_family == AF_INET) {
            ports.push_back(ntohs(address.sin_port));
        }
    }
    return ports;
}

TEST_F(ExternalParser, APortThatIsTakenIsReportedAndListeningGoesOnAtAnother) {
    descriptor occupant = occupy_port();
    stderr_pipe messages;
    listener_thread listener;
    EXPECT_TRUE(messages.prints("bind: Address already in use\n"));
    int port = PARSER_PORT;
    ASSERT_TRUE(becomes_true([&] {
        for (const int one : listening_ports()) {
            port = one != PARSER_PORT ? one : port;
        }
        return port != PARSER_PORT;
    }));
    const descriptor client = attach(0, port);
    EXPECT_EQ(send_text("here"), 4);
    EXPECT_EQ(receive(client, 4), "here");
}

TEST_F(ExternalParser, AListenerWhosePortIsTakenCanBeStopped) {
    const descriptor occupant = occupy_port();
    for (const bool by_signal : {false, true}) {
        stderr_pipe messages;
        listener_thread listener;
        EXPECT_TRUE(messages.prints("bind: Address already in use\n"));
        if (by_signal) {
            listener.send_signal(SIGUSR2);
        } else {
            vym_debug_stop_listener();
        }
        EXPECT_TRUE(listener.ends());
    }
}

TEST_F(ExternalParser, WithoutADescriptorForItsSocketAcceptFailsSilently) {
    stderr_pipe messages;
    {
        const support::NoMoreDescriptors limit;
        EXPECT_EQ(ext_parser_accept(PARSER_PORT), -1);
    }
    EXPECT_EQ(messages.rest(), "");
}

TEST_F(ExternalParser, AClientThatCannotBeAcceptedIsReported) {
    stderr_pipe messages;
    const descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // No std::thread: the undefined-behaviour sanitizer looks at its objects with the help of a
    // descriptor.
    std::atomic<int> accepted{0};
    pthread_t listener;
    ASSERT_EQ(pthread_create(
                  &listener, nullptr,
                  [](void* result) -> void* {
                      *static_cast<std::atomic<int>*>(result) = ext_parser_accept(PARSER_PORT);
                      return nullptr;
                  },
                  &accepted),
              0);
    EXPECT_TRUE(becomes_true([] { // under both its numbers: nothing more is opened before the client
        const std::vector<int> ports = listening_ports();
        return std::count(ports.begin(), ports.end(), PARSER_PORT) == 2;
    }));
    {
        const support::NoMoreDescriptors limit;
        const sockaddr_in address = parser_address();
        EXPECT_EQ(connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
                  0);
        EXPECT_TRUE(becomes_true([&accepted] { return accepted == -1; }));
    }
    pthread_join(listener, nullptr);
    EXPECT_EQ(messages.rest(), "accept: Too many open files\n");
    ext_parser_detached();
}

TEST_F(ExternalParser, NothingIsPrintedInOrdinaryUse) {
    stderr_pipe messages;
    {
        listener_thread listener;
        attach();
        attach();
        ext_parser_detached();
        attach();
    }
    EXPECT_EQ(messages.rest(), "");
}

TEST_F(ExternalParser, AcceptReturnsTheClient) {
    auto accepted = std::async(std::launch::async, [] { return ext_parser_accept(PARSER_PORT); });
    descriptor client;
    ASSERT_TRUE(becomes_true([&] {
        client = try_connect();
        return client.get() != -1;
    }));
    const descriptor served(accepted.get());
    ASSERT_GT(served.get(), 0);
    EXPECT_EQ(fcntl(served.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(send(served.get(), "hi", 2, MSG_NOSIGNAL), 2);
    EXPECT_EQ(receive(client, 2), "hi");
    ext_parser_detached();
    EXPECT_EQ(try_connect().get(), -1) << "the listening socket is still open";
}

TEST_F(ExternalParser, DetachingEndsAWaitingAccept) {
    listener_thread warm_up; // a listening socket that is there proves that detaching has one to close
    attach();
    EXPECT_TRUE(warm_up.stop());
    std::atomic<bool> ended{false};
    auto accepted = std::async(std::launch::async, [&] {
        const int fd = ext_parser_accept(PARSER_PORT);
        ended = true;
        return fd;
    });
    EXPECT_TRUE(becomes_true([&] { // it may not listen yet
        ext_parser_detached();
        return ended.load();
    }));
    EXPECT_EQ(accepted.get(), -1);
}

/// The sockets of this process by descriptor number, and whether a program started by it would inherit
/// them. Asked through the file system: other threads open and close descriptors meanwhile.
std::map<std::string, bool> sockets() {
    std::map<std::string, bool> found;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string number = entry.path().filename().string();
        const std::string target = fs::read_symlink(entry.path(), gone).string();
        std::ifstream info("/proc/self/fdinfo/" + number);
        unsigned int flags = 0;
        std::string word;
        while (info >> word && word != "flags:") {
        }
        if (target.rfind("socket:", 0) == 0 && info >> std::oct >> flags) {
            found[number] = (flags & 02000000U) == 0; // O_CLOEXEC as the kernel prints it
        }
    }
    return found;
}

TEST_F(ExternalParser, NoSocketSurvivesAnExec) {
    const auto before = sockets();
    listener_thread listener;
    const descriptor client = attach();
    auto added = sockets();
    for (const auto& [number, inherited] : before) {
        added.erase(number);
    }
    EXPECT_GE(added.size(), 2U) << "the listener's sockets were not seen";
    for (const auto& [number, inherited] : added) {
        EXPECT_FALSE(inherited) << "descriptor " << number;
    }
}

size_t open_descriptors() {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

TEST_F(ExternalParser, NoDescriptorIsLost) {
    const size_t before = open_descriptors();
    for (int round = 0; round < 3; ++round) {
        listener_thread listener;
        attach();
        attach();
        ext_parser_detached();
        attach();
    }
    EXPECT_EQ(open_descriptors(), before);
}

} // namespace
