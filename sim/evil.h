// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A server that misbehaves: what happens on the socket instead of an event. Decides only; the server
// carries it out. The same seed, events and commands give the same misbehaviour on every machine,
// whatever the time between them: there is no clock here.
#ifndef VYM_SIM_EVIL_H
#define VYM_SIM_EVIL_H

#include "random_event.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

enum class Misdeed : uint8_t {
    Split,
    Glue,
    Truncate,
    Counts,
    Digits,
    Unknown,
    Duplicate,
    Unasked,
    NoDescriptor,
    StrayDescriptor,
    TwoDescriptors,
    Stall,
    Deaf,
    Close,
};

struct EvilOptions {
    uint64_t seed = 0;
    std::vector<Misdeed> kinds;
};

/// "17" or "17:split,close". Throws std::invalid_argument, whose text is one line.
EvilOptions to_evil_options(std::string_view text);

/// One thing that the server does to the socket.
struct Deed {
    enum class What : uint8_t {
        Write,      // these bytes, in a write of their own
        Descriptor, // the one that is to be handed over
        Both,       // that one and a spare, with one byte
        Spare,      // a descriptor that nobody waits for
        Pause,      // nothing is written for a while
        Deafness,   // nothing is read for a while
        Close,      // the client is dropped
    };
    What what = What::Write;
    std::string bytes{};
    std::chrono::milliseconds duration{0};
};

struct Deeds {
    std::vector<Deed> all;
    /// One line for the log; empty for an event that got through unhurt.
    std::string report;
};

class Evil {
public:
    explicit Evil(const EvilOptions& options)
        : kinds_(options.kinds), random_(options.seed), at_commands_(~options.seed) {}

    /// What becomes of an event (without its NUL), and of the descriptor that is to follow it.
    Deeds on_event(std::string_view event, bool has_descriptor);
    /// What happens before a command (without its "AT#") is carried out; after a Close it is not.
    Deeds on_command(std::string_view command);
    /// What was held back is not for the next client.
    void client_left() { held_back_.clear(); }

private:
    /// The event at work.
    struct Work {
        std::string event;
        bool has_descriptor = false;
        std::string name;
        Deeds deeds;
    };

    bool is_possible(Misdeed misdeed) const;
    void commit(Misdeed misdeed);
    void split();
    void glue();
    void truncate();
    void counts();
    void digits();
    void unknown();
    void duplicate();
    void unasked();
    void no_descriptor();
    void stray_descriptor();
    void two_descriptors();
    void stall();
    void deaf();
    void close();

    void write(const std::string& bytes);
    /// The event with its NUL, and its descriptor.
    void pass(std::string_view event);
    void hand_over();
    void report(const std::string& what);
    void remember(std::string_view event);
    static std::chrono::milliseconds a_while(Random& random);

    std::vector<Misdeed> kinds_;
    Random random_;
    /// Of its own: how events and commands follow each other is up to the client's threads.
    Random at_commands_;
    uint64_t count_ = 0;
    uint64_t commands_ = 0;
    std::vector<std::string> remembered_;
    std::string held_back_;
    Work work_;
};

} // namespace sim

#endif
