// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_WIRE_FULL_SOCKET_H
#define VYM_TESTS_WIRE_FULL_SOCKET_H

#include "support/fake_server.h"
#include "support/wait.h"
#include "vym_sdk.h"

#include <atomic>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace wire {

/** The kernel's id of this thread. */
inline pid_t ThreadId() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

/**
 * The library's socket filled with 'x', so that whatever it writes next has to wait until the server
 * reads on. Before the object ends, the server must have read Left() bytes.
 */
class FullSocket {
public:
    explicit FullSocket(support::FakeServer& server)
        : filler_([this] {
              std::string bytes(kFill, 'x');
              id_ = ThreadId();
              send_at_command(bytes.data(), 0);
          }) {
        // It writes; and when it sleeps as well, there is no more room.
        EXPECT_EQ(server.ReceiveBytes(1), "x");
        EXPECT_TRUE(support::WaitUntil([this] { return support::IsAsleep(id_); }));
    }
    ~FullSocket() { filler_.join(); }
    FullSocket(const FullSocket&) = delete;
    FullSocket& operator=(const FullSocket&) = delete;
    FullSocket(FullSocket&&) = delete;
    FullSocket& operator=(FullSocket&&) = delete;

    [[nodiscard]] static constexpr size_t Left() { return kFill - 1; }

private:
    static constexpr size_t kFill = 2'000'000; // more than any socket holds

    std::atomic<pid_t> id_{0};
    std::thread filler_;
};

} // namespace wire

#endif
