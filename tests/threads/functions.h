// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every exported function, with a call of it and what may be done with it.
#ifndef VYM_TESTS_THREADS_FUNCTIONS_H
#define VYM_TESTS_THREADS_FUNCTIONS_H

#include "e2e/recording.h"
#include "support/fake_server.h"
#include "support/temp_dir.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace threads {

/** May it be called from a callback? */
enum class Callback {
    kYes,
    kInVain,       // the answer would have to be read by the thread that waits for it
    kNever,        // it would wait for ever
    kNotInHandler, // of internal events
    kSpecial,      // the note says
};

/** From how many threads at once? */
enum class Threads { kAny, kOne };

struct Function {
    const char* name;
    /** Not there for a variable and for the body of a thread. */
    void (*call)();
    Callback callback;
    Threads threads;
    const char* note;
    /** What a call that waits without limit needs, and what ends its wait. */
    void (*prepare)();
    void (*rescue)();
    /** Makes good what the call has ended. */
    void (*restore)();
};

struct Group {
    std::string title;
    std::vector<Function> functions;
};

/** In the order of the symbol map, whose comments are the titles. */
const std::vector<Group>& Functions();

/** All names of the symbol map, with the comment above them. */
std::vector<std::pair<std::string, std::vector<std::string>>> ExportedGroups();

/** A started library with all profiles, serial and audio descriptors, and a server that reads all and
 * answers nothing of its own. What the calls work on. */
class Stage {
public:
    Stage();
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    Stage(Stage&&) = delete;
    Stage& operator=(Stage&&) = delete;

    static Stage& Now();

    [[nodiscard]] const std::string& Directory() const { return directory_.Path(); }
    [[nodiscard]] int Connection() const { return connection_; }
    [[nodiscard]] support::FakeServer& Server() { return server_; }
    [[nodiscard]] const support::SocketPair& Audio() const { return audio_; }
    e2e::Callbacks& Table() { return table_; }

    /** Sends one event and waits until it has been handled. */
    void Tell(const std::string& event);
    void HandOver(int id, const support::SocketPair& pair);
    void ExpectHandled();

    vym_bluetooth_socket_t* Socket() const { return socket_; }
    vym_bluetooth_server_socket_t* ServerSocket() const { return server_socket_; }
    void MakeSocket();
    void MakeServerSocket();
    void CloseServerSocket();
    /** The phone has one call, which comes in. */
    void Ring();

private:
    void Drain();

    support::TempDir directory_;
    support::FakeServer server_;
    e2e::Callbacks table_;
    support::SocketPair audio_;
    support::SocketPair serial_;
    std::atomic<bool> ended_{false};
    std::thread drain_;
    int connection_ = -1;
    std::atomic<vym_bluetooth_socket_t*> socket_{nullptr};
    std::atomic<vym_bluetooth_server_socket_t*> server_socket_{nullptr};
    int versions_ = 0;
};

} // namespace threads

#endif
