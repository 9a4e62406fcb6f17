// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_RELAY_H
#define VYM_TESTS_SUPPORT_RELAY_H

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace support {

/**
 * A listener on the line: takes one client on "<near>/vym_socket", connects to "<far>/vym_socket",
 * passes bytes and descriptors both ways, and notes the bytes. What it noted is what really crossed the
 * socket.
 */
class Relay {
public:
    Relay(const std::string& near, const std::string& far);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;
    Relay(Relay&&) = delete;
    Relay& operator=(Relay&&) = delete;

    /** Bytes from the client, and to it. */
    [[nodiscard]] std::string Commands() const;
    [[nodiscard]] std::string Events() const;

private:
    void Run();
    /** One receipt passed on; false when this side closed. */
    bool PassOn(int from, int to, std::string& noted);

    int listener_ = -1;
    int server_ = -1;
    int stop_[2] = {-1, -1};
    mutable std::mutex mutex_;
    std::string commands_;
    std::string events_;
    std::thread thread_;
};

} // namespace support

#endif
