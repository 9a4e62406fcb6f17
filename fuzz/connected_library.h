// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The library with its receive thread, connected to a server in the same process. The library stays for
// all inputs, the applications of all profiles start anew with each.
#ifndef VYM_FUZZ_CONNECTED_LIBRARY_H
#define VYM_FUZZ_CONNECTED_LIBRARY_H

#include "target.h"

#include <string>
#include <string_view>

namespace fuzz {

/// What the applications were told: how many callbacks came, and the sum of what they were given.
struct Told {
    unsigned callbacks;
    unsigned sum;
};

class ConnectedLibrary {
public:
    /// Connects at the first call.
    static ConnectedLibrary& get();

    /// Has the receive thread read the text in pieces of these lengths, and an end of event behind it;
    /// returns when all of it has been dealt with. An event that announces a descriptor gets one.
    Told receive(Lengths lengths, std::string_view text);

    ConnectedLibrary(const ConnectedLibrary&) = delete;
    ConnectedLibrary& operator=(const ConnectedLibrary&) = delete;

private:
    ConnectedLibrary();
    ~ConnectedLibrary();

    void send(std::string_view text);
    void send_events(std::string_view events, int descriptors);
    void wait_until_handled();

    std::string directory_;
    int server_ = -1;
};

} // namespace fuzz

#endif
