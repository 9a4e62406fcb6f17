// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "session.h"

#include <csignal>

int main(int argc, char** argv) {
    // Whoever reads our output may go away first.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    return vymctl::run({argv + 1, argv + argc});
}
