// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "follow.h"

#include <csignal>
#include <initializer_list>
#include <poll.h>

namespace trace {
namespace {

// Short for a person; and a look at a file costs next to nothing. Unlike a notification it works on
// every file system.
constexpr timespec kPause = {0, 100000000};

volatile std::sig_atomic_t s_stop = 0;

void on_signal(int /*number*/) {
    s_stop = 1;
}

} // namespace

Waiting::Waiting() {
    s_stop = 0;
    struct sigaction action {};
    action.sa_handler = on_signal;
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM}) {
        sigaction(number, &action, nullptr);
    }
}

bool Waiting::wait() {
    // A signal just before the pause costs no more than its length.
    if (s_stop == 0) {
        ppoll(nullptr, 0, &kPause, nullptr);
    }
    return s_stop == 0;
}

} // namespace trace
