// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Whether the process at the other end of a socket is at work. Here that is this process, of which the
// thread that asks does not count.
#include "client_threads.h"

#include "running_sim.h"
#include "unique_fd.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

/// Looks again and again, as the simulator does.
bool comes_to_wait(const sim::ClientThreads& threads) {
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!threads.all_wait()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

class SimClientThreads : public ::testing::Test {
protected:
    SimClientThreads() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data()), 0); }
    ~SimClientThreads() override {
        close(ends_[0]);
        close(ends_[1]);
    }
    sim::ClientThreads threads() const { return sim::ClientThreads(ends_[0]); }

private:
    std::array<int, 2> ends_{};
};

TEST_F(SimClientThreads, WaitWhenEachOfThemSleeps) {
    std::array<int, 2> gate{};
    ASSERT_EQ(pipe(gate.data()), 0);
    std::thread sleeper([&gate] {
        char c = 0;
        static_cast<void>(read(gate[0], &c, 1));
    });
    EXPECT_TRUE(comes_to_wait(threads()));
    close(gate[1]);
    sleeper.join();
    close(gate[0]);
}

TEST_F(SimClientThreads, DoNotWaitWhileOneOfThemIsAtWork) {
    std::atomic<bool> at_work{false};
    std::atomic<bool> go_on{true};
    std::thread worker([&] {
        at_work = true;
        while (go_on) {
        }
    });
    while (!at_work) {
        std::this_thread::yield();
    }
    int waits = 0;
    for (int i = 0; i < 1000; ++i) {
        waits += threads().all_wait() ? 1 : 0;
    }
    go_on = false;
    worker.join();
    EXPECT_EQ(waits, 0);
}

TEST_F(SimClientThreads, WaitWhenTheirProcessHasEnded) {
    const TemporaryDirectory directory;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = directory.path() + "/socket";
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    const auto* name = reinterpret_cast<const sockaddr*>(&address);
    const sim::UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(bind(listener.get(), name, sizeof address), 0);
    ASSERT_EQ(listen(listener.get(), 1), 0);
    const pid_t child = fork();
    if (child == 0) {
        const int client = socket(AF_UNIX, SOCK_STREAM, 0);
        _exit(connect(client, name, sizeof address) == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    const sim::UniqueFd client(accept(listener.get(), nullptr, nullptr));
    EXPECT_TRUE(sim::ClientThreads(client.get()).all_wait());
}

TEST(SimClientThreadsOfNobody, AreRefused) {
    EXPECT_THROW(sim::ClientThreads(-1), std::system_error);
}

} // namespace
