// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The library as this program uses it: connected or not, and what is to be done at the end.
#ifndef VYM_VYMCTL_LIBRARY_H
#define VYM_VYMCTL_LIBRARY_H

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace vymctl {

/// Exit code 3; the text says why.
class NoServer : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

constexpr const char* kDefaultDirectory = "/etc/backup";

/// Why nobody can connect there; empty when somebody can.
std::string why_no_server(const std::string& directory);

class Library {
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    Library(Library&&) = delete;
    Library& operator=(Library&&) = delete;

    /// Connects, and starts all profiles. The library would begin the capture beside the socket anew,
    /// which belongs to the application that runs there; `capture` names another file, or is empty.
    /// Throws NoServer, and Usage for a capture that cannot be written.
    void start(const std::string& directory, const std::string& capture);
    /// With the capture beside the socket; null: in the server's own directory. Throws NoServer.
    void start_as_an_application(const char* directory);
    void stop();
    bool is_started() const { return started_; }

    /// A thread is in the library and will not come back: the process must end without waiting for it.
    void abandon() { abandoned_ = true; }
    bool is_abandoned() const { return abandoned_; }

private:
    void connected(int fd);
    void watch();
    void wake() const;

    bool started_ = false;
    std::atomic<bool> abandoned_ = false;
    std::atomic<bool> ending_ = false;
    /// A copy of the connection, only to see its end.
    std::atomic<int> connection_ = -1;
    int wake_ = -1;
    int signals_ = -1;
    std::thread watcher_;
};

Library& library();

} // namespace vymctl

#endif
